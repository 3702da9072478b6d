// The tool over the network: aravis's fake camera on the loopback device.
#include <gmock/gmock.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <thread>

#include "ToolRun.h"

using testing::HasSubstr;

namespace {

constexpr const char* kFakeCamera = "arv-fake-gv-camera-0.8";

class FakeCamera {
 public:
  explicit FakeCamera(const std::string& serial) : process_(fork()) {
    if (process_ == 0) {
      execlp(kFakeCamera, kFakeCamera, "-i", "127.0.0.1", "-s", serial.c_str(), nullptr);
      _exit(127);
    }
  }
  FakeCamera(const FakeCamera&) = delete;
  FakeCamera& operator=(const FakeCamera&) = delete;
  ~FakeCamera() {
    kill(process_, SIGTERM);
    waitpid(process_, nullptr, 0);
  }

 private:
  pid_t process_;
};

}  // namespace

class RealCamera : public ToolTest {
 protected:
  void SetUp() override {
    setenv("OXGENAPI_INTERFACES", "lo", 1);
    const bool built =
        run({"cameras", "--verbose", "--time", "1"}).out.find("aravis.so is loaded") != std::string::npos;
    if (runProgram({"which", kFakeCamera}).status != 0 || !built)
      GTEST_SKIP() << "needs aravis: its fake camera, and the library when this was built";
  }

  // Waits until the camera answers; its entry in the list, null if it never does.
  nlohmann::json entry(const std::string& serial) const {
    for (int attempt = 0; attempt < 20; ++attempt) {
      const ToolResult found = run({"--json", "cameras", "--time", "100"});
      for (const auto& camera : found.status == 0 ? found.json() : nlohmann::json::array())
        if (camera.at("serial") == serial) return camera;
      std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    return {};
  }
};

TEST_F(RealCamera, EveryMainCommandWorksOverTheNetwork) {
  const std::string serial = "OX" + std::to_string(getpid());
  const FakeCamera camera(serial);
  const nlohmann::json found = entry(serial);
  ASSERT_TRUE(found.is_object()) << "the fake camera did not answer; is UDP port 3956 of the loopback device taken?";
  EXPECT_EQ(found.at("protocol"), "GigEVision");
  EXPECT_EQ(found.at("address"), "127.0.0.1");
  const std::string id = found.at("id");
  const auto on = [&](std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), {"--camera", id});
    return arguments;
  };

  EXPECT_THAT(run(on({"xml"})).out, HasSubstr("<RegisterDescription"));
  EXPECT_EQ(runJson(on({"info"})).at("vendor"), found.at("vendor"));
  EXPECT_THAT(run(on({"tree", "--depth", "1"})).out, HasSubstr("DeviceControl"));
  EXPECT_EQ(runJson(on({"get", "DeviceID"}))[0].at("value"), serial);

  // What is written stays in the camera: another run, by another of its names, reads it back.
  EXPECT_EQ(run(on({"set", "Width=256", "ExposureTimeAbs=5000", "AcquisitionMode=SingleFrame"})).status, 0);
  const nlohmann::json read = runJson({"--camera", serial, "get", "Width", "ExposureTimeAbs", "AcquisitionMode"});
  EXPECT_EQ(read[0].at("value"), 256);
  EXPECT_EQ(read[1].at("value"), 5000.0);
  EXPECT_EQ(read[2].at("value"), "SingleFrame");

  EXPECT_EQ(run(on({"save", path("camera.settings"), "--features", "Width,ExposureTimeAbs"})).status, 0);
  EXPECT_EQ(run(on({"set", "Width=512"})).status, 0);
  EXPECT_THAT(run(on({"diff", path("camera.settings")})).out, HasSubstr("Width"));
  EXPECT_EQ(run(on({"load", path("camera.settings")})).status, 0);
  EXPECT_EQ(runJson(on({"get", "Width"}))[0].at("value"), 256);
  EXPECT_EQ(run(on({"describe", "Width"})).status, 0);
  EXPECT_EQ(run(on({"snapshot", "Width", "PixelFormat"})).status, 0);
  EXPECT_THAT(run(on({"report"})).out, HasSubstr("failing: 0"));

  // Its pictures arrive, through the standard socket that the loopback needs.
  for (const int width : {128, 64}) {
    const nlohmann::json grabbed =
        runJson(on({"grab", "-n", "5", "-o", path("{n}.pgm"), "--overwrite", "AcquisitionMode=Continuous", "Height=64",
                    "Width=" + std::to_string(width)}));
    EXPECT_EQ(grabbed.at("payloadSize"), width * 64);
    EXPECT_GE(grabbed.at("packets"), 5);
    EXPECT_EQ(this->read("0005.pgm").substr(0, 3 + std::to_string(width).size()), "P5\n" + std::to_string(width));
  }
  EXPECT_EQ(run(on({"set", "Width=256"})).status, 0);

  // While another program has control, the tool can read and says why it cannot write; watching takes no control.
  const std::string tool = std::string(std::getenv("OX_BUILD_DIR")) + "/bin/oxgenapi --camera " + id;
  const ToolResult busy =
      runProgram({"bash", "-c",
                  tool + " watch Width >watched & watcher=$!; sleep 0.5; " + tool +
                      " watch Width --set Width=300 --seconds 2 >/dev/null & sleep 1; " + tool + " get -b Width; " +
                      tool + " set Width=400; kill -INT $watcher; wait; grep -c 'Width = 300' watched"});
  EXPECT_THAT(busy.out, testing::EndsWith("300\n1\n"));
  EXPECT_THAT(busy.err, HasSubstr("another program has control"));

  // Its address is asked at once, and the shell may name it for every command.
  setenv("OXGENAPI_CAMERA", "127.0.0.1", 1);
  EXPECT_EQ(runJson({"get", "DeviceID"})[0].at("value"), serial);
  EXPECT_EQ(runJson({"network"}).at("current").at("address"), "127.0.0.1");
  EXPECT_THAT(run({"cameras", "--verbose"}).out, HasSubstr("lo (127.0.0.1/8) was asked, 1 camera answered"));
  unsetenv("OXGENAPI_CAMERA");
}

TEST_F(RealCamera, OneThatIsNotThereIsNamed) {
  setenv("OXGENAPI_INTERFACES", "nothing0", 1);  // where no other test has a camera
  const ToolResult result = run({"--camera", "no-such-camera", "info"});
  EXPECT_EQ(result.status, 3);
  EXPECT_THAT(result.err, HasSubstr("no-such-camera"));
  const ToolResult none = run({"cameras", "--time", "50"});
  EXPECT_EQ(none.status, 3);
  EXPECT_THAT(none.out, HasSubstr("simulated: 0 of 0 cameras"));
}

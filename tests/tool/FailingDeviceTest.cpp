// Every command that uses a device, while each access of it fails in turn: the run ends by itself, with exit status 1
// and the reason, until there are fewer accesses than that. OX_FAIL_EACH leaves none out.
#include <gmock/gmock.h>

#include <cstdio>
#include <cstdlib>

#include "ToolRun.h"

using testing::HasSubstr;

class FailingDevice : public ToolTest {};

TEST_F(FailingDevice, EveryCommandTellsOfAnyAccessThatFails) {
  const char* const build = std::getenv("OX_BUILD_DIR");
  ASSERT_NE(build, nullptr);
  ASSERT_EQ(run({"save", "settings", "--features", "Width,ExposureTime,TestRegister"}).status, 0);
  write("in", std::string(9000, 'i'));
  const bool isEach = std::getenv("OX_FAIL_EACH") != nullptr;
  const struct {
    std::vector<std::string> command;
    bool isTimed = false;  // its output tells times
  } kCases[] = {
      {{"tree", "ImageFormatControl", "--values"}},
      {{"get", "Width", "ExposureTime", "PixelFormat", "DeviceVendorName", "TestRegister"}},
      {{"set", "Width=640", "ExposureTime=20000", "PixelFormat=Mono8", "DeviceUserID=north"}},
      {{"exec", "TestCommand"}},
      {{"describe", "ExposureTime"}},
      {{"peek", "0x1c098", "16"}},
      {{"poke", "0x1c098", "00000001"}},
      {{"register", "TestRegister"}},
      {{"save", "-"}},
      {{"load", "settings", "--validate"}},
      {{"diff", "settings"}},
      {{"snapshot", "Width", "ExposureTime", "PixelFormat"}},
      {{"report"}},
      {{"files", "list"}},
      {{"files", "get", "FactoryCalibration", "out"}, true},
      {{"files", "put", "UserFile1", "in"}, true},
      {{"files", "rm", "UserFile1"}},
      {{"firmware", "update", std::string(build) + "/share/camera.guf"}, true},
      {{"watch", "Width", "DeviceTemperature", "--poll", "20", "--seconds", "0.05"}, true},
      {{"events", "listen", "--enable", "Test", "--exec", "TestEventGenerate", "--seconds", "0.05"}, true},
      {{"chunks", "acquire", "--enable", "ExposureTime", "--frames", "2"}},
  };
  for (const auto& [command, isTimed] : kCases) {
    const ToolResult healthy = run(command);
    EXPECT_EQ(healthy.status, 0) << command[0] << ": " << healthy.err;
    int64_t n = 1, runs = 1;
    // Each of the first ones; then fewer and fewer, or it would take minutes. By hand: each.
    for (;; n += isEach ? 1 : 1 + n / 3, ++runs) {
      std::vector<std::string> failing{"timeout", "30", std::string(build) + "/bin/oxgenapi", "--fail-access",
                                       std::to_string(n)};
      failing.insert(failing.end(), command.begin(), command.end());
      const ToolResult result = runProgram(failing);
      if (result.status == 0) {
        EXPECT_TRUE(isTimed || result.out == healthy.out) << command[0] << ", access " << n;
        EXPECT_EQ(result.err, healthy.err);
        break;
      }
      EXPECT_EQ(result.status, 1) << command[0] << ", access " << n << ": " << result.err;
      EXPECT_THAT(result.err, HasSubstr("made to fail")) << command[0] << ", access " << n;
    }
    EXPECT_GT(n, 1) << command[0] << " asked nothing of the device";
    std::printf("%s: %lld accesses failed\n", command[0].c_str(), static_cast<long long>(runs - 1));
  }
}

TEST_F(FailingDevice, FailsAsItIsTold) {
  const ToolResult result = run({"get", "Width", "ExposureTime", "--fail-every", "1", "--fail-code", "0x8000000e",
                                 "--fail-text", "nobody there"});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.err, HasSubstr("nobody there (0x8000000b)"));
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(run({"info", "--fail-every", "0"}).status, 2);
  EXPECT_EQ(run({"info", "--fail-code", "5"}).status, 2);
  EXPECT_EQ(run({"info", "--camera", "any", "--fail-access", "1"}).status, 2);
}

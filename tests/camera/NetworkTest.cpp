// Cameras on a network and on USB, over the loopback device: what they say, who may open them, what goes wrong.
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
#include <fstream>
#include <map>

#include "CameraBench.h"
#include "FakeGige.h"
#include "UsbCameras.h"

using namespace oxgenapi;
namespace fs = std::filesystem;
using testing::AllOf;
using testing::Contains;
using testing::Field;
using testing::HasSubstr;

namespace {

constexpr size_t kWidth = 0x8000;
constexpr auto kSearch = 400ms;

std::string description(const std::string& minor) {
  return R"(<?xml version="1.0"?>
<RegisterDescription ModelName="Loop" VendorName="Fake" StandardNameSpace="GEV" SchemaMajorVersion="1"
  SchemaMinorVersion=")" +
         minor + R"(" SchemaSubMinorVersion="0" MajorVersion="1" MinorVersion="0" SubMinorVersion="0" ToolTip=""
  ProductGuid="0" VersionGuid="0" xmlns="http://www.genicam.org/GenApi/Version_1_)" +
         minor + R"(">
  <Category Name="Root"><pFeature>Width</pFeature></Category>
  <IntReg Name="Width"><Address>0x8000</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>
    <Endianess>BigEndian</Endianess></IntReg>
  <Port Name="Device"/></RegisterDescription>)";
}

class OtherProgram : public CameraBench {
 protected:
  OtherProgram() {
    setenv("OXGENAPI_TRANSPORTS", (built() / "oxgenapi").c_str(), 1);
    setenv("OXGENAPI_INTERFACES", "lo", 1);
    setenv("OXGENAPI_ADDRESSES", "127.0.0.2", 1);
  }
};

class Network : public OtherProgram {
 protected:
  void SetUp() override {
    if (!fs::exists(built() / "oxgenapi/aravis.so")) GTEST_SKIP() << "built without aravis";
    camera_ = std::make_unique<FakeGige>("127.0.0.2");
    if (!camera_->running()) GTEST_SKIP() << "another program uses port 3956 of 127.0.0.2";
    camera_->describe("one.xml", description("1"));
    camera_->number(kWidth, 640);
  }
  FakeGige& fake() { return *camera_; }
  static FoundCamera found() {
    for (const FoundCamera& camera : findCameras(kSearch))
      if (camera.address == "127.0.0.2") return camera;
    return {};
  }

 private:
  std::unique_ptr<FakeGige> camera_;
};

// Debian's fake camera, a process of its own.
class FakeProcess {
 public:
  explicit FakeProcess(const char* serial) : process_(fork()) {
    if (process_ == 0) {
      execlp("arv-fake-gv-camera-0.8", "arv-fake-gv-camera-0.8", "-i", "127.0.0.1", "-s", serial, nullptr);
      _exit(127);
    }
  }
  ~FakeProcess() {
    kill(process_, SIGKILL);
    waitpid(process_, nullptr, 0);
  }

 private:
  pid_t process_;
};

}  // namespace

TEST_F(Network, ACameraTellsWhatItIsWhateverElseArrives) {
  fake().odd = true;
  fake().number(0x670, 1000);
  fake().text(0xe8, "sixteen-bytes-16", 16);
  const CameraList list(kSearch);
  const FoundCamera camera = found();
  EXPECT_EQ(camera.id, "Fake_Sons-Loop-SERIAL-OF-16-CHR");
  EXPECT_EQ(camera.userName, "sixteen-bytes-16");
  EXPECT_EQ(camera.identity, "00:02:7f:00:00:02");
  EXPECT_EQ(camera.interface, "lo");
  EXPECT_EQ(camera.linkSpeed, 1'000'000'000);
  EXPECT_EQ(camera.reach, CR_Free);
  EXPECT_THAT(list.notes(), Contains(AllOf(Field(&CameraNote::kind, CN_Answer),
                                           Field(&CameraNote::text, HasSubstr("3 bytes from 127.0.0.2")))));
  setenv("OXGENAPI_INTERFACES", "lo,nothing0", 1);
  setenv("OXGENAPI_ADDRESSES", "127.0.0.2,127.0.0.9,nowhere", 1);
  const CameraList others(kSearch);
  EXPECT_FALSE(others.cameras().empty());
  for (const char* text : {"nothing0 of OXGENAPI_INTERFACES is no interface",
                           "nowhere of OXGENAPI_ADDRESSES is no IPv4", "127.0.0.9 is there, but no camera listens"}) {
    EXPECT_THAT(others.notes(), Contains(AllOf(Field(&CameraNote::kind, CN_InterfaceFailed),
                                               Field(&CameraNote::text, HasSubstr(text)))));
  }
}

TEST_F(Network, AnAddressAnswersWithoutASearchAndAnAbsentOneIsGivenUp) {
  Camera camera = Camera::open("127.0.0.2");
  EXPECT_EQ(camera["Width"].integer(), 640);
  camera["Width"].set(320);
  EXPECT_EQ(fake().number(kWidth), 320u);
  camera.close();
  EXPECT_EQ(fake().number(0xa00), 0u) << "control is given back";
  fake().silent = true;
  CameraOptions hasty;
  hasty.answer = 300ms;
  const auto time = timeOf([&] {
    expectFailure(OXCAMERA_E_NOT_FOUND, "No camera answers at '127.0.0.2' within 300 ms",
                  [&] { Camera::open("127.0.0.2", hasty); });
  });
  EXPECT_GE(time, 290ms);
  EXPECT_LT(time, 1500ms);
}

TEST_F(Network, ACameraInAForeignSubnetIsListedAndNotOpened) {
  const FakeGige other("127.0.0.1");
  if (!other.running()) GTEST_SKIP() << "another program uses port 3956 of 127.0.0.1";
  const_cast<FakeGige&>(other).number(0x24, 0xc0a80505);
  const_cast<FakeGige&>(other).number(0x34, 0xffffff00);
  const CameraList list(kSearch);
  size_t index = 0;
  const auto cameras = list.cameras();
  while (index < cameras.size() && cameras[index].address != "192.168.5.5") ++index;
  ASSERT_LT(index, cameras.size());
  EXPECT_EQ(cameras[index].reach, CR_WrongSubnet);
  EXPECT_THAT(cameras[index].obstacle, AllOf(HasSubstr("192.168.5.5"), HasSubstr("lo (127.0.0.1/8)")));
  expectFailure(OXCAMERA_E_UNREACHABLE, "is not in the network of lo", [&] { Camera::open(cameras[index].id); });
}

TEST_F(Network, ControlThatAnotherProgramHasIsToldAtOnce) {
  fake().number(0xa00, 2);
  fake().number(0xa14, 0x0a000007);
  EXPECT_THAT(found().obstacle, HasSubstr("a program at 10.0.0.7 has control"));
  EXPECT_LT(timeOf([] { expectFailure(OXCAMERA_E_IN_USE, "has control", [] { Camera::open("127.0.0.2"); }); }), 2s);
  const Camera watcher = Camera::open("127.0.0.2", OX_READ_ONLY);
  EXPECT_EQ(watcher["Width"].integer(), 640);
  expectFailure(OXGENAPI_E_NOT_WRITABLE, "was opened read only", [&] { watcher["Width"].set(1); });
  EXPECT_EQ(fake().writes, 0);
}

// The driver opens no camera whose description it cannot use: registers are reached without it.
TEST_F(Network, ABrokenDescriptionLeavesRegistersAndControl) {
  fake().describe("broken.zip", "PK\3\4 no archive");
  CameraOptions options;
  options.answer = 800ms;
  options.heartbeat = 1500ms;
  Camera camera = Camera::open("127.0.0.2", options);
  expectFailure(OXGENAPI_E_RUNTIME, "", [&] { camera.map(); });
  EXPECT_EQ(camera.description(), "PK\3\4 no archive");
  EXPECT_EQ(fake().number(0xa00), 2u);
  char bytes[5];
  camera.write("ABCDE", 0x8101, 5);
  camera.read(bytes, 0x8101, 5);
  EXPECT_EQ(std::string(bytes, 5), "ABCDE");
  expectFailure(OXCAMERA_E_REFUSED, "no such address (0x8003)", [&] { camera.read(bytes, 0xf0000000, 4); });
  expectFailure(OXCAMERA_E_REFUSED, "beyond 32 bits", [&] { camera.read(bytes, 0x100000000, 4); });

  fake().pendingMs = 1200;  // longer than an answer may take, but it asks for the time
  EXPECT_GE(timeOf([&] { camera.write("WXYZ", 0x8100, 4); }), 1000ms);
  fake().pendingMs = 0;
  fake().deafToWrites = true;
  const int before = fake().writes;
  expectFailure(OXCAMERA_E_OUTCOME_UNKNOWN, "not repeated", [&] { camera.write("abcd", 0x8100, 4); });
  EXPECT_EQ(fake().writes, before + 1);
  EXPECT_EQ(fake().number(0x8100), 0x61626364u);
  fake().deafToWrites = false;

  fake().silent = true;
  EXPECT_LT(timeOf([&] { EXPECT_TRUE(camera.waitForLoss(10s)); }), options.heartbeat + 3s);
  EXPECT_LT(timeOf([&] { camera.close(); }), 2s);
}

TEST_F(Network, OldCamerasAreReadByRegisterAccess) {
  fake().describe("old.xml", description("0"));
  fake().swapsMemory = true;
  EXPECT_EQ(Camera::open("127.0.0.2", OX_READ_ONLY)["Width"].integer(), 640);
  const Camera camera = Camera::open("127.0.0.2");
  EXPECT_EQ(camera["Width"].integer(), 640);
  camera["Width"].set(512);
  EXPECT_EQ(fake().number(kWidth), 512u);
}

TEST_F(Network, AddressesAreReadStoredAndForced) {
  Camera camera = Camera::open("127.0.0.2");
  camera.storeAddress({"10.1.2.3", "255.255.0.0", "10.1.0.1"});
  const TNetworkConfiguration now = camera.network();
  EXPECT_STREQ(now.Current.Address, "127.0.0.2");
  EXPECT_STREQ(now.Stored.Address, "10.1.2.3");
  EXPECT_STREQ(now.Stored.Mask, "255.255.0.0");
  EXPECT_STREQ(now.Stored.Gateway, "10.1.0.1");
  EXPECT_EQ(now.Modes, OX_ADDRESS_STORED | OX_ADDRESS_DHCP | OX_ADDRESS_LINK_LOCAL);
  const std::map<std::string, TNetworkAddress> refused{
      {"is no IPv4 address", {"10.1.2", "255.0.0.0", ""}},
      {"is the network itself", {"10.1.0.0", "255.255.0.0", ""}},
      {"is the broadcast address", {"10.1.255.255", "255.255.0.0", ""}},
      {"is not in the network", {"10.1.2.3", "255.255.0.0", "10.2.0.1"}},
      {"is no address for a camera", {"224.0.0.1", "255.0.0.0", ""}}};
  for (const auto& [text, address] : refused)
    expectFailure(OXGENAPI_E_INVALID_ARGUMENT, text, [&] { camera.storeAddress(address); });
  camera.close();
  const CameraList list(kSearch);
  const auto cameras = list.cameras();
  for (size_t i = 0; i < cameras.size(); ++i) {
    if (cameras[i].address != "127.0.0.2") continue;
    EXPECT_THAT(std::string(list.proposeAddress(i).Address), testing::StartsWith("127.0.0."));
    list.forceAddress(i, {"10.1.2.4", "255.255.255.0", "0.0.0.0"});
  }
  EXPECT_EQ(fake().number(0x24), 0x0a010204u);
  EXPECT_EQ(fake().number(0x34), 0xffffff00u);
}

// Another program's hold, a loss, and the way back, on a camera that is not ours.
TEST_F(Network, TheFakeCameraOfAravisIsSharedLostAndFoundAgain) {
  const std::string serial = "OX" + std::to_string(getpid());
  auto process = std::make_unique<FakeProcess>(serial.c_str());
  CameraOptions options;
  options.retry = 5s;
  options.heartbeat = 1000ms;
  const Outcome missing = outcomeOf([&] { Camera::open("127.0.0.1:" + serial, options); });
  if (missing.code != 0) GTEST_SKIP() << missing.text;
  Camera camera = Camera::open(serial, options);
  const Node width = camera["Width"];
  const int64_t first = width.integer();
  width.set(first / 2);

  const pid_t other = fork();
  if (other == 0) {  // which knows nothing of what this process has opened
    execl("/proc/self/exe", "test_camera", "--gtest_filter=OtherProgram.DISABLED_MayOnlyRead",
          "--gtest_also_run_disabled_tests", nullptr);
    _exit(127);
  }
  int status = 0;
  waitpid(other, &status, 0);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);

  process.reset();
  EXPECT_LT(timeOf([&] { EXPECT_TRUE(camera.waitForLoss(10s)); }), options.heartbeat + 3s);
  process = std::make_unique<FakeProcess>(serial.c_str());
  camera.reopen(10s);
  EXPECT_EQ(width.integer(), first);
  EXPECT_LT(timeOf([&] { camera.close(); }), 2s);
}

// What the test above runs as another program.
TEST_F(OtherProgram, DISABLED_MayOnlyRead) {
  expectFailure(OXCAMERA_E_IN_USE, "has control", [] { Camera::open("127.0.0.1"); });
  EXPECT_GT(Camera::open("127.0.0.1", OX_READ_ONLY)["Width"].integer(), 0);
}

// Without a device: what the system's folders say.
TEST_F(CameraBench, UsbCamerasThatMayNotBeOpenedAreListedWithTheRule) {
  const fs::path devices = folder() / "devices", nodes = folder() / "nodes";
  const auto put = [&](const std::string& file, const std::string& text) {
    fs::create_directories((devices / file).parent_path());
    std::ofstream(devices / file) << text << '\n';
  };
  for (const char* const name : {"2-1.4", "3-2"}) {
    const std::string device = name;
    for (const auto& [file, text] : std::map<std::string, std::string>{{"idVendor", "2ba2"},
                                                                       {"manufacturer", "Makers"},
                                                                       {"product", "Eye"},
                                                                       {"serial", "S\x1b" + device},
                                                                       {"speed", "5000"},
                                                                       {"busnum", device.substr(0, 1)},
                                                                       {"devnum", "5"}})
      put(device + "/" + file, text);
    put(device + ":1.0/bInterfaceClass", "ef");
    put(device + ":1.0/bInterfaceSubClass", "05");
    put(device + ":1.0/bInterfaceProtocol", "00");
  }
  put("1-1:1.0/bInterfaceClass", "03");  // a mouse
  fs::create_directories(nodes / "003");
  std::ofstream(nodes / "003/005") << "";
  fs::create_symlink("../drivers/usbfs", devices / "3-2:1.0/driver");
  const auto cameras = ox::camera::usb::systemCameras(devices, nodes);
  ASSERT_EQ(cameras.size(), 2u);
  const auto closed = ox::camera::usb::factsOf(cameras[0]), held = ox::camera::usb::factsOf(cameras[1]);
  EXPECT_EQ(closed.reach, ox::camera::Reach::noPermission);
  EXPECT_THAT(closed.obstacle, AllOf(HasSubstr("nodes/002/005"), HasSubstr("ATTRS{idVendor}==\"2ba2\"")));
  EXPECT_EQ(closed.linkSpeed, 5'000'000'000u);
  EXPECT_EQ(closed.interface, "usb2");
  EXPECT_EQ(held.reach, ox::camera::Reach::busy);
  EXPECT_THAT(held.obstacle, HasSubstr("another program uses it"));
}

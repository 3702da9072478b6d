// What a list of cameras says, whatever devices, transports and modules say.
#include <fstream>
#include <map>
#include <thread>

#include "CameraBench.h"

using namespace oxgenapi;
using ox::camera::CameraFacts;
using ox::camera::Findings;
using ox::camera::Note;
using ox::camera::Reach;
using ox::camera::Search;
using testing::AllOf;
using testing::Contains;
using testing::Field;
using testing::HasSubstr;

namespace {

CameraFacts facts(const std::string& place, const std::string& serial, const std::string& identity,
                  const std::string& address) {
  CameraFacts camera;
  camera.place = place;
  camera.vendor = "V";
  camera.model = "M";
  camera.serial = serial;
  camera.identity = identity;
  camera.address = address;
  camera.reach = Reach::free;
  return camera;
}

auto note(TCameraNote kind, const std::string& text) {
  return Contains(AllOf(Field(&CameraNote::kind, kind), Field(&CameraNote::text, HasSubstr(text))));
}

class Finding : public CameraBench {
 protected:
  static void find(std::vector<CameraFacts> cameras) {
    odd().search = [cameras](const Search&) { return Findings{cameras, {}}; };
  }
  static std::vector<std::string> ids() {
    std::vector<std::string> all;
    for (const FoundCamera& camera : findCameras(1ms)) all.push_back(camera.id);
    return all;
  }
};

}  // namespace

TEST_F(Finding, IdsAreUniqueWhateverCamerasSay) {
  const struct {
    const char* what;
    std::vector<CameraFacts> cameras;
    std::vector<std::string> ids;
  } table[] = {
      {"one serial number twice",
       {facts("a", "1", "x", "10.0.0.1"), facts("b", "1", "y", "10.0.0.2")},
       {"V-M-1@10.0.0.1", "V-M-1@10.0.0.2"}},
      {"one identity twice",
       {facts("a", "", "x", "10.0.0.1"), facts("b", "", "x", "10.0.0.2")},
       {"V-M-x@10.0.0.1", "V-M-x@10.0.0.2"}},
      {"nothing but a place", {facts("a", "", "", ""), facts("b", "", "", "")}, {"V-M@#1", "V-M@#2"}},
      {"one camera on two interfaces", {facts("a", "1", "x", "10.0.0.1"), facts("b", "1", "X", "10.0.0.1")}, {"V-M-1"}},
      {"binary texts",
       {facts("a",
              "\x1b[31m\xff"
              "7",
              "x", "10.0.0.1")},
       {"V-M-x1b_31m_xff7"}},
  };
  for (const auto& row : table) {
    find(row.cameras);
    EXPECT_EQ(ids(), row.ids) << row.what;
  }
}

TEST_F(Finding, DeviceTextsAreShownEscapedAndIdentityStandsInForASerialNumber) {
  CameraFacts camera = facts("a", "", "00:11:22:33:44:55", "10.0.0.1");
  camera.userName = std::string("Tür\x07\xc3(\\\0rest", 12);
  find({camera});
  const FoundCamera found = findCameras(1ms).at(0);
  EXPECT_EQ(found.userName, "Tür\\x07\\xc3(\\x5c");
  EXPECT_EQ(found.serial, "00:11:22:33:44:55");
  EXPECT_EQ(found.identity, "00:11:22:33:44:55");
}

// Two transports find one camera: it is listed once, the way that opens stands first, each way opens by its prefix.
TEST_F(Finding, OneCameraOnTwoWaysIsOneLine) {
  simulate("TwoWays");
  CameraFacts blocked = facts("there", "TwoWays", "", "TwoWays");
  blocked.vendor = "oxsimulation";
  blocked.model = "SC-200";
  blocked.reach = Reach::wrongSubnet;
  blocked.obstacle = "it is far away";
  find({blocked});
  const std::vector<FoundCamera> cameras = findCameras(1ms);
  ASSERT_EQ(cameras.size(), 1u);
  EXPECT_EQ(cameras[0].transport, "simulated");
  EXPECT_EQ(cameras[0].reach, CR_Free);
  EXPECT_EQ(cameras[0].ways, "simulated:" + cameras[0].id + " odd:" + cameras[0].id);
  EXPECT_EQ(Camera::open("TwoWays").text(CI_Transport), "simulated");
  expectFailure(OXCAMERA_E_UNREACHABLE, "it is far away", [] { Camera::open("odd:TwoWays"); });
}

TEST_F(Finding, AFaultyTransportHidesNoOtherCamera) {
  simulate("Whole");
  const struct {
    const char* what;
    std::function<Findings(const Search&)> search;
    TCameraNote kind;
    const char* text;
  } table[] = {
      {"throws", [](const Search&) -> Findings { throw std::runtime_error("no card"); }, CN_InterfaceFailed,
       "odd cannot search: no card"},
      {"throws anything", [](const Search&) -> Findings { throw 7; }, CN_InterfaceFailed, "odd cannot search"},
      {"hangs",
       [](const Search&) -> Findings {
         std::this_thread::sleep_for(4s);
         return {};
       },
       CN_InterfaceFailed, "odd did not answer in time"},
      {"notes an answer",
       [](const Search&) -> Findings {
         return {{}, {{Note::Kind::answer, "eth0: 7 bytes\n"}}};
       },
       CN_Answer, "eth0: 7 bytes\\x0a"},
  };
  for (const auto& row : table) {
    odd().search = row.search;
    const CameraList list(1ms);
    EXPECT_EQ(list.cameras().size(), 1u) << row.what;
    EXPECT_THAT(list.notes(), note(row.kind, row.text)) << row.what;
  }
}

TEST_F(Finding, AModuleThatCannotBeUsedIsNamedAndLeftOut) {
  const auto folder = modules({"Crashing", "Outdated"});
  std::ofstream(folder / "text.so") << "not a library";
  std::filesystem::copy(folder / "Outdated.so", folder / "ignored.txt");
  setenv("OXGENAPI_TRANSPORTS",
         (std::string(getenv("OXGENAPI_TRANSPORTS")) + ":" + folder.string() + ":/nowhere").c_str(), 1);
  simulate("Beside");
  for (int again = 0; again < 2; ++again) {
    const CameraList list(1ms);
    EXPECT_EQ(list.cameras().size(), 1u);
    EXPECT_THAT(list.notes(), note(CN_Module, "odd.so is loaded"));
    EXPECT_THAT(list.notes(), note(CN_ModuleFailed, "Crashing.so crashes when it is loaded (Aborted)"));
    EXPECT_THAT(list.notes(), note(CN_ModuleFailed, "Outdated.so was built for another version"));
    EXPECT_THAT(list.notes(), note(CN_ModuleFailed, "text.so cannot be loaded: "));
    EXPECT_THAT(list.notes(), note(CN_ModuleFailed, "/nowhere cannot be read: "));
    EXPECT_THAT(list.notes(), Not(Contains(Field(&CameraNote::text, HasSubstr("ignored.txt")))));
  }
}

TEST_F(Finding, NothingFoundSaysWhatWasTried) {
  odd().search = [](const Search&) { return Findings{{}, {{Note::Kind::interface, "eth9 (10.1.1.1/8): asked"}}}; };
  expectFailure(OXCAMERA_E_NOT_FOUND, "eth9 (10.1.1.1/8): asked", [] { Camera::open(); });
  setenv("OXGENAPI_TRANSPORTS", folder().c_str(), 1);  // no module at all
  EXPECT_THAT(CameraList(1ms).notes(), note(CN_Advice, "No transport is installed"));
  expectFailure(OXCAMERA_E_NOT_FOUND, "no transport is installed", [] { Camera::open(); });
}

TEST_F(Finding, ADescriptionOfSimulatedCamerasIsChecked) {
  for (const auto& [text, fault] : std::map<std::string, std::string>{{"A,colour=red", "'colour'"},
                                                                      {"A,late=soon", "'soon' for late"},
                                                                      {"A,state=good", "'good' is no state"},
                                                                      {"A,busy", "'busy' is no KEY=VALUE"},
                                                                      {",serial=1", "no name"}}) {
    simulate(text);
    EXPECT_THAT(CameraList(1ms).notes(), note(CN_InterfaceFailed, fault)) << text;
  }
}

TEST_F(Finding, HandlesAndIndicesAreChecked) {
  simulate("Only");
  const CameraList list(1ms);
  size_t size = 0;
  int64_t number = 0;
  uint32_t wrong = 0;
  const auto bad = [](uint64_t value) { return reinterpret_cast<OXCAMERALIST>(value); };
  for (const uint64_t handle : {uint64_t{0}, uint64_t{0x1234}, uint64_t(reinterpret_cast<uintptr_t>(&size))}) {
    wrong += OxCameraListCount(bad(handle), size) == OXGENAPI_E_INVALID_HANDLE;
    wrong += OxCameraState(reinterpret_cast<OXCAMERA>(handle), reinterpret_cast<TCameraState&>(number)) ==
             OXGENAPI_E_INVALID_HANDLE;
  }
  wrong +=
      OxCameraListCount(bad(reinterpret_cast<uint64_t>(Camera::open().handle())), size) == OXGENAPI_E_INVALID_HANDLE;
  EXPECT_EQ(wrong, 7u);
  EXPECT_EQ(OxCameraListText(list.handle(), 1, CI_Id, nullptr, size), OXGENAPI_E_INVALID_ARGUMENT);
  EXPECT_EQ(OxCameraListText(list.handle(), 0, CI_Reach, nullptr, size), OXGENAPI_E_INVALID_ARGUMENT);
  EXPECT_EQ(OxCameraListNumber(list.handle(), 0, CI_Id, number), OXGENAPI_E_INVALID_ARGUMENT);
  expectFailure(OXGENAPI_E_NOT_SUPPORTED, "no network address", [&] { list.proposeAddress(0); });
  expectFailure(OXGENAPI_E_INVALID_ARGUMENT, "mask 255.0.255.0 is not contiguous", [&] {
    list.forceAddress(0, {"10.0.0.1", "255.0.255.0", ""});
  });
  char text[4];
  size = sizeof text;
  EXPECT_EQ(OxCameraListText(list.handle(), 0, CI_Vendor, text, size), 0u);
  EXPECT_STREQ(text, "OxS");
}

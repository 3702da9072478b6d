// The C++ objects over the flat interface, on the simulated camera.
#include <OxSimulatedCamera.h>
#include <gmock/gmock.h>
#include <OxGenApi/oxgenapi.hpp>

#include <filesystem>
#include <fstream>
#include <limits>

using oxgenapi::Error;
using oxgenapi::Node;
using oxgenapi::NodeMap;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

static_assert(sizeof(Node) == sizeof(NODE), "a node costs its handle");

class CppLayer : public testing::Test {
 protected:
  CppLayer() : camera_(OxSimulatedCameraCreate()) {
    map_.loadText(OxSimulatedCameraDescription(camera_));
    map_.connect(OxSimulatedCameraRead, OxSimulatedCameraWrite, OxSimulatedCameraAccess, camera_);
  }
  ~CppLayer() override {
    map_ = NodeMap();  // before the camera
    OxSimulatedCameraDestroy(camera_);
  }

  OxSimulatedCamera* camera_;
  NodeMap map_;
};

template <class Call>
Error failureOf(Call call) {
  try {
    call();
  } catch (const Error& error) {
    return error;
  }
  ADD_FAILURE() << "nothing was thrown";
  return {0, ""};
}

TEST_F(CppLayer, WritesAndReadsEveryKindOfValue) {
  map_["ExposureTime"].set(5000.0);
  map_["Width"].set(640);
  map_["PixelFormat"].set("Mono8");
  map_["ReverseX"].set(true);
  map_["DeviceUserID"].set(std::string(2 * 8, 'x'));
  map_["TestSigned64"].set(std::numeric_limits<int64_t>::min());
  EXPECT_EQ(map_["ExposureTime"].real(), 5000);
  EXPECT_EQ(map_["Width"].integer(), 640);
  EXPECT_EQ(map_["Width"].text(), "640");
  EXPECT_EQ(map_["PixelFormat"].text(), "Mono8");
  EXPECT_TRUE(map_["ReverseX"].boolean());
  EXPECT_EQ(map_["DeviceUserID"].text(), "xxxxxxxxxxxxxxxx");
  EXPECT_EQ(map_["TestSigned64"].integer(), std::numeric_limits<int64_t>::min());
  const int64_t before = map_["TestCommandCount"].integer();
  map_["TestCommand"].execute();
  EXPECT_EQ(map_["TestCommandCount"].integer(), before + 1);
}

TEST_F(CppLayer, FailuresAreThrownOrReturned) {
  const Node width = map_["Width"];
  const Error error = failureOf([&] { width.set(1); });
  EXPECT_EQ(error.code(), OXGENAPI_E_INVALID_ARGUMENT);
  EXPECT_EQ(error.feature(), "Width");
  EXPECT_THAT(error.what(), HasSubstr("16"));

  const oxgenapi::Status refused = width.trySet(1);
  EXPECT_FALSE(refused);
  EXPECT_STREQ(refused.error().what(), error.what());
  EXPECT_EQ(map_["Gain"].tryInteger().valueOr(-1), map_["Gain"].integer());
  EXPECT_EQ(map_["Root"].tryInteger().valueOr(-1), -1);
  EXPECT_EQ(map_.tryNode("NoSuchFeature").code(), OXGENAPI_E_NOT_PRESENT);
  EXPECT_EQ(failureOf([&] { (void)map_["NoSuchFeature"]; }).feature(), "NoSuchFeature");
  EXPECT_EQ(failureOf([] { (void)Node().integer(); }).code(), OXGENAPI_E_INVALID_HANDLE);
  EXPECT_EQ(failureOf([] { NodeMap().loadFile("/no/such.xml"); }).feature(), "/no/such.xml");
}

TEST_F(CppLayer, RefusesWhatWasNotMeantAndKnowsTypes) {
  const int64_t before = map_["TestSigned64"].integer();
  EXPECT_EQ(failureOf([&] { map_["TestSigned64"].execute(); }).code(), OXGENAPI_E_NOT_SUPPORTED);
  EXPECT_EQ(map_["TestSigned64"].integer(), before);
  EXPECT_STREQ(failureOf([&] { map_["Width"].set(320.5); }).what(), "Width: 320.5 is not a whole number");
  EXPECT_FALSE(map_["Width"].trySet(std::numeric_limits<float>::quiet_NaN()));
  map_["Width"].set(320.0);

  const oxgenapi::Integer width = map_.integer("Width");
  EXPECT_EQ(width.value(), 320);
  EXPECT_EQ(width.unit(), "px");
  width.set(width.min() + width.increment());
  EXPECT_EQ(width.value(), 20);
  EXPECT_LT(width.value(), width.max());
  const oxgenapi::Float exposure = map_.real("ExposureTime");
  exposure.set(exposure.min());
  EXPECT_EQ(exposure.value(), 10);
  EXPECT_FALSE(map_.real("Gain").increment());
  EXPECT_THAT(map_.enumeration("PixelFormat").entries(), ElementsAre("Mono8"));  // of more, as the camera stands
  map_.boolean("ReverseX").set(true);
  EXPECT_TRUE(map_.boolean("ReverseX").value());
  map_.text("DeviceUserID").set("north");
  EXPECT_EQ(map_.text("DeviceUserID").value(), "north");
  map_.command("TestCommand").execute();
  EXPECT_TRUE(map_.command("TestCommand").done());
  const std::vector<std::byte> bytes(16, std::byte{0xa5});
  map_.bytes("TestRegister").set(bytes);
  EXPECT_EQ(map_.bytes("TestRegister").value(), bytes);
  const Error wrong = failureOf([&] { (void)map_.integer("Gain"); });
  EXPECT_EQ(wrong.code(), OXGENAPI_E_FEATURE_TYPE);
  EXPECT_STREQ(wrong.what(), "Gain is not an integer");
}

TEST_F(CppLayer, ObjectsShareAndReleaseTheirHandles) {
  NODE raw = nullptr;
  NODEMAP rawMap = nullptr;
  {
    Node copy;
    {
      NodeMap other;
      other.loadText(OxSimulatedCameraDescription(nullptr));
      rawMap = other.handle();
      const Node first = other["Width"];
      Node moved = first;
      copy = std::move(moved);
      raw = copy.handle();
    }
    EXPECT_TRUE(IsNode(raw));
    EXPECT_EQ(copy.name(), "Width");  // keeps its node map alive
  }
  EXPECT_FALSE(IsNode(raw));
  EXPECT_FALSE(IsNodeMap(rawMap));
}

TEST_F(CppLayer, TellsWhatIsKnownAboutANode) {
  const Node gain = map_["Gain"];
  EXPECT_EQ(gain.type(), NT_Float);
  EXPECT_EQ(gain.access(), AM_ReadWrite);
  EXPECT_TRUE(gain.readable() && gain.writable() && gain.infoBoolean(NI_IsStreamable));
  EXPECT_LT(gain.infoReal(NI_Min), gain.infoReal(NI_Max));
  EXPECT_THAT(gain.list(NL_SelectingFeatures), ElementsAre("GainSelector"));
  EXPECT_EQ(map_.related(map_["GainSelector"], NL_EnumEntries).front().text(), "All");
  EXPECT_THAT(map_.nodeNames(), Contains("Gain"));
  EXPECT_EQ(map_.nodeNames().size(), map_.nodeCount());
  EXPECT_EQ(map_.infoInteger(NMI_SchemaMajorVersion), 1);
  EXPECT_FALSE(map_.infoText(NMI_ModelName).empty());
  gain.setVerifyMode(VM_ReadWrite);
  EXPECT_EQ(gain.verifyMode(), VM_ReadWrite);

  const Node port = map_["Device"];
  const Node content = map_["TestRegister"];
  const unsigned char bytes[] = {1, 2, 3};
  port.setMemory(content.infoInteger(NI_RegisterAddress), bytes, sizeof bytes);
  content.invalidate();
  EXPECT_EQ(content.registerData()[2], std::byte{3});
  EXPECT_EQ(port.memory(content.infoInteger(NI_RegisterAddress), 3)[1], std::byte{2});

  oxgenapi::NodeMapStream stream(map_);
  stream.push(map_["Width"]);
  EXPECT_THAT(stream.dump(), HasSubstr("\"Name\":\"Width\""));
}

TEST_F(CppLayer, CallbacksEndWithTheirRegistration) {
  std::string seen;
  {
    oxgenapi::UpdateRegistration first = map_["Width"].onUpdate([&](const Node& node) { seen += node.text() + " "; });
    const oxgenapi::UpdateRegistration moved = std::move(first);
    map_["Width"].set(320);
  }
  map_["Width"].set(640);
  EXPECT_EQ(seen, "320 ");
}

TEST_F(CppLayer, ARefusedAccessCarriesWhatItThrew) {
  struct Broken : oxgenapi::Registers {
    void read(void*, int64_t, int64_t) override { throw Error(OXGENAPI_E_ACCESS_DENIED, "cable pulled"); }
    void write(const void*, int64_t, int64_t) override { throw std::runtime_error("no power"); }
  } broken;
  map_.connect(broken);
  const Error reading = failureOf([&] { (void)map_["DeviceTemperature"].real(); });
  EXPECT_THAT(reading.what(), HasSubstr("cable pulled"));
  EXPECT_EQ(reading.code(), OXGENAPI_E_NOT_READABLE);
  EXPECT_THAT(failureOf([&] { map_["TestSigned64"].set(1); }).what(), HasSubstr("no power"));
}

TEST_F(CppLayer, SettingsAndFilesComeBack) {
  const std::string path = testing::TempDir() + "/CppLayer.settings";
  EXPECT_TRUE(map_.saveSettings(path, {"Width", "ReverseX"}).empty());
  const std::string saved = map_.settings({"Width", "ReverseX"});
  EXPECT_THAT(saved, StartsWith("Width = \""));
  EXPECT_THAT(map_.settings(), HasSubstr("Gain[GainSelector(All)] = \""));
  map_["Width"].set(16);
  EXPECT_TRUE(map_.loadSettings(path, true).empty());
  EXPECT_EQ(map_.settings({"Width", "ReverseX"}), saved);
  std::filesystem::remove(path);

  const std::string bad = "Width = \"1\"\nHeight = \"240\"\n";
  const oxgenapi::Problems problems = map_.loadSettingsText(bad);
  ASSERT_EQ(problems.size(), 1);
  EXPECT_EQ(problems[0].feature(), "Width");
  EXPECT_EQ(problems[0].code(), OXGENAPI_E_INVALIDATE_FAILED);
  EXPECT_EQ(map_["Height"].integer(), 240);
  const Error stopped = failureOf([&] { map_.loadSettingsText(bad, false, oxgenapi::OnProblem::stop); });
  EXPECT_STREQ(stopped.what(), problems[0].what());

  const std::string content(10000, 'c');
  map_.upload("UserFile1", content.data(), content.size());
  EXPECT_EQ(map_.fileSize("UserFile1"), content.size());
  EXPECT_EQ(map_.download("UserFile1").size(), content.size());
  EXPECT_EQ(failureOf([&] { (void)map_.download("NoSuchFile"); }).feature(), "NoSuchFile");
}

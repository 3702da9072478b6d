// The camera's description against the camera's registers, and against itself.
#include <fstream>
#include <set>
#include <sstream>

#include "CameraBench.h"

using ox::simulation::SimulatedCamera;

TEST(CameraDescription, IsTheFileThatLiesBesideTheSources) {
  const char* source = std::getenv("OX_SOURCE_DIR");
  if (!source) GTEST_SKIP() << "OX_SOURCE_DIR names the source folder";
  std::ifstream file(std::string(source) + "/simulation/camera.xml", std::ios::binary);
  std::stringstream text;
  text << file.rdbuf();
  EXPECT_EQ(text.str(), SimulatedCamera::description());
}

// What else an engine would find, it finds when it loads the description.
TEST(CameraDescription, TellsFeaturesWhatTheyAreFor) {
  const DescriptionDocument description(SimulatedCamera::description());
  std::set<std::string> named;
  for (const auto& category : description.root().children("Category"))
    for (const auto& feature : category.children("pFeature")) named.insert(feature.child_value());
  int features = 0;
  for (const auto& node : description.root()) {
    if (node.name() == std::string("Category") || !named.count(node.attribute("Name").value())) continue;
    ++features;
    for (const char* text : {"ToolTip", "Description", "DisplayName", "Visibility"})
      EXPECT_TRUE(node.child(text)) << node.attribute("Name").value() << " has no " << text;
  }
  EXPECT_GE(features, 120);
}

TEST(CameraDescription, HasOnlyRegistersThatTheCameraHas) {
  const DescriptionDocument description(SimulatedCamera::description());
  SimulatedCamera camera;
  int registers = 0;
  for (const auto& top : description.root()) {
    if (top.child_value("pPort") != std::string("Device")) continue;
    if (top.child("IntSwissKnife") || top.child("pAddress") || top.child("pLength")) continue;  // they vary
    ++registers;
    const std::string name = top.attribute(top.attribute("Name") ? "Name" : "Comment").value();
    const int64_t address = static_cast<int64_t>(std::strtoull(top.child_value("Address"), nullptr, 0));
    std::vector<uint8_t> bytes(std::strtoull(top.child_value("Length"), nullptr, 0));
    const int64_t length = static_cast<int64_t>(bytes.size());
    const std::string access = top.child_value("AccessMode");
    EXPECT_EQ(camera.read(bytes.data(), address, length) == 0, access != "WO")
        << name << ": " << SimulatedCamera::lastFailureText();
    if (access != "RO") continue;
    EXPECT_EQ(camera.write(bytes.data(), address, length), ox::simulation::kAccessRefused) << name;
  }
  EXPECT_GT(registers, 180);
}

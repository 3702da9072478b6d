// The camera's description against the camera's registers, and against itself.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <set>
#include <sstream>

#include "DescriptionOutline.h"
#include "OxSimulation/SimulatedCamera.h"

using ox::simulation::SimulatedCamera;

namespace {

const OutlineElement& root() {
  static const OutlineElement outline = DescriptionOutline::read(SimulatedCamera::description());
  return outline;
}

// Every node that a loader would build, entries and struct entries included.
std::vector<const OutlineElement*> nodes() {
  std::vector<const OutlineElement*> result;
  for (const auto& top : root().children) {
    if (top.name != "StructReg") result.push_back(&top);
    for (const auto& inner : top.children)
      if (inner.name == "StructEntry" || inner.name == "EnumEntry") result.push_back(&inner);
  }
  return result;
}

bool isLink(const std::string& element) {
  return element.size() > 1 && element[0] == 'p' && std::isupper(static_cast<unsigned char>(element[1]));
}

int64_t number(const std::string& text) {
  return static_cast<int64_t>(std::strtoull(text.c_str(), nullptr, 0));
}

}  // namespace

TEST(CameraDescription, IsTheFileThatLiesBesideTheSources) {
  const char* source = std::getenv("OX_SOURCE_DIR");
  if (!source) GTEST_SKIP() << "OX_SOURCE_DIR names the source folder";
  std::ifstream file(std::string(source) + "/simulation/camera.xml", std::ios::binary);
  std::stringstream text;
  text << file.rdbuf();
  EXPECT_EQ(text.str(), SimulatedCamera::description());
}

TEST(CameraDescription, NamesEveryNodeOnce) {
  std::set<std::string> seen;
  for (const auto& top : root().children) {
    std::set<std::string> entries;
    for (const auto& inner : top.children)
      if (inner.name == "EnumEntry") {
        EXPECT_TRUE(entries.insert(inner.attributes.at("Name")).second) << inner.attributes.at("Name");
      }
  }
  for (const auto* node : nodes())
    if (node->name != "EnumEntry") {
      EXPECT_TRUE(seen.insert(node->attributes.at("Name")).second) << node->attributes.at("Name");
    }
}

TEST(CameraDescription, LinksOnlyToNodesThatExist) {
  std::set<std::string> names;
  for (const auto* node : nodes()) names.insert(node->attributes.at("Name"));
  std::size_t links = 0;
  const auto follow = [&](const auto& self, const OutlineElement& element) -> void {
    for (const auto& child : element.children) {
      if (isLink(child.name)) {
        ++links;
        EXPECT_TRUE(names.count(child.text)) << child.name << " leads to " << child.text;
      }
      self(self, child);
    }
  };
  follow(follow, root());
  EXPECT_GT(links, 500u);
}

TEST(CameraDescription, TellsFeaturesWhatTheyAreFor) {
  std::size_t features = 0;
  std::set<std::string> named;
  for (const auto& top : root().children)
    if (top.name == "Category")
      for (const auto& child : top.children)
        if (child.name == "pFeature") named.insert(child.text);
  for (const auto* node : nodes()) {
    if (!named.count(node->attributes.count("Name") ? node->attributes.at("Name") : "")) continue;
    if (node->name == "Category" || node->name == "StructEntry" || node->name == "EnumEntry") continue;
    ++features;
    for (const char* text : {"ToolTip", "Description", "DisplayName", "Visibility"})
      EXPECT_TRUE(node->child(text)) << node->attributes.at("Name") << " has no " << text;
  }
  EXPECT_GE(features, 120u);
}

TEST(CameraDescription, HasOnlyRegistersThatTheCameraHas) {
  SimulatedCamera camera;
  std::size_t registers = 0;
  for (const auto& top : root().children) {
    if (!top.child("pPort") || top.textOf("pPort") != "Device") continue;
    if (top.child("IntSwissKnife") || top.child("pAddress") || top.child("pLength"))
      continue;  // address or length vary
    ++registers;
    const std::string name = top.attributes.count("Name") ? top.attributes.at("Name") : top.attributes.at("Comment");
    const int64_t address = number(top.textOf("Address"));
    const int64_t length = number(top.textOf("Length"));
    std::vector<uint8_t> bytes(static_cast<std::size_t>(length));
    const std::string access = top.textOf("AccessMode");
    const int readResult = camera.read(bytes.data(), address, length);
    EXPECT_EQ(readResult == 0, access != "WO") << name << ": " << SimulatedCamera::lastFailureText();
    if (access == "RO") {
      EXPECT_EQ(camera.write(bytes.data(), address, length), ox::simulation::kAccessRefused) << name;
    }
  }
  EXPECT_GT(registers, 180u);
}

// Descriptions of real cameras load without defects. They are not part of this repository.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include "LoaderSnippets.h"
#include "description/ElementRules.h"
#include "description/NodeTraits.h"

using namespace loading;

namespace {

std::vector<std::filesystem::path> realDescriptions() {
  std::vector<std::filesystem::path> files;
  if (const char* folder = std::getenv("OXGENAPI_DESCRIPTIONS")) {
    for (const auto& entry : std::filesystem::directory_iterator(folder))
      if (entry.path().extension() == ".xml" || entry.path().extension() == ".zip") files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  return files;
}

// Loads without defects; every link leads to the node that it names, and every feature knows its dependents.
TEST(RealDescriptions, LoadWithoutDefects) {
  const auto files = realDescriptions();
  if (files.empty()) GTEST_SKIP() << "set OXGENAPI_DESCRIPTIONS to a folder of camera descriptions";
  for (const auto& file : files) {
    SCOPED_TRACE(file.filename());
    const LoadedDescription loaded = loadDescriptionFile(file, ContentType_Auto);
    const Description& description = *loaded.description;
    EXPECT_EQ(loaded.sourceName, file);
    EXPECT_EQ(defects(loaded.description), std::vector<std::string>{});
    for (const std::string& note : notes(loaded.description)) EXPECT_NE(note.find("unusual name"), note.npos) << note;
    EXPECT_NE(description.indexOf("Root"), kNoNode);
    EXPECT_GT(description.nodeCount(), 30u);
    EXPECT_FALSE(description.device().modelName.empty());
    WalkScratch scratch;
    size_t features = 0;
    for (NodeIndex node = 0; node < description.nodeCount(); ++node) {
      EXPECT_EQ(description.indexOf(description.node(node).name()), node);
      for (const Property& property : description.properties(node)) {
        if (!kNamingLinks.has(property.element) && property.element != Element::EnumEntry) continue;
        ASSERT_EQ(description.node(property.target).name(), property.value());
      }
      features += description.graph().traits().isFeature(node);
      for (NodeIndex dependent : description.graph().directDependents(node)) {
        const auto all = description.graph().dependents(node, scratch);
        ASSERT_TRUE(std::binary_search(all.begin(), all.end(), dependent));
      }
    }
    EXPECT_GT(features, 10u);
  }
}

}  // namespace

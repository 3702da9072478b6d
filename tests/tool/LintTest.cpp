#include <gmock/gmock.h>

#include <cstdlib>

#include "ToolRun.h"

using testing::HasSubstr;

class LintCommand : public ToolTest {};

TEST_F(LintCommand, ProblemsCarryLineNodeAndElementAndOnlyDefectsFail) {
  struct Case {
    const char* features;
    const char* nodes;
    int status;
    const char* line;  // without the file; empty: no output at all
  };
  const Case cases[] = {
      {"<pFeature>W</pFeature>", "<Integer Name=\"W\"><ToolTip>Width</ToolTip><Value>1</Value></Integer>\n", 0, ""},
      {"<pFeature>W</pFeature>", "<!-- <Integer Name=\"W\"> -->\n<Integer Name=\"W\"><Value>1</Value></Integer>\n", 0,
       ":4: note: W: ToolTip: "},
      {"", "<Integer Name=\"Lost\"><Value>1</Value></Integer>\n", 0, ":3: note: Lost: cannot be reached from Root"},
      {"<pFeature>W</pFeature>",
       "<Integer Name=\"W\"><ToolTip>t</ToolTip><Value>1</Value><Min>10</Min><Max>9</Max></Integer>\n", 1,
       ":3: defect: W: Min: the minimum 10 is above the maximum 9"},
      {"<pFeature>F</pFeature>",
       "\n<IntSwissKnife Name=\"F\"><ToolTip>t</ToolTip><Formula>1 + (2</Formula></IntSwissKnife>\n", 1,
       ":4: defect: F: Formula: "},
  };
  for (const Case& each : cases) {
    SCOPED_TRACE(each.nodes);
    const std::string file = describe(each.features, each.nodes);
    const ToolResult result = run({"lint", file});
    EXPECT_EQ(result.status, each.status) << result.out << result.err;
    const std::string line = each.line;
    EXPECT_THAT(result.out, line.empty() ? testing::Matcher<std::string>("") : HasSubstr(file + line));
  }
}

TEST_F(LintCommand, ADescriptionThatDoesNotLoadIsOneFatalProblemAndTheOthersAreStillChecked) {
  const std::string broken = write("broken.xml", "<RegisterDescription>\n<Integer");
  const std::string good = describe("", "<Integer Name=\"Lost\"><Value>1</Value></Integer>\n");
  const nlohmann::json problems = runJson({"lint", broken, good}, 1);
  ASSERT_EQ(problems.size(), 2u) << problems;
  EXPECT_EQ(problems[0]["file"], broken);
  EXPECT_EQ(problems[0]["severity"], "fatal");
  EXPECT_EQ(problems[1]["line"], 3);
  EXPECT_EQ(problems[1]["node"], "Lost");
  EXPECT_EQ(problems[1]["element"], "");
}

TEST_F(LintCommand, RealDescriptionsAreChecked) {
  const char* folder = std::getenv("OXGENAPI_DESCRIPTIONS");
  if (folder == nullptr) GTEST_SKIP() << "OXGENAPI_DESCRIPTIONS names no folder of descriptions";
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    if (entry.path().extension() == ".xml") {
      SCOPED_TRACE(entry.path());
      const ToolResult result = run({"lint", "--json", entry.path().string()});
      EXPECT_THAT(result.status, testing::AnyOf(0, 1)) << result.err;
      EXPECT_TRUE(result.json().is_array());
    }
  }
}

TEST_F(LintCommand, GraphShowsWhatIsReadAndWhatOnlyInvalidates) {
  const std::string file = describe(
      "<pFeature>W</pFeature>",
      "<Integer Name=\"W\"><pInvalidator>T</pInvalidator><Value>1</Value><pMin>Low</pMin><pMax>Low</pMax></Integer>\n"
      "<Integer Name=\"Low\"><Value>1</Value></Integer>\n<Integer Name=\"T\"><Value>1</Value></Integer>\n");
  const ToolResult result = run({"--xml", file, "nodes", "--graph", "W"});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_THAT(result.out, HasSubstr("\"W\" -> \"Low\" [label=\"pMax, pMin\"];"));
  EXPECT_THAT(result.out, HasSubstr("\"W\" -> \"T\" [label=\"pInvalidator\", style=dashed];"));
  EXPECT_EQ(run({"--xml", file, "nodes", "--graph", "Nobody"}).status, 1);
  EXPECT_THAT(run({"--xml", file, "nodes", "--graph"}).out, HasSubstr("\"Root\" -> \"W\" [label=\"pFeature\"];"));
}

// Images into files, from the simulated camera.
#include <gmock/gmock.h>
#include <sys/resource.h>

#include "ToolRun.h"

using testing::HasSubstr;

class Grab : public ToolTest {};

TEST_F(Grab, SavesAsTheNameSaysAndReplacesNothingUnasked) {
  const struct {
    std::vector<std::string> words;
    std::vector<std::string> files;
    int status;
    const char* error;
  } cases[] = {
      {{"-o", path("a.png")}, {"a.png"}, 0, ""},
      {{"-o", path("a.png")}, {"a.png"}, 4, "File exists"},
      {{"-o", path("a.png"), "--overwrite"}, {"a.png"}, 0, ""},
      {{"-n", "2", "-o", path("b.tiff")}, {"a.png", "b-0001.tiff", "b-0002.tiff"}, 0, ""},
      {{"-o", path("c{id}.raw"), "Height=16"}, {"a.png", "b-0001.tiff", "b-0002.tiff", "c1.raw", "c1.raw.json"}, 0, ""},
      {{"-o", path("no/folder.pgm")}, {}, 4, "No such file or directory"},
      {{"-o", path("x.gif")}, {}, 4, "ends with none of"},
      {{"Width=7"}, {}, 1, "Width: value 7"},
      {{"--discard", "--timeout", "1", "TriggerMode=On"}, {}, 1, "Trigger mode is on for FrameStart"},
      {{"--discard", "--trigger", "software", "-n", "3"}, {}, 0, ""},
      {{"--when-full", "panic"}, {}, 2, "wait"},
  };
  for (const auto& [words, expected, status, error] : cases) {
    std::vector<std::string> arguments{"grab"};
    arguments.insert(arguments.end(), words.begin(), words.end());
    const ToolResult result = run(arguments);
    EXPECT_EQ(result.status, status) << testing::PrintToString(words) << result.err;
    EXPECT_THAT(result.err, HasSubstr(error));
    if (!expected.empty()) {
      EXPECT_EQ(files(), expected);
    }
  }
  const nlohmann::json raw = nlohmann::json::parse(read("c1.raw.json"));
  EXPECT_EQ(raw.at("frameId"), 1);
  EXPECT_EQ(raw.at("camera"), "OxSimulation-SC-200-SIM01");
  EXPECT_GT(raw.at("time"), 0);
  EXPECT_GE(raw.at("completeNs"), raw.at("firstDataNs"));
  EXPECT_EQ(run({"--state", path("s"), "grab"}).status, 2);
}

TEST_F(Grab, CountsEveryImage) {
  const nlohmann::json json =
      runJson({"grab", "-n", "30", "--discard", "Height=16", "AcquisitionFrameRateEnable=false"});
  EXPECT_EQ(json.at("images"), 30);
  EXPECT_GE(json.at("complete"), 30);
  EXPECT_EQ(json.at("incomplete"), 0);
  EXPECT_EQ(json.at("payloadSize"), 640 * 16);
}

TEST_F(Grab, AFullDiskKeepsTheCompleteFilesAndNamesTheLast) {
  const rlimit small{30'000, RLIM_INFINITY};
  rlimit before{};
  getrlimit(RLIMIT_FSIZE, &before);
  setrlimit(RLIMIT_FSIZE, &small);
  const ToolResult result = run({"grab", "-o", path("big.pgm")});
  setrlimit(RLIMIT_FSIZE, &before);
  EXPECT_EQ(result.status, 4);
  EXPECT_THAT(result.err, HasSubstr("too large"));
  EXPECT_THAT(files(), testing::IsEmpty());
}

#include <gmock/gmock.h>
#include <sys/stat.h>

#include "ToolRun.h"

using nlohmann::json;
using testing::HasSubstr;

class SettingsCommand : public ToolTest {
 protected:
  ToolResult camera(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), {"--state", path("camera.state")});
    return run(arguments);
  }
  // With the tool as $0.
  ToolResult shell(const std::string& script) const {
    return runProgram({"sh", "-c", script, std::string(std::getenv("OX_BUILD_DIR")) + "/bin/oxgenapi"});
  }
};

TEST_F(SettingsCommand, SavedSettingsBringAnotherCameraToTheSameValues) {
  ASSERT_EQ(camera({"set", "Width=640", "DeviceUserID=north gate"}).status, 0);
  const ToolResult saved = camera({"save", path("a.settings"), "--features", "Width,DeviceUserID"});
  EXPECT_EQ(saved.status, 0) << saved.err;
  EXPECT_EQ(read("a.settings"), "Width = \"640\"\nDeviceUserID = \"north gate\"\n");

  const std::string other = path("other.state");
  EXPECT_EQ(run({"--state", other, "load", path("a.settings"), "--validate"}).status, 0);
  EXPECT_EQ(run({"--state", other, "get", "-b", "Width", "DeviceUserID"}).out, "640\nnorth gate\n");
  EXPECT_EQ(run({"--state", other, "diff", path("a.settings")}).status, 0);
}

TEST_F(SettingsCommand, AllStreamableFeaturesAreSavedWithProgressWhereAsked) {
  const ToolResult saved = camera({"save", path("all.settings"), "--progress"});
  EXPECT_EQ(saved.status, 0) << saved.err;
  EXPECT_THAT(saved.out, HasSubstr(" lines saved, "));
  EXPECT_THAT(saved.err, HasSubstr(" left, 1 of "));
  EXPECT_THAT(read("all.settings"), testing::AllOf(HasSubstr("Width = \""), HasSubstr("Gain[GainSelector(Red)] = \"")));
  EXPECT_THAT(shell("script -qec \"'$0' save x --progress --features Width,No\" /dev/null").out,
              testing::ContainsRegex(
                  "\\[#{10}\\.{10}\\] [0-9]+ s left, 1 of 2 [^\n]*\r\x1b\\[Koxgenapi: No: "));  // the bar makes room
}

TEST_F(SettingsCommand, AFileIsReplacedAsAWholeAndKeepsItsMode) {
  const std::string target = write("a.settings", "; older\n");
  ASSERT_EQ(chmod(target.c_str(), 0600), 0);
  EXPECT_EQ(shell("ulimit -f 0; \"$0\" save a.settings 2>/dev/full").status, 1);
  EXPECT_EQ(read("a.settings"), "; older\n");
  const ToolResult result = camera({"save", target, "--features", "Wdth,Width"});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.err, HasSubstr("Did you mean Width?"));
  EXPECT_THAT(result.out, testing::EndsWith(": 1 line saved, 1 problem\n"));
  EXPECT_THAT(read("a.settings"), testing::StartsWith("Width = "));
  struct stat status {};
  ASSERT_EQ(stat(target.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0600u);
  EXPECT_EQ(files(), (std::vector<std::string>{"a.settings", "camera.state"}));  // nothing is left beside it

  EXPECT_EQ(shell("echo above; \"$0\" save - --features Width; echo below").out, "above\nWidth = \"640\"\nbelow\n");
}

TEST_F(SettingsCommand, FailuresNameTheFile) {
  const std::string damaged = write("damaged.json", "[{\"Name\":1}]");
  const std::vector<std::string> kCommands[] = {
      {"save", "/dev/full"}, {"save", path("no-such-folder/a")}, {"load", path("absent")}, {"diff", damaged}};
  for (const auto& command : kCommands) {
    const ToolResult result = camera(command);
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.err, HasSubstr(command[1]));
  }
  EXPECT_EQ(shell("\"$0\" save - --features Width >/dev/full").status, 1);
}

TEST_F(SettingsCommand, LoadReportsBadLinesAndStopsOnlyWhenAsked) {
  std::string text = "Width = \"none\"\nNoSuchFeature = \"1\"\n";
  for (int line = 3; line < 300; ++line) {
    text += "Height = \"64\"\n";
  }
  const std::string file = write("bad.settings", text + "Height = \"none\"");
  const ToolResult result = camera({"load", file});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.err, HasSubstr("line 1"));
  EXPECT_THAT(result.err, HasSubstr("line 2"));
  EXPECT_THAT(result.err, HasSubstr("line 300:"));
  EXPECT_EQ(camera({"get", "-b", "Height"}).out, "64\n");

  ASSERT_EQ(camera({"set", "Height=128"}).status, 0);
  const json stopped = camera({"load", file, "--stop-on-error", "--json"}).json();
  EXPECT_EQ(stopped["stopped"], true);
  ASSERT_EQ(stopped["problems"].size(), 1);
  EXPECT_EQ(stopped["problems"][0]["feature"], "Width");
  EXPECT_EQ(camera({"get", "-b", "Height"}).out, "128\n");
}

TEST_F(SettingsCommand, DiffComparesSettingsWhateverTheOrderOfSelectorsAndBlanks) {
  const std::string left = write("left", "; comment\nA[S(1), T(2)] = \"5\"\nB = 1\nC = \"x\"\n");
  const std::string right = write("right", "B = \"1\"\nA[T(2),S(1)]=\"6\"\nD = \"y\"\n");
  const ToolResult result = run({"diff", left, right});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.out, "- A[S(1),T(2)] = \"5\"\n+ A[S(1),T(2)] = \"6\"\n- C = \"x\"\n+ D = \"y\"\n");
  EXPECT_EQ(run({"diff", left, left}).status, 0);
  const json differences = run({"diff", left, right, "--json"}).json();
  EXPECT_EQ(differences[1], json({{"setting", "C"}, {"left", "x"}, {"right", nullptr}}));
}

TEST_F(SettingsCommand, DiffAgainstTheCameraComparesNamedSelectorsAndMovesNone) {
  ASSERT_EQ(camera({"set", "BlackLevelSelector=All"}).status, 0);
  const std::string selector = camera({"get", "-b", "BlackLevelSelector"}).out;
  ASSERT_EQ(camera({"save", path("a"), "--features", "BlackLevel"}).status, 0);
  ASSERT_EQ(camera({"set", "BlackLevelSelector=All", "BlackLevel=3"}).status, 0);
  const ToolResult result = camera({"diff", path("a")});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.out, HasSubstr("+ BlackLevel[BlackLevelSelector(All)] = \"3\""));
  EXPECT_EQ(camera({"get", "-b", "BlackLevelSelector"}).out, selector);
}

TEST_F(SettingsCommand, SnapshotRecordsTheNamedFeaturesInOrder) {
  EXPECT_EQ(camera({"snapshot", "Width", "DeviceVendorName", "-o", path("now.json")}).status, 0);
  const json records = json::parse(read("now.json"));
  ASSERT_EQ(records.size(), 2);
  EXPECT_EQ(records[0]["Name"], "Width");
  EXPECT_EQ(records[0]["Type"], "Integer");
  EXPECT_EQ(records[1]["Value"], "Ox Simulation");
  EXPECT_GT(camera({"snapshot"}).json().size(), 100);
  const ToolResult partly = camera({"snapshot", "NoSuchFeature", "Width"});
  EXPECT_EQ(partly.status, 1);
  EXPECT_EQ(partly.json().size(), 1);
  EXPECT_THAT(partly.err, HasSubstr("NoSuchFeature"));
}

TEST_F(SettingsCommand, DiffComparesSnapshotsWithEachOtherAndWithTheCamera) {
  ASSERT_EQ(camera({"set", "Width=640"}).status, 0);
  ASSERT_EQ(camera({"snapshot", "Width", "DeviceVendorName", "-o", path("a.json")}).status, 0);
  EXPECT_EQ(camera({"diff", path("a.json")}).status, 0);
  ASSERT_EQ(camera({"set", "Width=320"}).status, 0);
  ASSERT_EQ(camera({"snapshot", "Width", "-o", path("b.json")}).status, 0);
  EXPECT_EQ(camera({"diff", path("a.json")}).out, "- Width = \"640\"\n+ Width = \"320\"\n");
  EXPECT_EQ(run({"diff", path("a.json"), path("b.json")}).out,
            "- Width = \"640\"\n+ Width = \"320\"\n- DeviceVendorName = \"Ox Simulation\"\n");
  // Two kinds do not mix.
  EXPECT_EQ(run({"diff", path("a.json"), write("a.settings", "Width = \"640\"\n")}).status, 2);
}

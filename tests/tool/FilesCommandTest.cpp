// Device files from the command line.
#include <gmock/gmock.h>

#include <cstdlib>

#include "ToolRun.h"

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

class FilesCommand : public ToolTest {
 protected:
  // A camera on which each file operation takes so long that a transfer does not end by itself.
  void slowDown() { ASSERT_EQ(run({"--state", "camera", "set", "TestFileOperationTime=150"}).status, 0); }

  // Starts the tool, waits until it reports progress, and interrupts it.
  ToolResult interrupted(const std::string& command) {
    const std::string script =
        "rm -f err; \"$0\" --state camera " + command +
        " 2>err & pid=$!; until grep -q bytes err 2>/dev/null; do sleep 0.05; kill -0 $pid || exit 99; done; "
        "kill -INT $pid; wait $pid; status=$?; cat err >&2; exit $status";
    return runProgram({"sh", "-c", script, std::string(std::getenv("OX_BUILD_DIR")) + "/bin/oxgenapi"});
  }
};

TEST_F(FilesCommand, ListTellsSizesAndWhatTheFilesAreFor) {
  const nlohmann::json files = runJson({"files", "list"});
  const nlohmann::json expected = {{{"name", "UserFile1"}, {"size", 0}, {"access", "RW"}},
                                   {{"name", "UserFile2"}, {"size", 0}, {"access", "RW"}},
                                   {{"name", "FactoryCalibration"}, {"size", 10000}, {"access", "RO"}},
                                   {{"name", "DebugScript"}, {"size", 0}, {"access", "WO"}},
                                   {{"name", "FirmwareImage"}, {"size", 0}, {"access", "RW"}}};
  EXPECT_EQ(files, expected);
  EXPECT_THAT(run({"files", "list"}).out, HasSubstr("FactoryCalibration: RO  10000 bytes\n"));
}

TEST_F(FilesCommand, ADeviceNeedNotTellSizes) {
  const auto choice = [](const std::string& name, const std::string& entry) {
    return "<Enumeration Name='" + name + "'><EnumEntry Name='" + entry + "'><Value>0</Value></EnumEntry>" +
           "<Value>0</Value></Enumeration>";
  };
  const std::string xml = describe("", choice("FileSelector", "Log") + choice("FileOpenMode", "Read"));
  EXPECT_EQ(runJson({"--xml", xml, "files", "list"}),
            (nlohmann::json::array({{{"name", "Log"}, {"size", nullptr}, {"access", "RO"}}})));
}

TEST_F(FilesCommand, FilesGoInAndComeOutAndAreRemoved) {
  for (const size_t size : {0u, 1u, 4096u, 10001u}) {
    const std::string content(size, 'c');
    write("in", content);
    write("out", "something that is replaced");
    const nlohmann::json put = runJson({"--state", "camera", "files", "put", "UserFile1", "in"});
    EXPECT_EQ(put, (nlohmann::json{{"file", "UserFile1"}, {"done", "uploaded"}, {"bytes", size}}));
    const ToolResult got = run({"--state", "camera", "files", "get", "UserFile1", "out"});
    EXPECT_EQ(got.status, 0) << got.err;
    EXPECT_THAT(got.out,
                AllOf(HasSubstr("UserFile1 downloaded: " + std::to_string(size) + " bytes in "), HasSubstr("/s")));
    EXPECT_EQ(got.err, "");
    EXPECT_EQ(read("out"), content);
  }
  EXPECT_EQ(runJson({"--state", "camera", "files", "rm", "UserFile1"})["done"], "deleted");
  EXPECT_EQ(runJson({"--state", "camera", "files", "list"})[0]["size"], 0);
  EXPECT_EQ(files(), (std::vector<std::string>{"camera", "in", "out"}));
}

TEST_F(FilesCommand, FailuresNameTheirReasonAndKeepWhatWasThere) {
  write("here", "kept");
  const struct {
    std::vector<std::string> command;
    const char* text;
  } kCases[] = {
      {{"get", "DebugScript", "here"}, "'Read' is not available (0x8000000e)"},
      {{"get", "NoSuchFile", "here"}, "NoSuchFile"},
      {{"get", "UserFile1", "nowhere/out"}, "nowhere/out"},
      {{"put", "FactoryCalibration", "here"}, "'Write' is not available (0x8000000f)"},
      {{"put", "", "here"}, "FileSelector"},
      {{"put", "odd \"name\"\n", "here"}, "odd"},
      {{"rm", "FactoryCalibration"}, "Failure"},
      {{"rm", "NoSuchFile"}, "NoSuchFile"},
  };
  for (const auto& entry : kCases) {
    std::vector<std::string> command{"files"};
    command.insert(command.end(), entry.command.begin(), entry.command.end());
    const ToolResult result = run(command);
    EXPECT_EQ(result.status, 1) << result.err;
    EXPECT_THAT(result.err, HasSubstr(entry.text));
    EXPECT_EQ(result.out, "");
  }
  EXPECT_EQ(read("here"), "kept");
  EXPECT_EQ(files(), std::vector<std::string>{"here"});
}

TEST_F(FilesCommand, CtrlCEndsATransferAndLeavesTheDeviceFileClosed) {
  write("in", std::string(2'000'000, 'x'));
  for (const std::string command : {"files put UserFile1 in", "files get UserFile1 out"}) {
    SCOPED_TRACE(command);
    if (command.find("get") != std::string::npos) {
      run({"--state", "camera", "set", "TestFileOperationTime=0"});
      ASSERT_EQ(run({"--state", "camera", "files", "put", "UserFile1", "in"}).status, 0);
    }
    slowDown();
    const ToolResult result = interrupted(command);
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.err, AllOf(HasSubstr("UserFile1: "), HasSubstr(" of 2000000 bytes, "),
                                  HasSubstr("oxgenapi: UserFile1: stopped by the user (0x8000000")));
    // The last thing that the camera did was closing the file, and it was open until then.
    const nlohmann::json last = runJson({"--state", "camera", "get", "FileOperationSelector", "FileOperationStatus"});
    EXPECT_EQ(last[0]["value"], "Close");
    EXPECT_EQ(last[1]["value"], "Success");
  }
  EXPECT_THAT(files(), Not(testing::Contains(testing::StartsWith("out"))));
}

TEST_F(FilesCommand, ATerminalShowsABar) {
  slowDown();
  write("in", std::string(12'000, 'x'));
  const std::string tool = std::string(std::getenv("OX_BUILD_DIR")) + "/bin/oxgenapi";
  const ToolResult result =
      runProgram({"script", "-qec", tool + " --state camera files put UserFile1 in", "/dev/null"});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_THAT(result.out, AllOf(HasSubstr("\x1b[KUserFile1: [####"), HasSubstr(" of 12000 bytes, "),
                                HasSubstr(" s left"), HasSubstr("UserFile1 uploaded: 12000 bytes")));
}

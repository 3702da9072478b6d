// Transfers of device files that are interrupted.
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

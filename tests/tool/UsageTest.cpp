#include <gmock/gmock.h>

#include "ToolRun.h"

using testing::HasSubstr;

class Usage : public ToolTest {};

TEST_F(Usage, WrongCommandLinesExitWithTwoAndChangeNothing) {
  const std::vector<std::vector<std::string>> wrong{
      {},
      {"no-such-command"},
      {"get"},
      {"get", "--no-such-option", "Width"},
      {"set", "Width"},
      {"set", "=5"},
      {"peek", "0x1000", "0"},
      {"peek", "nowhere", "4"},
      {"poke", "0x1000", "0"},
      {"poke", "0x1000", "xy"},
      {"tree", "--visibility", "nobody"},
      {"tree", "--depth", "-1"},
      {"--memory", "image", "info"},
      {"--xml", "no-such-file.xml", "info"},
      {"watch", "Width", "--poll", "0"},
      {"files"},
      {"firmware", "update"},
      {"guf", "create", "x.guf"},
      {"lint"},
      {"lint", "no-such-file.xml"},
  };
  for (std::vector<std::string> arguments : wrong) {
    SCOPED_TRACE(testing::PrintToString(arguments));
    const ToolResult result = run(arguments);
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.out, "");
    EXPECT_NE(result.err, "");
    EXPECT_TRUE(files().empty());
  }
}

TEST_F(Usage, EveryCommandExplainsItselfWithAnExample) {
  const ToolResult all = run({"--help"});
  EXPECT_EQ(all.status, 0);
  for (const char* command : {"info", "tree", "get", "set", "exec", "nodes", "describe", "watch", "peek", "poke",
                              "register", "save", "load", "diff", "snapshot", "files", "firmware", "guf", "lint"}) {
    SCOPED_TRACE(command);
    EXPECT_THAT(all.out, HasSubstr(command));
    const ToolResult help = run({command, "--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_THAT(help.out, HasSubstr("Example:\n  oxgenapi"));
  }
}

TEST_F(Usage, ColoursAppearOnlyWhereAskedForOrOnATerminal) {
  EXPECT_THAT(run({"info"}).out, testing::Not(HasSubstr("\x1b[")));
  EXPECT_THAT(run({"info", "--color", "always"}).out, HasSubstr("\x1b["));
  EXPECT_THAT(run({"info", "--color", "always", "--json"}).out, testing::Not(HasSubstr("\x1b[")));
}

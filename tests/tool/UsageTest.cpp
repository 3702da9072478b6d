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
  const std::string all = run({"--help"}).out;
  for (const std::vector<std::string>& command : std::vector<std::vector<std::string>>{
           {"info"},     {"tree"},          {"get"},          {"set"},       {"exec"},
           {"nodes"},    {"describe"},      {"watch"},        {"peek"},      {"poke"},
           {"register"}, {"save"},          {"load"},         {"diff"},      {"snapshot"},
           {"files"},    {"files", "list"}, {"files", "put"}, {"firmware"},  {"firmware", "update"},
           {"guf"},      {"events"},        {"chunks"},       {"lint"},      {"cameras"},
           {"xml"},      {"doc"},           {"report"},       {"completion"}}) {
    SCOPED_TRACE(command.back());
    EXPECT_THAT(all, HasSubstr("  " + command.front() + " "));
    std::vector<std::string> arguments = command;
    arguments.emplace_back("--help");
    const ToolResult help = run(arguments);
    EXPECT_EQ(help.status, 0);
    EXPECT_THAT(help.out, HasSubstr("Example:\n  "));
  }
}

TEST_F(Usage, ColoursAppearOnlyWhereAskedForOrOnATerminal) {
  EXPECT_THAT(run({"info"}).out, testing::Not(HasSubstr("\x1b[")));
  EXPECT_THAT(run({"info", "--color", "always"}).out, HasSubstr("\x1b["));
  EXPECT_THAT(run({"info", "--color", "always", "--json"}).out, testing::Not(HasSubstr("\x1b[")));
}

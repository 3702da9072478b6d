#include "Commands.h"

namespace tool {

void addHelp(const Command& program) {
  const Command command = program.subcommand("help", "Show how a command is used");
  auto words = std::make_shared<std::vector<std::string>>();
  command.option("command", *words, "The command (default: all of them in short)").type("TOPIC");
  command.footer("Example:\n  oxgenapi help files get");
  command.runs([words](Session&) { words->clear(); });  // main() shows the help; this keeps the words alive until then
}

}  // namespace tool

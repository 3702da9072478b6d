#include <algorithm>

#include "Commands.h"
#include "Failure.h"
#include "Help.h"

namespace tool {

// The words behind "help" name a command: with --help behind it, that command explains itself.
std::vector<std::string> helpRequest(const CLI::App& app, std::vector<std::string> words) {
  const CLI::App* command = &app;
  for (const std::string& word : words) {
    const auto below = command->get_subcommands([&](const CLI::App* each) { return each->check_name(word); });
    if (below.empty()) {
      throw UsageError("help: there is no command '" + word + "'; see oxgenapi help");
    }
    command = below.front();
  }
  words.emplace_back("--help");
  return words;
}

void addHelp(CLI::App& app, Action& chosen) {
  CLI::App* command = app.add_subcommand("help", "Show how a command is used");
  auto words = std::make_shared<std::vector<std::string>>();
  command->add_option("command", *words, "The command (default: all of them in short)")->type_name("TOPIC");
  command->footer("Example:\n  oxgenapi help files get");
  command->callback([&chosen, words] { chosen = [](Session&) {}; });  // main() asks for the help
}

}  // namespace tool

#include "Help.h"

#include "Failure.h"

namespace tool {

std::string valueName(const CLI::Option& option) {
  if (option.get_items_expected_max() == 0) return "";
  const std::string type = option.get_type_name();
  const std::string name = type.substr(0, type.find(':'));  // checks add theirs behind a colon
  return name == "INT" || name == "UINT" || name == "FLOAT" ? "NUMBER" : name;
}

std::string HelpFormatter::make_option_opts(const CLI::Option* option) const {
  std::string text = valueName(*option);
  text += option->get_items_expected_max() > 1 ? " ..." : "";
  return text.empty() ? "" : " " + text;
}

std::string descriptionOf(const CLI::Option& option) {
  const std::string value = option.get_default_str();
  return option.get_description() + (value.empty() || value == "false" ? "" : " (default: " + value + ")");
}

std::string HelpFormatter::make_option_desc(const CLI::Option* option) const { return descriptionOf(*option); }

// The words behind "help" name a command: with --help behind it, that command explains itself.
std::vector<std::string> helpRequest(const CLI::App& app, std::vector<std::string> words) {
  const CLI::App* command = &app;
  for (const std::string& word : words) {
    const auto below = command->get_subcommands([&](const CLI::App* each) { return each->check_name(word); });
    if (below.empty()) throw UsageError("help: there is no command '" + word + "'; see oxgenapi help");
    command = below.front();
  }
  words.emplace_back("--help");
  return words;
}

}  // namespace tool

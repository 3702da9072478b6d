#include "WrongUsage.h"

#include <vector>

#include "Help.h"
#include "NearNames.h"

namespace tool {
namespace {

using Words = std::vector<std::string>;

// The command that the line got as far as.
const CLI::App* reached(const CLI::App* app) {
  while (!app->get_subcommands().empty()) app = app->get_subcommands().back();
  return app;
}

// "files get"; empty for the program itself.
std::string pathOf(const CLI::App* command) {
  const CLI::App* above = command->get_parent();
  if (above == nullptr) return "";
  const std::string path = pathOf(above);
  return path.empty() ? command->get_name() : path + " " + command->get_name();
}

Words commandsBelow(const CLI::App& app) {
  Words names;
  for (const CLI::App* command : app.get_subcommands([](const CLI::App* each) { return !each->get_group().empty(); }))
    names.push_back(command->get_name());
  return names;
}

Words optionsOf(const CLI::App* command) {
  Words names;
  for (; command != nullptr; command = command->get_parent()) {
    for (const CLI::Option* option : command->get_options())
      for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
  }
  return names;
}

const CLI::Option* optionNamed(const CLI::App* command, const std::string& name) {
  for (; command != nullptr; command = command->get_parent()) {
    for (const CLI::Option* option : command->get_options())
      if (option->get_name() == name) return option;
  }
  return nullptr;
}

// "--poll NUMBER", "NAME": as the help shows it.
std::string shownName(const CLI::App* command, const std::string& name) {
  const CLI::Option* option = optionNamed(command, name);
  if (option == nullptr) return name;
  const std::string value = valueName(*option);
  const bool isChoice = value.find('|') != value.npos;
  return isChoice || value.empty() ? name : option->get_positional() ? value : name + " " + value;
}

std::string joined(const Words& words) {
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : ", ") + word;
  return text;
}

std::string withQuestion(const std::string& text, const Words& near) {
  return near.empty() ? text : text + ". " + question(near);  // which is answer enough
}

// A word that is no command is one too many behind a command that is missing, as parsing sees it.
std::string missing(const CLI::App* command, const std::string& what, const Words& left) {
  if (what != "A subcommand") {
    const CLI::Option* option = optionNamed(command, what);
    return shownName(command, what) + " is missing" + (option == nullptr ? "" : " (" + option->get_description() + ")");
  }
  const Words commands = commandsBelow(*command);
  const std::string all = command->get_parent() == nullptr ? "" : " (" + joined(commands) + ")";
  return left.empty()
             ? "a command is missing" + all
             : withQuestion("there is no command '" + left.front() + "'" + all, nearNames(left.front(), commands));
}

std::string surplus(const CLI::App* command, const Words& left) {
  for (const std::string& word : left)
    if (word.starts_with("-")) return withQuestion("there is no option " + word, nearNames(word, optionsOf(command)));
  return left.empty() ? "there is a word too many" : "'" + left.front() + "' is a word too many";
}

// The two options of "A requires B" and "A excludes B".
std::string pairText(const std::string& text, const std::string& verb, const std::string& between,
                     const std::string& end) {
  const size_t at = text.find(verb);
  return at == text.npos ? text : text.substr(0, at) + between + text.substr(at + verb.size()) + end;
}

std::string conversion(const CLI::App* command, const std::string& text) {
  constexpr std::string_view kStart = "Could not convert: ";
  const size_t equals = text.find(" = ");
  if (!text.starts_with(kStart) || equals == text.npos) return text;
  const std::string name = text.substr(kStart.size(), equals - kStart.size());
  return shownName(command, name) + ": '" + text.substr(equals + 3) + "' is not a number";
}

std::string sentence(const CLI::App& app, const CLI::App* command, const CLI::ParseError& error) {
  const std::string text = error.what();
  const std::string name = text.substr(0, text.find(": "));
  if (dynamic_cast<const CLI::RequiredError*>(&error) != nullptr)
    return missing(command, text.substr(0, text.find(" is required")), app.remaining(true));
  if (dynamic_cast<const CLI::ExtrasError*>(&error) != nullptr) return surplus(command, app.remaining(true));
  if (dynamic_cast<const CLI::RequiresError*>(&error) != nullptr)
    return pairText(text, " requires ", " needs ", " beside it");
  if (dynamic_cast<const CLI::ExcludesError*>(&error) != nullptr)
    return pairText(text, " excludes ", " and ", " exclude each other");
  if (dynamic_cast<const CLI::ConversionError*>(&error) != nullptr) return conversion(command, text);
  if (dynamic_cast<const CLI::ArgumentMismatch*>(&error) != nullptr)
    return shownName(command, name) + (text.find("Most") == text.npos ? ": the value is missing" : " is given twice");
  return name == text ? text : shownName(command, name) + text.substr(name.size());
}

}  // namespace

std::string wrongUsage(const CLI::App& app, const CLI::ParseError& error) {
  const CLI::App* command = reached(&app);
  const std::string path = pathOf(command);
  const std::string text = (path.empty() ? "" : path + ": ") + sentence(app, command, error);
  return text.ends_with("?") ? text : text + "; see oxgenapi " + (path.empty() ? "" : path + " ") + "--help";
}

}  // namespace tool

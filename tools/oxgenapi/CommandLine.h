// How a command declares its options. Only a few files include the parser itself, a large header-only library.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace tool {

class Session;

// What a command does once the command line is read.
using Action = std::function<void(Session&)>;

// Returns what is wrong with a value, in a plain sentence, or an empty text. May change the value.
using Check = std::function<std::string(std::string& value)>;

// An option or a positional argument; each call adds to it and returns it.
class Option {
 public:
  explicit Option(CLI::Option* option) : option_(option) {}
  Option required(bool wanted = true) const;
  // What stands for its value in the help: "FILE", "NAME".
  Option type(const std::string& name) const;
  Option check(Check check) const;
  // Several values in one word, between these.
  Option separator(char separator) const;
  // The help shows what the variable holds now.
  Option showDefault() const;
  // The name may stand alone.
  Option valueOptional() const;
  // One value for each time that the name is given.
  Option oneValueEach() const;
  bool isGiven() const;

 private:
  CLI::Option* option_;
};

class Command {
 public:
  // `chosen` becomes the action of the command that the command line names.
  Command(CLI::App& app, Action& chosen) : app_(&app), chosen_(&chosen) {}

  // Options by "-x,--name", arguments by name; the variable lives as long as the command line.
  // Values are texts, lists of texts, int, int64_t, uint32_t, uint64_t and double.
  template <class Value>
  Option option(const std::string& name, Value& variable, const std::string& help) const;
  void flag(const std::string& name, bool& variable, const std::string& help) const;
  // What the help ends with.
  void footer(const std::string& text) const;
  void runs(const Action& action) const;
  // A command with subcommands that needs none.
  void runsAlone(const Action& action) const;

  Command subcommand(const std::string& name, const std::string& help) const;
  // One that help and completion leave out.
  Command hiddenSubcommand(const std::string& name, const std::string& help) const;
  void needsSubcommand() const;

 private:
  CLI::App* app_;
  Action* chosen_;
};

}  // namespace tool

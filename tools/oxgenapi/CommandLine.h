// How a command says what it takes. The parser behind it is a large header-only library, which only a few files
// compile.
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

// Says in a plain sentence what is wrong with a value, or nothing; may change the value.
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
  Option option(const std::string& name, std::string& variable, const std::string& help) const;
  Option option(const std::string& name, std::vector<std::string>& variable, const std::string& help) const;
  Option option(const std::string& name, int& variable, const std::string& help) const;
  Option option(const std::string& name, int64_t& variable, const std::string& help) const;
  Option option(const std::string& name, uint32_t& variable, const std::string& help) const;
  Option option(const std::string& name, uint64_t& variable, const std::string& help) const;
  Option option(const std::string& name, double& variable, const std::string& help) const;
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

#include "CommandLine.h"

#include <CLI/CLI.hpp>
#include <utility>

namespace tool {

Option Option::required(bool wanted) const {
  option_->required(wanted);
  return *this;
}

Option Option::type(const std::string& name) const {
  option_->type_name(name);
  return *this;
}

Option Option::check(Check check) const {
  CLI::Validator validator;
  validator.operation(std::move(check));
  option_->transform(validator);  // what it changes stays changed
  return *this;
}

Option Option::separator(char separator) const {
  option_->delimiter(separator);
  return *this;
}

Option Option::showDefault() const {
  option_->capture_default_str();
  return *this;
}

Option Option::valueOptional() const {
  option_->expected(0, 1);
  return *this;
}

Option Option::oneValueEach() const {
  option_->allow_extra_args(false);
  return *this;
}

bool Option::isGiven() const { return option_->count() > 0; }

template <class Value>
Option Command::option(const std::string& name, Value& variable, const std::string& help) const {
  return Option(app_->add_option(name, variable, help));
}

template Option Command::option(const std::string&, std::string&, const std::string&) const;
template Option Command::option(const std::string&, std::vector<std::string>&, const std::string&) const;
template Option Command::option(const std::string&, int&, const std::string&) const;
template Option Command::option(const std::string&, int64_t&, const std::string&) const;
template Option Command::option(const std::string&, uint32_t&, const std::string&) const;
template Option Command::option(const std::string&, uint64_t&, const std::string&) const;
template Option Command::option(const std::string&, double&, const std::string&) const;

void Command::flag(const std::string& name, bool& variable, const std::string& help) const {
  app_->add_flag(name, variable, help);
}

void Command::footer(const std::string& text) const { app_->footer(text); }

void Command::runs(const Action& action) const {
  app_->callback([chosen = chosen_, action] { *chosen = action; });
}

void Command::runsAlone(const Action& action) const {
  app_->require_subcommand(0, 1);
  app_->fallthrough();
  app_->callback([app = app_, chosen = chosen_, action] {
    if (app->get_subcommands().empty()) *chosen = action;
  });
}

Command Command::subcommand(const std::string& name, const std::string& help) const {
  return {*app_->add_subcommand(name, help), *chosen_};
}

Command Command::hiddenSubcommand(const std::string& name, const std::string& help) const {
  return {*app_->add_subcommand(name, help)->group(""), *chosen_};
}

void Command::needsSubcommand() const {
  app_->require_subcommand(1);
  app_->fallthrough();
}

}  // namespace tool

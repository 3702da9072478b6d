// How help, the manual page and wrong usage show options.
#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace tool {

// What stands for an option's value: "FILE", "NUMBER"; empty for a flag.
std::string valueName(const CLI::Option& option);

// What an option is for, with its default.
std::string descriptionOf(const CLI::Option& option);

// Options without the names of their checks; defaults behind the text.
class HelpFormatter : public CLI::Formatter {
 public:
  std::string make_option_opts(const CLI::Option* option) const override;
  std::string make_option_desc(const CLI::Option* option) const override;
};

// What to parse in place of "help" and the words that follow it. Throws UsageError for a command that does not exist.
std::vector<std::string> helpRequest(const CLI::App& app, std::vector<std::string> words);

}  // namespace tool

// Completion of a command line for shells: the shell's script hands over the words, the program answers candidates.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <string>
#include <vector>

namespace tool {

struct Candidate {
  std::string word;
  std::string description;  // empty: the word says it all
};

// What can stand in the place of the last of `words`, which follow the program's name: commands, options, and where a
// feature is asked for what `names` yields: the device's features, or with true all its nodes, where no feature fits.
// Nothing where only a file or free text fits.
std::vector<Candidate> completions(CLI::App& app, const std::vector<std::string>& words,
                                   const std::function<std::vector<std::string>(bool all)>& names);

// The script that teaches a shell ("bash", "zsh", "fish") to ask this program.
std::string completionScript(const std::string& shell);

// The first word with which those scripts call the program; the words to complete follow it.
inline constexpr const char* kCompletionRequest = "__complete";

}  // namespace tool

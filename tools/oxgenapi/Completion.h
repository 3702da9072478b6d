// Completion of a command line for shells: the shell's script hands over the words, the program answers candidates.
#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "DeviceWords.h"

namespace tool {

struct Candidate {
  std::string word;
  std::string description;  // empty: the word says it all
};

struct Completions {
  std::vector<Candidate> candidates;
  bool wantsFile = false;  // the shell's own business
};

// What can stand in the place of the last of `words`, which follow the program's name: commands, options and their
// words, and where the device is asked its features, commands, entries and files. Nothing where only free text fits.
Completions completions(CLI::App& app, const std::vector<std::string>& words, const DeviceWords& device);

// The script that teaches a shell ("bash", "zsh", "fish") to ask this program.
std::string completionScript(const std::string& shell);

// The first word with which those scripts call the program; the words to complete follow it.
inline constexpr const char* kCompletionRequest = "__complete";
// The exit status that tells them to offer files.
inline constexpr int kWantsFile = 3;

}  // namespace tool

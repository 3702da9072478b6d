// What the command line accepts as an option's value, with a plain sentence for what it does not.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "CommandLine.h"

namespace tool {

Check existingFile();
// The same, or "-" for a standard stream.
Check existingFileOrStream();
// A number of that range, both ends included.
Check between(int64_t least, int64_t most);
Check atLeast(int64_t least);
// A result code of a failing call.
Check failureCode();
// One of these words.
Check oneOf(std::vector<std::string> words);
// One of these words, in upper or lower case, which becomes the number beside it.
Check numberFor(std::vector<std::pair<std::string, int>> words);

// Words as the help shows them, "auto|always|never", and back.
std::string alternatives(const std::vector<std::string>& words);
std::vector<std::string> wordsOf(const std::string& alternatives);

}  // namespace tool

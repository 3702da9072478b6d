// NAME=VALUE, as the command line says what to write.
#pragma once

#include <string>
#include <vector>

namespace tool {

struct Assignment {
  std::string name;
  std::string value;
};

// Throws UsageError for a word that is none.
std::vector<Assignment> parseAssignments(const std::vector<std::string>& words);

}  // namespace tool

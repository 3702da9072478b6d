#include "Assignment.h"

#include "Failure.h"

namespace tool {

std::vector<Assignment> parseAssignments(const std::vector<std::string>& words) {
  std::vector<Assignment> assignments;
  for (const std::string& word : words) {
    const size_t equals = word.find('=');
    if (equals == std::string::npos || equals == 0) throw UsageError("'" + word + "' is not NAME=VALUE");
    assignments.push_back({word.substr(0, equals), word.substr(equals + 1)});
  }
  return assignments;
}

}  // namespace tool

// What is wrong with a description, found without a device.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tool {

enum class Severity {
  note,    // nothing stops working
  defect,  // one node or formula cannot be used as meant
  fatal    // the description does not load
};

struct Problem {
  Severity severity;
  uint32_t line;  // 1-based; 0 when unknown
  std::string node;
  std::string element;
  std::string reason;
};

// Loads the description in the file, XML or zip archive, compiles its formulas and looks at every node. The problems
// come in the order of their lines, those without a line first. Never throws for what the file contains.
std::vector<Problem> lint(const std::string& path);
// The same for a description in memory.
std::vector<Problem> lintBytes(std::string_view description);

}  // namespace tool

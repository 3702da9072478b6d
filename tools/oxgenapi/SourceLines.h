// Where the nodes of a description stand in its text.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>

namespace tool {

class SourceLines {
 public:
  // Reads the text once. What is no XML, such as a zip archive, has no lines.
  explicit SourceLines(std::string_view text);

  // The 1-based line on which the node's element begins; 0 when it is unknown.
  uint32_t of(const std::string& node) const;

 private:
  std::unordered_map<std::string, uint32_t> lines_;
};

}  // namespace tool

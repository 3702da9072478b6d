// Renders a record as one line of JSON.
#ifndef OXTELEMETRY_JSONLINE_H
#define OXTELEMETRY_JSONLINE_H

#include <chrono>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <variant>

namespace oxtelemetry {

using AttributeValue = std::variant<std::string, bool, int64_t, double>;
using Attributes = std::map<std::string, AttributeValue, std::less<>>;

struct LineContent {
  std::chrono::system_clock::time_point time;
  std::string_view module;
  std::string_view version;
  uint32_t level;
  std::string_view text;
  const Attributes& attributes;
};

// The line without a line break. Always valid JSON in valid UTF-8, whatever bytes the texts hold.
std::string jsonLine(const LineContent& content);

}  // namespace oxtelemetry

#endif

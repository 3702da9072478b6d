#include "JsonLine.h"

#include <cmath>
#include <nlohmann/json.hpp>
#include <utility>

namespace oxtelemetry {

namespace {

// A text, a number or a truth value as JSON. Objects and arrays are put together by hand: destroying one of the JSON
// library's allocates memory, and when memory has run out that would end the process.
template <class Value>
std::string jsonOf(const Value& value) {
  constexpr int kCompact = -1;
  return nlohmann::json(value).dump(kCompact, ' ', false, nlohmann::json::error_handler_t::replace);
}

std::string jsonOf(const AttributeValue& value) {
  if (const auto* real = std::get_if<double>(&value); real != nullptr && !std::isfinite(*real))
    return std::isnan(*real) ? "\"NaN\"" : *real > 0 ? "\"Infinity\"" : "\"-Infinity\"";
  return std::visit([](const auto& held) { return jsonOf(held); }, value);
}

void appendPadded(std::string& line, uint64_t number, size_t width) {
  const std::string digits = std::to_string(number);
  line.append(width > digits.size() ? width - digits.size() : 0, '0');
  line += digits;
}

// As 2024-05-01T12:34:56.123456Z.
void appendTime(std::string& line, std::chrono::system_clock::time_point time) {
  const auto day = std::chrono::floor<std::chrono::days>(time);
  const std::chrono::year_month_day date(day);
  const std::chrono::hh_mm_ss clock(std::chrono::floor<std::chrono::microseconds>(time - day));
  appendPadded(line, static_cast<uint64_t>(static_cast<int>(date.year())), 4);
  line += '-';
  appendPadded(line, static_cast<unsigned>(date.month()), 2);
  line += '-';
  appendPadded(line, static_cast<unsigned>(date.day()), 2);
  line += 'T';
  appendPadded(line, static_cast<uint64_t>(clock.hours().count()), 2);
  line += ':';
  appendPadded(line, static_cast<uint64_t>(clock.minutes().count()), 2);
  line += ':';
  appendPadded(line, static_cast<uint64_t>(clock.seconds().count()), 2);
  line += '.';
  appendPadded(line, static_cast<uint64_t>(clock.subseconds().count()), 6);
  line += 'Z';
}

}  // namespace

std::string jsonLine(const LineContent& content) {
  std::string line;
  line.reserve(160 + content.text.size());
  line += "{\"time\":\"";
  appendTime(line, content.time);
  line += "\",\"module\":";
  line += jsonOf(content.module);
  line += ",\"version\":";
  line += jsonOf(content.version);
  line += ",\"level\":";
  line += jsonOf(content.level);
  line += ",\"text\":";
  line += jsonOf(content.text);
  line += ",\"attributes\":{";
  const char* separator = "";
  for (const auto& [name, value] : content.attributes) {
    line += std::exchange(separator, ",");
    line += jsonOf(name);
    line += ':';
    line += jsonOf(value);
  }
  line += "}}";
  return line;
}

}  // namespace oxtelemetry

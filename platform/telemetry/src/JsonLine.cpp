#include "JsonLine.h"

#include <charconv>
#include <cmath>

namespace oxtelemetry {

namespace {

// The length of the UTF-8 sequence at the start of the text, 0 when there is none. Overlong forms, surrogates and
// values past U+10FFFF are none.
size_t sequenceLength(std::string_view text) {
  const auto byte = [&](size_t i) { return static_cast<unsigned char>(text[i]); };
  const auto continues = [&](size_t i, unsigned low = 0x80, unsigned high = 0xbf) {
    return i < text.size() && byte(i) >= low && byte(i) <= high;
  };
  const unsigned lead = byte(0);
  if (lead < 0x80) return 1;
  if (lead >= 0xc2 && lead <= 0xdf) return continues(1) ? 2 : 0;
  if (lead >= 0xe0 && lead <= 0xef) {
    return continues(1, lead == 0xe0 ? 0xa0 : 0x80, lead == 0xed ? 0x9f : 0xbf) && continues(2) ? 3 : 0;
  }
  if (lead >= 0xf0 && lead <= 0xf4) {
    return continues(1, lead == 0xf0 ? 0x90 : 0x80, lead == 0xf4 ? 0x8f : 0xbf) && continues(2) && continues(3) ? 4 : 0;
  }
  return 0;
}

void appendEscaped(std::string& line, unsigned char control) {
  constexpr char kDigits[] = "0123456789abcdef";
  switch (control) {
    case '\n':
      line += "\\n";
      break;
    case '\r':
      line += "\\r";
      break;
    case '\t':
      line += "\\t";
      break;
    default:
      line += "\\u00";
      line += kDigits[control >> 4];
      line += kDigits[control & 15];
  }
}

void appendText(std::string& line, std::string_view text) {
  line += '"';
  while (!text.empty()) {
    const auto first = static_cast<unsigned char>(text.front());
    const size_t length = sequenceLength(text);
    if (length == 0) {
      line += "\xEF\xBF\xBD";  // U+FFFD for each byte that starts no sequence
    } else if (first == '"' || first == '\\') {
      line += '\\';
      line += text.front();
    } else if (first < 0x20 || first == 0x7f) {
      appendEscaped(line, first);
    } else {
      line += text.substr(0, length);
    }
    text.remove_prefix(length == 0 ? 1 : length);
  }
  line += '"';
}

template <class Number>
void appendNumber(std::string& line, Number number) {
  char digits[32];  // the longest double in shortest form has 24 characters
  line.append(digits, std::to_chars(digits, digits + sizeof digits, number).ptr);
}

void appendValue(std::string& line, const AttributeValue& value) {
  if (const auto* text = std::get_if<std::string>(&value)) {
    appendText(line, *text);
  } else if (const auto* flag = std::get_if<bool>(&value)) {
    line += *flag ? "true" : "false";
  } else if (const auto* integer = std::get_if<int64_t>(&value)) {
    appendNumber(line, *integer);
  } else if (const double real = std::get<double>(value); std::isfinite(real)) {
    appendNumber(line, real);
  } else {
    line += std::isnan(real) ? "\"NaN\"" : real > 0 ? "\"Infinity\"" : "\"-Infinity\"";
  }
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
  appendText(line, content.module);
  line += ",\"version\":";
  appendText(line, content.version);
  line += ",\"level\":";
  appendNumber(line, content.level);
  line += ",\"text\":";
  appendText(line, content.text);
  line += ",\"attributes\":{";
  bool first = true;
  for (const auto& [name, value] : content.attributes) {
    if (!first) line += ',';
    first = false;
    appendText(line, name);
    line += ':';
    appendValue(line, value);
  }
  line += "}}";
  return line;
}

}  // namespace oxtelemetry

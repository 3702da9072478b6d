// ASCII characters, and texts without regard to case or to the blanks around them. Independent of the locale.
#pragma once
#include <algorithm>
#include <string>
#include <string_view>

#include "Base/GCTypes.h"

namespace GENAPI_NAMESPACE::text {

// What XML calls white space.
inline constexpr std::string_view kBlanks = " \t\r\n";

constexpr bool isBlank(char c) noexcept { return c == ' ' || c == '\n' || c == '\t' || c == '\r'; }
constexpr bool isDigit(char c) noexcept { return c >= '0' && c <= '9'; }
constexpr char upperCase(char c) noexcept { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }
constexpr bool isLetter(char c) noexcept { return upperCase(c) >= 'A' && upperCase(c) <= 'Z'; }
// The value of a hexadecimal digit, -1 for any other character.
constexpr int hexDigit(char c) noexcept {
  if (isDigit(c)) return c - '0';
  const char upper = upperCase(c);
  return upper >= 'A' && upper <= 'F' ? upper - 'A' + 10 : -1;
}

inline std::string upperCase(std::string_view text) {
  std::string upper(text);
  for (char& character : upper) character = upperCase(character);
  return upper;
}
inline bool equalsIgnoringCase(std::string_view a, std::string_view b) noexcept {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](char x, char y) { return upperCase(x) == upperCase(y); });
}
inline bool isBlank(std::string_view text) noexcept { return text.find_first_not_of(kBlanks) == text.npos; }
// Without the blanks at both ends; fast for texts that have none.
constexpr std::string_view trimmed(std::string_view text) noexcept {
  while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
  return text;
}

}  // namespace GENAPI_NAMESPACE::text

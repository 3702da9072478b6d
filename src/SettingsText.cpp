#include "SettingsText.h"

#include <algorithm>
#include <cstdint>

#include "Failure.h"

namespace orxGenApi {
namespace {

using GENICAM_NAMESPACE::gcstring;

// Classification of the "C" locale, whatever locale the process has set.
constexpr bool isSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }
constexpr bool isPrinting(char c) {
  return c > ' ' && c < 0x7f;  // letters, digits, punctuation
}

constexpr int hexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

std::string_view trimmed(std::string_view text) {
  while (!text.empty() && isSpace(text.front())) text.remove_prefix(1);
  while (!text.empty() && isSpace(text.back())) text.remove_suffix(1);
  return text;
}

[[noreturn]] void refuse(const char* fault) { throw orx_error(kMalformedLine, fault); }

void appendByteInHex(std::string& text, char byte) {
  const uint32_t widened = static_cast<uint32_t>(static_cast<int32_t>(static_cast<signed char>(byte)));
  constexpr char kDigits[] = "0123456789ABCDEF";
  int shift = 28;
  while (shift > 4 && (widened >> shift) == 0) shift -= 4;  // two digits at least
  for (; shift >= 0; shift -= 4) text += kDigits[(widened >> shift) & 0xf];
}

// `escape` begins behind the backslash; what belongs to the sequence is taken off it.
char resolvedEscape(std::string_view& escape) {
  constexpr const char* kIncomplete = "Incomplete escape sequence";
  if (escape.empty()) refuse(kIncomplete);
  const char identifier = escape.front();
  escape.remove_prefix(1);
  switch (identifier) {
    case '"':
    case '\'':
    case '\\': return identifier;
    case '0': return '\0';
    case 'a': return '\a';
    case 'b': return '\b';
    case 'f': return '\f';
    case 'n': return '\n';
    case 'r': return '\r';
    case 't': return '\t';
    case 'v': return '\v';
    case 'x':
    case 'X': {
      // Two characters that are not digits are missing digits too.
      if (escape.size() < 2) refuse(kIncomplete);
      const int high = hexDigit(escape[0]);
      const int low = hexDigit(escape[1]);
      if (high < 0 || low < 0) refuse(kIncomplete);
      escape.remove_prefix(2);
      return static_cast<char>(high * 16 + low);
    }
    default: throw orx_error(OXGENAPI_E_NOT_SUPPORTED, "Unknown escape identifier");
  }
}

gcstring unescaped(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  while (!text.empty()) {
    const size_t plain = text.find('\\');
    result += text.substr(0, plain);
    if (plain == std::string_view::npos) break;
    text.remove_prefix(plain + 1);
    result += resolvedEscape(text);
  }
  return gcstring(std::move(result));
}

SettingsLine::Selector parseSelector(std::string_view entry) {
  const size_t open = entry.find('(');
  if (open == std::string_view::npos) refuse("Missing selector value start identifier '('");
  const size_t close = entry.find(')', open + 1);
  if (close == std::string_view::npos) refuse("Missing selector value end identifier ')'");
  return {gcstring(trimmed(entry.substr(0, open))), gcstring(trimmed(entry.substr(open + 1, close - open - 1)))};
}

void parseName(std::string_view text, SettingsLine& line) {
  const size_t open = text.find('[');
  line.feature = gcstring(trimmed(text.substr(0, open)));
  if (open == std::string_view::npos) return;
  const size_t close = text.find(']', open + 1);
  if (close == std::string_view::npos) refuse("Missing ']' for selector list");
  std::string_view list = text.substr(open + 1, close - open - 1);
  for (size_t comma = list.find(','); comma != std::string_view::npos; comma = list.find(',')) {
    line.selectors.push_back(parseSelector(list.substr(0, comma)));
    list.remove_prefix(comma + 1);
  }
  line.selectors.push_back(parseSelector(list));
}

void parseValue(std::string_view text, SettingsLine& line) {
  text = trimmed(text);
  if (!text.empty() && text.front() == '"') {
    if (text.size() < 2 || text.back() != '"') refuse("Missing value end identifier '\"'");
    text = text.substr(1, text.size() - 2);
  }
  line.value = unescaped(text);
}

}  // namespace

void appendEscapedValue(std::string& text, std::string_view value) {
  const auto staysAsItIs = [](char c) { return isPrinting(c) || isSpace(c); };
  for (auto next = value.begin(); next != value.end(); ++next) {
    const auto escaped = std::find_if_not(next, value.end(), staysAsItIs);
    text.append(next, escaped);
    if (escaped == value.end()) return;
    next = escaped;
    if (*next == '\0') {
      text += "\\0";
    } else if (*next == '\a') {
      text += "\\a";
    } else if (*next == '\b') {
      text += "\\b";
    } else {
      text += "\\x";
      appendByteInHex(text, *next);
    }
  }
}

bool parseSettingsLine(std::string_view text, SettingsLine& line) {
  line.selectors.clear();
  text = trimmed(text);
  if (text.empty() || text.front() == ';') return false;
  const size_t equals = text.find('=');
  if (equals == std::string_view::npos || equals == 0) refuse("Format error");
  parseName(text.substr(0, equals), line);
  parseValue(text.substr(equals + 1), line);
  return true;
}

}  // namespace orxGenApi

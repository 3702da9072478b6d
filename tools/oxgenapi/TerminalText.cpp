#include "TerminalText.h"

#include <cstddef>

#include "Hexadecimal.h"

namespace tool {
namespace {

// Bytes of the UTF-8 sequence at the start of the text; 0 where none begins.
size_t sequenceLength(std::string_view text) {
  const auto lead = static_cast<unsigned char>(text.front());
  const size_t length = lead < 0x80 ? 1 : lead < 0xc2 ? 0 : lead < 0xe0 ? 2 : lead < 0xf0 ? 3 : lead < 0xf5 ? 4 : 0;
  if (length == 0 || length > text.size()) return 0;
  for (size_t next = 1; next < length; ++next)
    if ((static_cast<unsigned char>(text[next]) & 0xc0) != 0x80) return 0;
  return length;
}

std::string escaped(std::string_view text, const char* prefix) {
  std::string result;
  result.reserve(text.size());
  while (!text.empty()) {
    const size_t length = sequenceLength(text);
    const char first = text.front();
    const bool isControl = first == 0x7f || (first >= 0 && first < ' ' && first != '\n' && first != '\t');
    if (length == 0 || isControl) {
      result += prefix + hexadecimal(static_cast<unsigned char>(first), 2);
      text.remove_prefix(1);
    } else if (length == 2 && first == '\xc2' && static_cast<unsigned char>(text[1]) < 0xa0) {
      result += prefix + hexadecimal(static_cast<unsigned char>(text[1]), 2);  // a control character of its own
      text.remove_prefix(2);
    } else {
      result += text.substr(0, length);
      text.remove_prefix(length);
    }
  }
  return result;
}

}  // namespace

std::string terminalText(std::string_view text) { return escaped(text, "\\x"); }

std::string terminalJson(std::string_view document) { return escaped(document, "\\u00"); }

}  // namespace tool

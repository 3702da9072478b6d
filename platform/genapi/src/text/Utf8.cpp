#include "text/Utf8.h"

#include <cstdint>
#include <cstring>

namespace GENAPI_NAMESPACE::text {
namespace {

bool isContinuation(char byte) noexcept { return (static_cast<unsigned char>(byte) & 0xC0) == 0x80; }

// Length of the well-formed character at `at`, 0 if there is none.
size_t characterLength(std::string_view text, size_t at) noexcept {
  const auto byteAt = [&](size_t index) { return static_cast<unsigned char>(text[index]); };
  const unsigned char lead = byteAt(at);
  if (lead < 0x80) return 1;
  const size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4 || text.size() - at < length) return 0;
  for (size_t i = 1; i < length; ++i)
    if (!isContinuation(text[at + i])) return 0;
  // The second byte rules out overlong forms, surrogates, and what lies above U+10FFFF.
  const unsigned char second = byteAt(at + 1);
  if (lead == 0xE0 && second < 0xA0) return 0;
  if (lead == 0xED && second > 0x9F) return 0;
  if (lead == 0xF0 && second < 0x90) return 0;
  if (lead == 0xF4 && second > 0x8F) return 0;
  return length;
}

}  // namespace

size_t findMalformedUtf8(std::string_view text) noexcept {
  for (size_t at = 0; at < text.size();) {
    // Most texts are ASCII nearly everywhere: eight bytes at a time.
    uint64_t word;
    if (text.size() - at >= sizeof word) {
      std::memcpy(&word, text.data() + at, sizeof word);
      if ((word & UINT64_C(0x8080808080808080)) == 0) {
        at += sizeof word;
        continue;
      }
    }
    const size_t length = characterLength(text, at);
    if (length == 0) return at;
    at += length;
  }
  return std::string_view::npos;
}

size_t wholeCharacters(std::string_view cut) noexcept {
  size_t start = cut.size();
  while (start > 0 && cut.size() - start < 4 && isContinuation(cut[start - 1])) --start;
  if (start == 0) return cut.size();
  const unsigned char lead = static_cast<unsigned char>(cut[start - 1]);
  const size_t needed = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : lead >= 0xC0 ? 2 : 1;
  return cut.size() - (start - 1) < needed ? start - 1 : cut.size();
}

std::string_view firstCharacters(std::string_view text, size_t characters) noexcept {
  size_t at = 0;
  for (size_t count = 0; count < characters && at < text.size(); ++count) {
    const size_t length = characterLength(text, at);
    at += length == 0 ? 1 : length;
  }
  return text.substr(0, at);
}

std::string excerpt(std::string_view text, size_t characters) {
  std::string result;
  size_t at = 0;
  for (size_t count = 0; count < characters && at < text.size(); ++count) {
    const size_t length = characterLength(text, at);
    const unsigned char lead = static_cast<unsigned char>(text[at]);
    if (length == 0)
      result += '?';
    else if (lead < 0x20 || lead == 0x7F)
      result += ' ';
    else
      result += text.substr(at, length);
    at += length == 0 ? 1 : length;
  }
  return result;
}

}  // namespace GENAPI_NAMESPACE::text

// Text at the boundary: UTF-8 inside, narrow and wide outside, and the caller's output buffers.
#pragma once
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace orxGenApi {

// UTF-8 of wide text, one code point per element; what is no code point becomes U+FFFD. Null gives the empty text.
std::string toNarrow(const wchar_t* text);
std::string toNarrow(const wchar_t* text, size_t length);

// A text parameter of either form as UTF-8, null as the empty text.
inline std::string parameterText(const char* text) {
  return text == nullptr ? std::string() : std::string(text);
}
inline std::string parameterText(const wchar_t* text) {
  return toNarrow(text);
}

// Code points of UTF-8 text; each malformed sequence becomes one U+FFFD.
std::wstring toWide(std::string_view text);

// Numbers as text, independent of the locale: decimal, and six significant digits as streams print them.
std::string integerText(int64_t value);
std::string realText(double value);

// Hands a text to the caller's buffer. Null buffer: the size receives what is needed, zero included. Otherwise at most
// size - 1 elements and a zero are written, and the size stays.
template <class Character>
void copyOut(std::basic_string_view<Character> text, Character* buffer, size_t& size) noexcept {
  if (buffer == nullptr) {
    size = text.size() + 1;
  } else if (size > 0) {
    const size_t count = std::min(size - 1, text.size());
    std::copy_n(text.data(), count, buffer);
    buffer[count] = Character{};
  }
}
inline void copyText(std::string_view text, char* buffer, size_t& size) noexcept {
  copyOut(text, buffer, size);
}
// Throws std::bad_alloc; the buffer is untouched then.
inline void copyText(std::string_view text, wchar_t* buffer, size_t& size) {
  copyOut(std::wstring_view(toWide(text)), buffer, size);
}

}  // namespace orxGenApi

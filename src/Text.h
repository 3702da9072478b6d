// Text at the boundary: UTF-8 inside, narrow and wide outside, and the caller's output buffers.
#pragma once
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace orxGenApi {

// UTF-8 of wide text, one code point per element; what is no code point becomes U+FFFD. Null gives the empty text.
std::string toNarrow(const wchar_t* text);
std::string toNarrow(const wchar_t* text, size_t length);

// A text parameter of either form as UTF-8, null as the empty text.
inline std::string parameterText(const char* text) { return text == nullptr ? std::string() : std::string(text); }
inline std::string parameterText(const wchar_t* text) { return toNarrow(text); }

// Numbers as text, independent of the locale: decimal, and six significant digits as streams print them.
std::string integerText(int64_t value);
std::string realText(double value);

// Hands a text to the caller's buffer. Null buffer: the size receives what is needed, zero included. Otherwise at most
// size - 1 elements and a zero are written, and the size stays. Wide elements are the code points of the text, each
// malformed sequence one U+FFFD.
void copyText(std::string_view text, char* buffer, size_t& size) noexcept;
void copyText(std::string_view text, wchar_t* buffer, size_t& size) noexcept;

}  // namespace orxGenApi

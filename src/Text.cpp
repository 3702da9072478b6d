#include "Text.h"

#include <algorithm>
#include <charconv>
#include <cwchar>

namespace orxGenApi {
namespace {

constexpr wchar_t kReplacement = 0xFFFD;

void appendUtf8(std::string& text, uint32_t point) {
  const auto continuation = [&](int shift) { text += static_cast<char>(0x80 | ((point >> shift) & 0x3F)); };
  if ((point & 0xFFE00000) != 0) point = kReplacement;
  if (point < 0x80) {
    text += static_cast<char>(point);
  } else if (point < 0x800) {
    text += static_cast<char>(0xC0 | (point >> 6));
    continuation(0);
  } else if (point < 0x10000) {
    text += static_cast<char>(0xE0 | (point >> 12));
    continuation(6);
    continuation(0);
  } else {
    text += static_cast<char>(0xF0 | (point >> 18));
    continuation(12);
    continuation(6);
    continuation(0);
  }
}

// How many continuation bytes follow a lead byte above 0x7f; -1 for a byte that cannot lead.
int continuationsAfter(uint8_t lead) {
  if (lead >= 0xC0 && lead <= 0xDF) return 1;
  if (lead >= 0xE0 && lead <= 0xEF) return 2;
  if (lead >= 0xF0 && lead <= 0xF7) return 3;
  return -1;
}

// The code point at `i`, which moves past it; U+FFFD for a malformed sequence.
wchar_t nextPoint(std::string_view text, size_t& i) {
  const auto lead = static_cast<uint8_t>(text[i++]);
  if (lead < 0x80) return lead;
  const int continuations = continuationsAfter(lead);
  if (continuations < 0) return kReplacement;
  uint32_t point = lead & (0x3Fu >> continuations);
  for (int missing = continuations; missing > 0; --missing, ++i) {
    const auto byte = i < text.size() ? static_cast<uint8_t>(text[i]) : uint8_t{0};
    if ((byte & 0xC0) != 0x80) return kReplacement;
    point = (point << 6) | (byte & 0x3Fu);
  }
  return static_cast<wchar_t>(point);
}

}  // namespace

std::string toNarrow(const wchar_t* text) {
  return text == nullptr ? std::string() : toNarrow(text, std::wcslen(text));
}

std::string toNarrow(const wchar_t* text, size_t length) {
  std::string narrow;
  narrow.reserve(length);
  for (size_t i = 0; i < length; ++i) appendUtf8(narrow, static_cast<uint32_t>(text[i]));
  return narrow;
}

void copyText(std::string_view text, char* buffer, size_t& size) noexcept {
  if (buffer == nullptr) {
    size = text.size() + 1;
  } else if (size > 0) {
    const size_t count = std::min(size - 1, text.size());
    std::copy_n(text.data(), count, buffer);
    buffer[count] = '\0';
  }
}

void copyText(std::string_view text, wchar_t* buffer, size_t& size) noexcept {
  size_t count = 0;
  size_t i = 0;
  if (buffer == nullptr) {
    for (; i < text.size(); ++count) nextPoint(text, i);
    size = count + 1;
  } else if (size > 0) {
    for (; i < text.size() && count < size - 1; ++count) buffer[count] = nextPoint(text, i);
    buffer[count] = L'\0';
  }
}

std::string integerText(int64_t value) {
  char digits[24];
  return std::string(digits, std::to_chars(digits, digits + sizeof digits, value).ptr);
}

std::string realText(double value) {
  char digits[40];
  return std::string(digits, std::to_chars(digits, digits + sizeof digits, value, std::chars_format::general, 6).ptr);
}

}  // namespace orxGenApi

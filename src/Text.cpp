#include "Text.h"

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

// How many continuation bytes follow a lead byte; -1 for a byte that cannot lead.
int continuationsAfter(uint8_t lead) {
  if (lead < 0x80) return 0;
  if (lead >= 0xC0 && lead <= 0xDF) return 1;
  if (lead >= 0xE0 && lead <= 0xEF) return 2;
  if (lead >= 0xF0 && lead <= 0xF7) return 3;
  return -1;
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

std::wstring toWide(std::string_view text) {
  std::wstring wide;
  wide.reserve(text.size());
  for (size_t i = 0; i < text.size();) {
    const auto lead = static_cast<uint8_t>(text[i++]);
    const int continuations = continuationsAfter(lead);
    uint32_t point = continuations <= 0 ? lead : lead & (0x3Fu >> continuations);
    int missing = continuations;
    for (; missing > 0 && i < text.size(); --missing, ++i) {
      const auto byte = static_cast<uint8_t>(text[i]);
      if ((byte & 0xC0) != 0x80) break;
      point = (point << 6) | (byte & 0x3Fu);
    }
    wide += missing == 0 ? static_cast<wchar_t>(point) : kReplacement;
  }
  return wide;
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

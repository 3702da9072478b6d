#include "DeviceText.h"

#include <algorithm>
#include <cstdint>

namespace ox::camera {
namespace {

// Bytes of the UTF-8 sequence of a printable character at the start of `text`, 0 if there is none.
size_t printableLength(std::string_view text) {
  const auto lead = static_cast<uint8_t>(text[0]);
  if (lead < 0x80) return lead >= 0x20 && lead != 0x7f && lead != '\\' ? 1 : 0;
  const size_t length = lead >= 0xc2 && lead < 0xe0   ? 2
                        : lead >= 0xe0 && lead < 0xf0 ? 3
                        : lead >= 0xf0 && lead < 0xf5 ? 4
                                                      : 0;
  if (length == 0 || text.size() < length) return 0;
  uint32_t code = lead & (0xffu >> (length + 1));
  for (size_t i = 1; i < length; ++i) {
    const auto byte = static_cast<uint8_t>(text[i]);
    if ((byte & 0xc0) != 0x80) return 0;
    code = code << 6 | (byte & 0x3f);
  }
  const bool shortest = length == 2 || code >= (length == 3 ? 0x800u : 0x10000u);
  const bool character = code >= 0xa0 && code <= 0x10ffff && (code < 0xd800 || code > 0xdfff);
  return shortest && character ? length : 0;
}

}  // namespace

std::string shown(std::string_view text) {
  text = text.substr(0, text.find('\0'));
  while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
  while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
  std::string result;
  while (!text.empty()) {
    size_t length = printableLength(text);
    if (length > 0) {
      result += text.substr(0, length);
    } else {
      const auto byte = static_cast<uint8_t>(text[0]);
      result += {'\\', 'x', "0123456789abcdef"[byte >> 4], "0123456789abcdef"[byte & 15]};
      length = 1;
    }
    text.remove_prefix(length);
  }
  return result;
}

std::string idPart(std::string_view text) {
  std::string part;
  for (const char c : shown(text)) {
    const bool plain =
        (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '.' || c == '-';
    if (plain)
      part += c;
    else if (!part.empty() && part.back() != '_')
      part += '_';
  }
  return part;
}

bool sameIgnoringCase(std::string_view a, std::string_view b) {
  const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [&](char left, char right) { return lower(left) == lower(right); });
}

}  // namespace ox::camera

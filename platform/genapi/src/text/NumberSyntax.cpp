#include "text/NumberSyntax.h"

#include "text/Characters.h"

#include <charconv>
#include <cmath>
#include <limits>

namespace GENAPI_NAMESPACE::text {
namespace {

bool hasHexPrefix(std::string_view text) noexcept {
  return text.size() >= 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
}

// All of `text` as an unsigned number of the base.
std::optional<uint64_t> parseUnsigned(std::string_view text, int base) noexcept {
  uint64_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, base);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

// Takes an optional sign off the front; true for '-'.
bool takeSign(std::string_view& text) noexcept {
  if (text.empty() || (text[0] != '-' && text[0] != '+')) return false;
  const bool negative = text[0] == '-';
  text.remove_prefix(1);
  return negative;
}

// Whether an unsigned decimal is digits with an optional point and exponent, and whether it is below 1: what decides
// between "too small" and "too large" when it does not fit a double.
struct DecimalShape {
  bool wellFormed = false;
  bool belowOne = false;
};

DecimalShape shapeOf(std::string_view text) noexcept {
  size_t at = 0;
  int64_t position = 0;  // decimal position of the first digit that is not 0: 1 for "1.5", 0 for "0.1", -1 for "0.01"
  bool significant = false;
  size_t digits = 0;
  for (; at < text.size() && isDigit(text[at]); ++at, ++digits) {
    significant = significant || text[at] != '0';
    if (significant) ++position;
  }
  if (at < text.size() && text[at] == '.') {
    for (++at; at < text.size() && isDigit(text[at]); ++at, ++digits) {
      if (!significant && text[at] == '0') --position;
      significant = significant || text[at] != '0';
    }
  }
  if (digits == 0) return {};
  int64_t exponent = 0;
  if (at < text.size() && (text[at] == 'e' || text[at] == 'E')) {
    std::string_view rest = text.substr(at + 1);
    const bool negative = takeSign(rest);
    if (rest.empty()) return {};
    for (char digit : rest) {
      if (!isDigit(digit)) return {};
      if (exponent < INT64_C(1000000000000)) exponent = exponent * 10 + (digit - '0');
    }
    if (negative) exponent = -exponent;
    at = text.size();
  }
  return {at == text.size(), !significant || position + exponent <= 0};
}

}  // namespace

std::optional<int64_t> parseInteger(std::string_view text) noexcept {
  text = trimmed(text);
  const bool negative = takeSign(text);
  std::optional<uint64_t> magnitude;
  if (hasHexPrefix(text)) {
    const std::string_view digits = text.substr(2);
    if (digits.size() > 16) return std::nullopt;
    magnitude = parseUnsigned(digits, 16);
  } else {
    magnitude = parseUnsigned(text, 10);
    if (magnitude && *magnitude > static_cast<uint64_t>(INT64_MAX) + (negative ? 1 : 0)) return std::nullopt;
  }
  if (!magnitude) return std::nullopt;
  return static_cast<int64_t>(negative ? 0 - *magnitude : *magnitude);
}

namespace {

// `beyond` stands for magnitudes above the largest double, nothing by default.
std::optional<double> parseFloat(std::string_view text, std::optional<double> beyond) noexcept {
  text = trimmed(text);
  if (text == "INF") return HUGE_VAL;
  if (text == "-INF") return -HUGE_VAL;
  if (text == "NaN") return std::numeric_limits<double>::quiet_NaN();
  std::string_view digits = text;
  const bool negative = takeSign(digits);
  if (hasHexPrefix(digits)) {
    const std::optional<int64_t> integer = parseInteger(text);
    if (!integer) return std::nullopt;
    return static_cast<double>(*integer);
  }
  const DecimalShape shape = shapeOf(digits);
  if (!shape.wellFormed) return std::nullopt;
  double value = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
  if (error == std::errc::result_out_of_range || std::isinf(value)) {
    if (!shape.belowOne && !beyond) return std::nullopt;
    value = shape.belowOne ? 0 : *beyond;
  } else if (error != std::errc() || end != digits.data() + digits.size()) {
    return std::nullopt;
  }
  return negative ? -value : value;
}

}  // namespace

std::optional<double> parseFloat(std::string_view text) noexcept { return parseFloat(text, std::nullopt); }

std::optional<double> parseFloatInRange(std::string_view text) noexcept {
  return parseFloat(text, std::numeric_limits<double>::max());
}

std::optional<bool> parseBoolean(std::string_view text) noexcept {
  text = trimmed(text);
  if (text == "true" || text == "1") return true;
  if (text == "false" || text == "0") return false;
  return std::nullopt;
}

std::optional<int64_t> parseIpv4(std::string_view text) noexcept {
  text = trimmed(text);
  int64_t address = 0;
  for (int part = 0; part < 4; ++part) {
    const size_t length = part < 3 ? text.find('.') : text.size();
    if (length == std::string_view::npos || length > 3) return std::nullopt;
    const std::optional<uint64_t> byte = parseUnsigned(text.substr(0, length), 10);
    if (!byte || *byte > 255) return std::nullopt;
    address = address * 256 + static_cast<int64_t>(*byte);
    text.remove_prefix(part < 3 ? length + 1 : length);
  }
  return address;
}

std::optional<int64_t> parseMac(std::string_view text) noexcept {
  text = trimmed(text);
  if (text.size() != 17) return std::nullopt;
  int64_t address = 0;
  for (size_t pair = 0; pair < 6; ++pair) {
    const int high = hexDigit(text[pair * 3]);
    const int low = hexDigit(text[pair * 3 + 1]);
    if (high < 0 || low < 0 || (pair < 5 && text[pair * 3 + 2] != ':')) return std::nullopt;
    address = address * 256 + high * 16 + low;
  }
  return address;
}

std::optional<int64_t> parseInteger(std::string_view text, ERepresentation representation) noexcept {
  std::optional<int64_t> value;
  if (representation == IPV4Address) value = parseIpv4(text);
  if (representation == MACAddress) value = parseMac(text);
  if (representation == Boolean) {
    const std::string_view word = trimmed(text);
    if (word == "true") value = 1;
    if (word == "false") value = 0;
  }
  return value ? value : parseInteger(text);
}

bool parseRegisterText(std::string_view text, std::span<uint8_t> bytes) noexcept {
  text = trimmed(text);
  if (!hasHexPrefix(text)) return false;
  text.remove_prefix(2);
  if (text.size() % 2 != 0 || text.size() / 2 != bytes.size()) return false;
  for (char character : text)
    if (hexDigit(character) < 0) return false;
  for (size_t i = 0; i < bytes.size(); ++i)
    bytes[i] = static_cast<uint8_t>(hexDigit(text[i * 2]) * 16 + hexDigit(text[i * 2 + 1]));
  return true;
}

}  // namespace GENAPI_NAMESPACE::text

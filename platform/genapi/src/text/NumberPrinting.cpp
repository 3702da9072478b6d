#include "text/NumberSyntax.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace GENAPI_NAMESPACE::text {
namespace {

constexpr char kHexDigits[] = "0123456789abcdef";

// Longest printed double: sign, 309 digits, point, kMaxDisplayPrecision digits.
constexpr size_t kMaxFloatText = 1 + 309 + 1 + kMaxDisplayPrecision + 8;

// Significant digits that write every double completely.
constexpr int kMaxSignificantDigits = 767;

void appendHexByte(std::string& text, unsigned byte) {
  text += kHexDigits[byte >> 4 & 15];
  text += kHexDigits[byte & 15];
}

template <class Number, class... Format>
std::string printed(Number value, Format... format) {
  std::array<char, kMaxFloatText> buffer;
  const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, format...);
  return std::string(buffer.data(), result.ptr);
}

// Precision as printf understands it, within what a double can show.
int effectivePrecision(int64_t precision) noexcept {
  return precision < 0 ? 6 : static_cast<int>(std::min(precision, kMaxDisplayPrecision));
}

std::string_view notFiniteText(double value) noexcept {
  if (std::isnan(value)) return "nan";
  return value < 0 ? "-inf" : "inf";
}

// Adds one to a string of decimal digits.
void increment(std::string& digits) {
  for (size_t at = digits.size(); at-- > 0;) {
    if (digits[at] != '9') {
      ++digits[at];
      return;
    }
    digits[at] = '0';
  }
  digits.insert(digits.begin(), '1');
}

// The number of the given notation and precision next to `value`, toward or away from zero.
std::optional<double> neighbour(double value, bool towardZero, EDisplayNotation notation, int precision) {
  // The complete decimal expansion d.ddd...e+XX; its digits and exponent can be cut without any rounding.
  std::string digits = printed(std::fabs(value), std::chars_format::scientific, kMaxSignificantDigits - 1);
  const size_t mark = digits.find('e');
  int exponent = 0;
  const char* exponentText = digits.data() + mark + 1;
  std::from_chars(exponentText + (*exponentText == '+' ? 1 : 0), digits.data() + digits.size(), exponent);
  digits.erase(mark);
  digits.erase(1, 1);

  int kept = std::max(precision, 1);
  if (notation == fnScientific) kept = precision + 1;
  if (notation == fnFixed) kept = exponent + 1 + precision;
  kept = std::min(kept, kMaxSignificantDigits);
  int lastPlace = exponent - kept + 1;  // power of ten of the last digit kept
  if (kept <= 0) {
    digits = "0";
    lastPlace = -precision;
  } else {
    digits.resize(static_cast<size_t>(kept));
  }
  if (!towardZero) increment(digits);
  const std::optional<double> magnitude = parseFloat(digits + "e" + std::to_string(lastPlace));
  if (!magnitude) return std::nullopt;
  return std::copysign(*magnitude, value);
}

}  // namespace

std::string printInteger(int64_t value, ERepresentation representation) {
  const uint64_t bits = static_cast<uint64_t>(value);
  std::string text;
  switch (representation) {
    case Boolean: return value != 0 ? "true" : "false";
    case HexNumber: return "0x" + printed(bits, 16);
    case IPV4Address:
      for (int shift = 24; shift >= 0; shift -= 8) {
        text += printed(bits >> shift & 0xFF);
        if (shift > 0) text += '.';
      }
      return text;
    case MACAddress:
      for (int shift = 40; shift >= 0; shift -= 8) {
        appendHexByte(text, static_cast<unsigned>(bits >> shift & 0xFF));
        if (shift > 0) text += ':';
      }
      return text;
    default: return printed(value);
  }
}

std::string printFloat(double value, EDisplayNotation notation, int64_t precision) {
  if (!std::isfinite(value)) return std::string(notFiniteText(value));
  std::chars_format format = std::chars_format::general;
  if (notation == fnFixed) format = std::chars_format::fixed;
  if (notation == fnScientific) format = std::chars_format::scientific;
  return printed(value, format, effectivePrecision(precision));
}

std::string printFloatExactly(double value) {
  if (!std::isfinite(value)) return std::isnan(value) ? "NaN" : value < 0 ? "-INF" : "INF";
  return printed(value);
}

std::string stepInsideLimits(std::string text, double value, double min, double max, EDisplayNotation notation,
                             int64_t precision) {
  const auto inside = [&](double number) { return number >= min && number <= max; };
  const std::optional<double> shown = parseFloat(text);
  // Text beyond the largest double is above every limit.
  if (!std::isfinite(value) || !inside(value) || (shown && inside(*shown))) return text;
  const bool roundedUp = shown ? *shown > value : value > 0;
  const std::optional<double> next =
      neighbour(value, roundedUp == (value > 0), notation, effectivePrecision(precision));
  if (!next) return text;
  std::string stepped = printFloat(*next, notation, precision);
  const std::optional<double> steppedValue = parseFloat(stepped);
  return steppedValue && inside(*steppedValue) ? stepped : text;
}

std::string printRegisterText(std::span<const uint8_t> bytes) {
  std::string text;
  text.reserve(2 + bytes.size() * 2);
  text = "0x";
  for (uint8_t byte : bytes) appendHexByte(text, byte);
  return text;
}

}  // namespace GENAPI_NAMESPACE::text

// How numbers look as text, in descriptions and in values that callers read and write. Always the C locale, and
// integers never pass through a double. Every parser allows blanks around the text and takes all of it or nothing.
#pragma once

#include "GenApi/Types.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace GENAPI_NAMESPACE::text {

// Most digits that a float is printed with; past it every double is written out completely.
inline constexpr int64_t kMaxDisplayPrecision = 1100;

// Optional sign, then decimal digits ("0815" is 815) or "0x" and 1 to 16 hex digits, taken as a bit pattern:
// "0xFFFFFFFFFFFFFFFF" is -1, "-0x10" is -16. Nothing for decimals beyond int64 and everything else.
std::optional<int64_t> parseInteger(std::string_view text) noexcept;

// What parseInteger takes, decimals with fraction and exponent (".5", "1.", "-2E-3"), "INF", "-INF" and "NaN". Nothing
// for numbers whose magnitude is beyond the largest double.
std::optional<double> parseFloat(std::string_view text) noexcept;

// The same, with the largest double in place of numbers beyond it: "1.79769313486232E+308", the largest double rounded
// to 15 digits, is what many a tool writes for "no limit".
std::optional<double> parseFloatInRange(std::string_view text) noexcept;

// "true", "false", "1", "0".
std::optional<bool> parseBoolean(std::string_view text) noexcept;

// "86.120.154.188", each part 0..255; the first part becomes the highest of four bytes.
std::optional<int64_t> parseIpv4(std::string_view text) noexcept;

// "12:34:56:78:9a:bc" in any case; the first pair becomes the highest of six bytes.
std::optional<int64_t> parseMac(std::string_view text) noexcept;

// The special form of the representation, or a plain integer.
std::optional<int64_t> parseInteger(std::string_view text, ERepresentation representation) noexcept;

// "0x" and exactly two hex digits for each byte of `bytes`, in memory order. False, and `bytes` untouched, otherwise.
bool parseRegisterText(std::string_view text, std::span<uint8_t> bytes) noexcept;

// "true"/"false", "0x1f" (negative: 16 digits), "86.120.154.188" (low 32 bits), "12:34:56:78:9a:bc" (low 48 bits), or
// decimal for all other representations.
std::string printInteger(int64_t value, ERepresentation representation = PureNumber);

// As printf prints it: automatic %g, fixed %f, scientific %e. A negative precision counts as 6, as in printf; one above
// kMaxDisplayPrecision as that. "inf", "-inf", "nan".
std::string printFloat(double value, EDisplayNotation notation, int64_t precision);

// The shortest text that parseFloat turns back into the same number.
std::string printFloatExactly(double value);

// `printed` is printFloat(value, notation, precision). If rounding has moved it outside [min, max] while `value` is
// inside, the text of the neighbouring number of that precision which is inside; `printed` where there is none. Limits
// need not be known when parseFloat(printed) gives `value`: the text stands then.
std::string stepInsideLimits(std::string printed, double value, double min, double max, EDisplayNotation notation,
                             int64_t precision);

// "0x" and two lower-case hex digits per byte, in memory order; "0x" for no bytes.
std::string printRegisterText(std::span<const uint8_t> bytes);

}  // namespace GENAPI_NAMESPACE::text

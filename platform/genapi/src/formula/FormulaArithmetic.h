// What the operators and functions of formulas compute. Each function stores its result and answers null, or answers
// why there is none. `result` may be one of the operands' own variables: operands come by value.
#pragma once

#include "Base/GCTypes.h"

#include <cmath>
#include <cstdint>

namespace GENAPI_NAMESPACE::formula::arithmetic {

using Problem = const char*;

inline constexpr Problem kOverflow = "overflow";
inline constexpr Problem kDivisionByZero = "division by zero";
inline constexpr Problem kShiftCount = "shift count outside 0..63";
inline constexpr Problem kNotAnInteger = "operand does not fit a 64-bit integer";
inline constexpr Problem kDomain = "argument outside the function's domain";
inline constexpr Problem kPowerDomain = "power of these operands is not a number";
inline constexpr Problem kZeroToNegative = "zero to a negative power";

// --- whole numbers ---

inline Problem add(int64_t a, int64_t b, int64_t& result) noexcept {
  return __builtin_add_overflow(a, b, &result) ? kOverflow : nullptr;
}
inline Problem subtract(int64_t a, int64_t b, int64_t& result) noexcept {
  return __builtin_sub_overflow(a, b, &result) ? kOverflow : nullptr;
}
inline Problem multiply(int64_t a, int64_t b, int64_t& result) noexcept {
  return __builtin_mul_overflow(a, b, &result) ? kOverflow : nullptr;
}
inline Problem divide(int64_t a, int64_t b, int64_t& result) noexcept {
  if (b == 0) return kDivisionByZero;
  if (b == -1) return subtract(0, a, result);
  result = a / b;
  return nullptr;
}
inline Problem remainder(int64_t a, int64_t b, int64_t& result) noexcept {
  if (b == 0) return kDivisionByZero;
  result = b == -1 ? 0 : a % b;  // the processor traps on the smallest integer % -1
  return nullptr;
}
inline Problem power(int64_t base, int64_t exponent, int64_t& result) noexcept {
  if (exponent < 0) {
    if (base == 0) return kZeroToNegative;
    result = base == 1 ? 1 : base == -1 ? (exponent % 2 == 0 ? 1 : -1) : 0;
    return nullptr;
  }
  int64_t product = 1;
  for (;;) {
    if ((exponent & 1) != 0 && __builtin_mul_overflow(product, base, &product)) return kOverflow;
    exponent >>= 1;
    if (exponent == 0) break;
    if (__builtin_mul_overflow(base, base, &base)) return kOverflow;
  }
  result = product;
  return nullptr;
}
inline Problem shiftLeft(int64_t a, int64_t count, int64_t& result) noexcept {
  if (count < 0 || count > 63) return kShiftCount;
  result = static_cast<int64_t>(static_cast<uint64_t>(a) << count);
  return nullptr;
}
inline Problem shiftRight(int64_t a, int64_t count, int64_t& result) noexcept {
  if (count < 0 || count > 63) return kShiftCount;
  result = a >> count;
  return nullptr;
}
inline Problem bitAnd(int64_t a, int64_t b, int64_t& result) noexcept { return result = a & b, nullptr; }
inline Problem bitXor(int64_t a, int64_t b, int64_t& result) noexcept { return result = a ^ b, nullptr; }
inline Problem bitOr(int64_t a, int64_t b, int64_t& result) noexcept { return result = a | b, nullptr; }
inline Problem complement(int64_t a, int64_t& result) noexcept { return result = ~a, nullptr; }
inline Problem negate(int64_t a, int64_t& result) noexcept { return subtract(0, a, result); }
inline Problem absolute(int64_t a, int64_t& result) noexcept {
  if (a < 0) return negate(a, result);
  return result = a, nullptr;
}

// --- floating point ---

inline Problem add(double a, double b, double& result) noexcept { return result = a + b, nullptr; }
inline Problem subtract(double a, double b, double& result) noexcept { return result = a - b, nullptr; }
inline Problem multiply(double a, double b, double& result) noexcept { return result = a * b, nullptr; }
inline Problem divide(double a, double b, double& result) noexcept {
  if (b == 0) return kDivisionByZero;
  return result = a / b, nullptr;
}
inline Problem remainder(double a, double b, double& result) noexcept {
  if (b == 0) return kDivisionByZero;
  return result = std::fmod(a, b), nullptr;
}
inline Problem power(double base, double exponent, double& result) noexcept {
  result = std::pow(base, exponent);
  return std::isnan(result) ? kPowerDomain : nullptr;
}

// Bit operations on doubles cut the fraction and go through 64-bit integers.
inline bool cutToInteger(double value, int64_t& result) noexcept {
  if (!(value >= -0x1p63 && value < 0x1p63)) return false;
  result = static_cast<int64_t>(value);
  return true;
}
template <Problem (*operation)(int64_t, int64_t, int64_t&) noexcept>
inline Problem throughIntegers(double a, double b, double& result) noexcept {
  int64_t left = 0, right = 0, bits = 0;
  if (!cutToInteger(a, left) || !cutToInteger(b, right)) return kNotAnInteger;
  if (const Problem problem = operation(left, right, bits)) return problem;
  return result = static_cast<double>(bits), nullptr;
}
inline Problem shiftLeft(double a, double b, double& result) noexcept {
  return throughIntegers<shiftLeft>(a, b, result);
}
inline Problem shiftRight(double a, double b, double& result) noexcept {
  return throughIntegers<shiftRight>(a, b, result);
}
inline Problem bitAnd(double a, double b, double& result) noexcept { return throughIntegers<bitAnd>(a, b, result); }
inline Problem bitXor(double a, double b, double& result) noexcept { return throughIntegers<bitXor>(a, b, result); }
inline Problem bitOr(double a, double b, double& result) noexcept { return throughIntegers<bitOr>(a, b, result); }
inline Problem complement(double a, double& result) noexcept { return throughIntegers<bitXor>(a, -1.0, result); }
inline Problem negate(double a, double& result) noexcept { return result = -a, nullptr; }
inline Problem absolute(double a, double& result) noexcept { return result = std::fabs(a), nullptr; }

// The result of a mathematical function; not a number when its argument was outside the domain.
inline Problem checked(double value, double& result) noexcept {
  result = value;
  return std::isnan(value) ? kDomain : nullptr;
}
// Functions that are no number outside their domain, where the C library's answer with an infinity.
inline double naturalLogarithm(double x) noexcept { return x > 0 ? std::log(x) : NAN; }
inline double decimalLogarithm(double x) noexcept { return x > 0 ? std::log10(x) : NAN; }
inline double fraction(double x) noexcept { return x - std::trunc(x); }

// `value` rounded to `places` decimals, half away from zero; a negative count rounds to tens, hundreds and so on.
inline Problem roundToPlaces(double value, double places, double& result) noexcept {
  if (std::isnan(places)) return kDomain;
  const double scale = std::pow(10.0, std::fabs(std::trunc(places)));
  if (places < 0) {
    // Past the largest power of ten every number is nearer to zero than to the next step.
    return result = std::isinf(scale) ? std::copysign(0.0, value) : std::round(value / scale) * scale, nullptr;
  }
  const double scaled = value * scale;
  // From 2^52 on a double has no decimals left to round.
  return result = std::fabs(scaled) < 0x1p52 ? std::round(scaled) / scale : value, nullptr;
}

}  // namespace GENAPI_NAMESPACE::formula::arithmetic

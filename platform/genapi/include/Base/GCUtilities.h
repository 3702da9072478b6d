// Integer casts that test their range.
#pragma once

#include <Base/GCException.h>

#include <type_traits>

namespace GENICAM_NAMESPACE {

// Throws RuntimeException "INTEGRAL_CAST failed".
[[noreturn]] void throwIntegralCastFailed();

// Returns `value` as Target; throws RuntimeException "INTEGRAL_CAST failed" when it does not fit.
template <typename Target, typename Source>
inline Target INTEGRAL_CAST2(Source value) {
  static_assert(std::is_integral_v<Target> && std::is_integral_v<Source>);
  const Target result = static_cast<Target>(value);
  bool fits = static_cast<Source>(result) == value;
  // Bits that survive the round trip still change their meaning when exactly one side has a sign.
  if constexpr (std::is_signed_v<Source> && !std::is_signed_v<Target>) fits = fits && value >= 0;
  if constexpr (!std::is_signed_v<Source> && std::is_signed_v<Target>) fits = fits && result >= 0;
  if (!fits) throwIntegralCastFailed();
  return result;
}

// The same with the source type deduced.
template <typename Target, typename Source>
inline Target INTEGRAL_CAST(Source value) {
  return INTEGRAL_CAST2<Target, Source>(value);
}

}  // namespace GENICAM_NAMESPACE

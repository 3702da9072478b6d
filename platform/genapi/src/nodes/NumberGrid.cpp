#include "nodes/NumberGrid.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace GENAPI_NAMESPACE {

namespace {

constexpr double kTwoTo63 = 9223372036854775808.0;

std::optional<int64_t> fitting(double whole) {
  if (!(whole >= -kTwoTo63 && whole < kTwoTo63)) return std::nullopt;
  return static_cast<int64_t>(whole);
}

int64_t clamped(double whole) {
  if (whole >= kTwoTo63) return std::numeric_limits<int64_t>::max();
  if (whole < -kTwoTo63) return std::numeric_limits<int64_t>::min();
  return static_cast<int64_t>(whole);
}

}  // namespace

std::optional<int64_t> roundedToInteger(double value) { return fitting(std::round(value)); }
std::optional<int64_t> ceiledToInteger(double value) { return fitting(std::ceil(value)); }
std::optional<int64_t> flooredToInteger(double value) { return fitting(std::floor(value)); }

int64_t nearestGridPoint(double value, int64_t min, int64_t max, int64_t inc) {
  const auto step = static_cast<uint64_t>(inc);
  const auto base = static_cast<uint64_t>(min);
  const auto pointAt = [&](uint64_t distance) { return static_cast<int64_t>(base + distance); };
  const uint64_t highest = (static_cast<uint64_t>(max) - base) / step * step;
  if (inc == 1) return std::clamp(clamped(std::round(value)), min, max);
  const int64_t floor = std::clamp(clamped(std::floor(value)), min, max);
  const uint64_t below = (static_cast<uint64_t>(floor) - base) / step * step;
  if (below >= highest) return pointAt(highest);
  const uint64_t above = below + step;
  // A long double holds every 64-bit integer exactly.
  const long double toBelow = static_cast<long double>(value) - static_cast<long double>(pointAt(below));
  const long double toAbove = static_cast<long double>(pointAt(above)) - static_cast<long double>(value);
  if (toBelow < toAbove) return pointAt(below);
  if (toBelow > toAbove) return pointAt(above);
  return value >= 0 ? pointAt(above) : pointAt(below);
}

}  // namespace GENAPI_NAMESPACE

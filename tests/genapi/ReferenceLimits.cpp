// Limits, increments, sets of values, and what a verified access checks.
#include <algorithm>
#include <cmath>
#include <limits>

#include "ReferenceEvaluator.h"

namespace randomly {

namespace {

template <class Number>
constexpr Number kLowest = std::numeric_limits<Number>::lowest();
template <class Number>
constexpr Number kHighest = std::numeric_limits<Number>::max();

}  // namespace

bool ReferenceEvaluator::hasLimits(int node) const {
  return at(node).kind != Kind::Boolean && at(node).kind != Kind::Enumeration;
}

template <class Number>
Number ReferenceEvaluator::convertedLimit(int index, bool upper) {
  const Node& node = at(index);
  const Number unlimited = upper ? kHighest<Number> : kLowest<Number>;
  if (node.slope == Varying || !hasLimits(node.value)) return unlimited;
  const auto ofSource = [&](bool top) {
    if constexpr (std::is_same_v<Number, int64_t>) return integerLimit(node.value, top);
    return static_cast<Number>(realLimit(node.value, top));
  };
  const Number low = ofSource(false), high = ofSource(true);
  try {
    if (node.slope != Automatic) return converted(index, (node.slope == Increasing) == upper ? high : low);
    const Number a = converted(index, low), b = converted(index, high);
    return upper ? std::max(a, b) : std::min(a, b);
  } catch (const Refused& refused) {
    if (refused.why != Why::Logical) throw;
    return unlimited;
  }
}

int64_t ReferenceEvaluator::integerLimit(int index, bool upper) {
  const Node& node = at(index);
  const int64_t unlimited = upper ? INT64_MAX : INT64_MIN;
  if (isFloatKind(node.kind)) {
    const double limit = realLimit(index, upper);
    return fitted(upper ? std::floor(limit) : std::ceil(limit));
  }
  if (node.kind == Kind::IntReg || node.kind == Kind::MaskedIntReg) {
    const int64_t bytes = length(index);
    if (bytes > 8) refuse(Why::Range);
    const int width = node.kind == Kind::MaskedIntReg ? node.width : static_cast<int>(8 * bytes);
    if (!node.isSigned) return !upper ? 0 : width >= 63 ? INT64_MAX : (int64_t{1} << width) - 1;
    if (width == 64) return unlimited;
    return upper ? (int64_t{1} << (width - 1)) - 1 : -(int64_t{1} << (width - 1));
  }
  if (node.kind == Kind::IntConverter) return convertedLimit<int64_t>(index, upper);
  if (node.kind != Kind::Integer) return unlimited;
  if (const auto& own = upper ? node.max : node.min) return static_cast<int64_t>(*own);
  if (const int link = upper ? node.pMax : node.pMin; link != kNone) {
    requireReadable(link);
    return integer(link);
  }
  if (node.copiesBefore.empty() && node.copiesAfter.empty()) {
    const int from = source(node);
    return from != kNone && hasLimits(from) ? integerLimit(from, upper) : unlimited;
  }
  int64_t limit = unlimited;
  for (const int each : targets(node)) {
    if (!hasLimits(each)) continue;
    limit = upper ? std::min(limit, integerLimit(each, true)) : std::max(limit, integerLimit(each, false));
  }
  return limit;
}

double ReferenceEvaluator::realLimit(int index, bool upper) {
  const Node& node = at(index);
  const double unlimited = upper ? kHighest<double> : kLowest<double>;
  if (!hasLimits(index)) return unlimited;
  if (!isFloatKind(node.kind)) return static_cast<double>(integerLimit(index, upper));
  if (node.kind == Kind::FloatReg) {
    const int64_t bytes = length(index);
    if (bytes != 4 && bytes != 8) refuse(Why::Range);
    const double limit = bytes == 4 ? std::numeric_limits<float>::max() : kHighest<double>;
    return upper ? limit : -limit;
  }
  if (node.kind == Kind::Converter) return convertedLimit<double>(index, upper);
  if (node.kind != Kind::Float) return unlimited;
  if (const auto& own = upper ? node.max : node.min) return *own;
  if (const int link = upper ? node.pMax : node.pMin; link != kNone) {
    requireReadable(link);
    return real(link);
  }
  const int from = source(node);
  return from != kNone && hasLimits(from) ? realLimit(from, upper) : unlimited;
}

int64_t ReferenceEvaluator::integerIncrement(int index) {
  const Node& node = at(index);
  if (isFloatKind(node.kind)) {
    if (!hasRealIncrement(index)) return 1;
    const double rounded = std::round(realIncrement(index));
    return rounded >= -0x1p63 && rounded < 0x1p63 ? std::max<int64_t>(1, static_cast<int64_t>(rounded)) : 1;
  }
  if (node.kind != Kind::Integer) return 1;
  if (node.inc) return static_cast<int64_t>(*node.inc);
  if (node.pInc != kNone) {
    requireReadable(node.pInc);
    return integer(node.pInc);
  }
  const int from = source(node);
  return from == kNone ? 1 : integerIncrement(from);
}

bool ReferenceEvaluator::hasRealIncrement(int index) {
  const Node& node = at(index);
  if (isIntegerKind(node.kind)) return true;
  if (node.kind == Kind::Converter) return node.isLinear && node.slope != Varying && hasRealIncrement(node.value);
  if (node.kind != Kind::Float) return false;
  if (node.inc || node.pInc != kNone) return true;
  const int from = source(node);
  return from != kNone && hasRealIncrement(from);
}

double ReferenceEvaluator::realIncrement(int index) {
  const Node& node = at(index);
  if (!hasRealIncrement(index)) refuse(Why::Runtime);
  if (isIntegerKind(node.kind)) return static_cast<double>(integerIncrement(index));
  if (node.kind == Kind::Converter) {
    return std::fabs(converted(index, realIncrement(node.value)) - converted(index, 0.0));
  }
  if (node.inc) return *node.inc;
  if (node.pInc == kNone) return realIncrement(source(node));
  requireReadable(node.pInc);
  return real(node.pInc);
}

bool ReferenceEvaluator::hasSet(int index) {
  const Node& node = at(index);
  if (!node.set.empty()) return true;
  if (node.kind != Kind::Integer && node.kind != Kind::Float && node.kind != Kind::IntConverter &&
      node.kind != Kind::Converter) {
    return false;
  }
  const int from = source(node);
  return from != kNone && hasSet(from);
}

std::vector<int64_t> ReferenceEvaluator::integerSet(int index, bool bounded) {
  const Node& node = at(index);
  std::vector<int64_t> set;
  if (!hasSet(index)) return set;
  if (isFloatKind(node.kind)) {
    for (const double each : realSet(index, bounded)) set.push_back(fitted(std::round(each)));
    return set;
  }
  set = node.set.empty() ? integerSet(source(node), bounded) : node.set;
  if (node.kind == Kind::IntConverter) {
    for (int64_t& each : set) each = converted(index, each);
  } else if (bounded && !set.empty()) {
    const int64_t low = integerLimit(index, false), high = integerLimit(index, true);
    std::erase_if(set, [&](int64_t each) { return each < low || each > high; });
  }
  return set;
}

std::vector<double> ReferenceEvaluator::realSet(int index, bool bounded) {
  const Node& node = at(index);
  if (isIntegerKind(node.kind)) {
    const std::vector<int64_t> set = integerSet(index, bounded);
    return {set.begin(), set.end()};
  }
  std::vector<double> set;
  if (!hasSet(index)) return set;
  set = realSet(source(node), bounded);
  if (node.kind == Kind::Converter) {
    for (double& each : set) each = converted(index, each);
  } else if (bounded && !set.empty()) {
    const double low = realLimit(index, false), high = realLimit(index, true);
    std::erase_if(set, [&](double each) { return !(each >= low && each <= high); });
  }
  return set;
}

void ReferenceEvaluator::check(int node, int64_t value) {
  const int64_t low = integerLimit(node, false), high = integerLimit(node, true);
  if (value < low || value > high) refuse(Why::Range);
  if (hasSet(node)) {
    const std::vector<int64_t> set = integerSet(node, false);
    if (std::find(set.begin(), set.end(), value) == set.end()) refuse(Why::Range);
    return;
  }
  const int64_t increment = integerIncrement(node);
  if (increment <= 0) refuse(Why::Logical);
  if ((static_cast<Wide>(value) - low) % increment != 0) refuse(Why::Range);
}

void ReferenceEvaluator::check(int node, double value) {
  const double low = realLimit(node, false), high = realLimit(node, true);
  if (!(value >= low && value <= high)) refuse(Why::Range);
}

}  // namespace randomly

#include "nodes/IntegerBase.h"

#include <algorithm>
#include <cmath>

#include "nodes/NumberGrid.h"
#include "text/NumberSyntax.h"

namespace GENAPI_NAMESPACE {

using GENICAM_NAMESPACE::gcstring;

const gcstring IntegerBase::GetUnit() {
  return asking([&] { return gcstring(unit()); });
}

void IntegerBase::writeFloat(double value, bool verify) const {
  const Evaluation::Frame frame(evaluation(), index());
  requireSound();
  const int64_t min = minimum();
  const int64_t max = maximum();
  const bool inside = value >= static_cast<double>(min) && value <= static_cast<double>(max);
  if (value != value || (verify && !inside)) {
    refuse<OutOfRangeException>("{}: value {} must be between Min = {} and Max = {}", path(),
                                text::printFloatExactly(value), min, max);
  }
  if (hasValueSet()) {
    const std::vector<int64_t> values = valueSet(true);
    const auto nearest = std::min_element(values.begin(), values.end(), [&](int64_t a, int64_t b) {
      const auto distance = [&](int64_t each) {
        return std::fabs(static_cast<long double>(value) - static_cast<long double>(each));
      };
      return distance(a) < distance(b);
    });
    if (nearest != values.end()) return writeNumber(*nearest, verify);
  }
  const int64_t increment = computeIncrement();
  if (increment <= 0 || min > max) {
    refuse<LogicalErrorException>("{}: no value is allowed by Min = {}, Max = {} and Inc = {}", path(), min, max,
                                  increment);
  }
  writeNumber(nearestGridPoint(value, min, max, increment), verify);
}

std::string IntegerBase::readText(Reading how) const { return text::printInteger(readNumber(how), representation()); }

void IntegerBase::writeText(std::string_view value, bool verify) const {
  const auto number = text::parseInteger(value, representation());
  if (!number) refuse<InvalidArgumentException>("{}: '{}' is not an integer", path(), shownText(value));
  writeNumber(*number, verify);
}

void IntegerBase::check(int64_t value) const {
  const int64_t min = minimum();
  const int64_t max = maximum();
  if (value > max) refuse<OutOfRangeException>("{}: value {} must be at most Max = {}", path(), value, max);
  if (value < min) refuse<OutOfRangeException>("{}: value {} must be at least Min = {}", path(), value, min);
  if (hasValueSet()) {
    const std::vector<int64_t> values = valueSet(false);
    if (std::find(values.begin(), values.end(), value) != values.end()) return;
    refuse<OutOfRangeException>("{}: value {} is not in the set of valid values", path(), value);
  }
  const int64_t increment = computeIncrement();
  if (increment == 1) return;
  if (increment <= 0) refuse<LogicalErrorException>("{}: increment {} is not above 0", path(), increment);
  // Distances are unsigned: Min may be at the end of its type.
  if ((static_cast<uint64_t>(value) - static_cast<uint64_t>(min)) % static_cast<uint64_t>(increment) != 0)
    refuse<OutOfRangeException>("{}: value {} must be Min {} plus a multiple of Inc {}", path(), value, min, increment);
}

std::vector<double> IntegerBase::floatValueSet(bool bounded) const {
  const std::vector<int64_t> values = valueSet(bounded);
  return {values.begin(), values.end()};
}

}  // namespace GENAPI_NAMESPACE

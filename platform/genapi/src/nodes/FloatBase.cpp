#include "nodes/FloatBase.h"

#include <algorithm>
#include <cmath>

#include "nodes/NumberGrid.h"
#include "text/NumberSyntax.h"

namespace GENAPI_NAMESPACE {

using GENICAM_NAMESPACE::gcstring;

bool FloatBase::HasInc() {
  return asking([&] { return hasFloatIncrement(); });
}
const gcstring FloatBase::GetUnit() const {
  return asking([&] { return gcstring(unit()); });
}
EDisplayNotation FloatBase::GetDisplayNotation() const {
  return asking([&] { return displayNotation(); });
}
int64_t FloatBase::GetDisplayPrecision() const {
  return asking([&] { return displayPrecision(); });
}

int64_t FloatBase::readInteger(Reading how) const {
  const double value = readNumber(how);
  const auto rounded = roundedToInteger(value);
  if (!rounded) refuseCast(value);
  return *rounded;
}

std::string FloatBase::readText(Reading how) const {
  const double value = readNumber(how);
  const EDisplayNotation notation = displayNotation();
  const int64_t precision = displayPrecision();
  std::string printed = text::printFloat(value, notation, precision);
  // Rounded up, the largest numbers print as one that no double holds.
  const auto back = text::parseFloat(printed);
  if (std::isfinite(value) && back != value) {
    try {
      const double min = minimum();
      const double max = maximum();
      printed = text::stepInsideLimits(std::move(printed), value, min, max, notation, precision);
    } catch (const GenericException&) {
      // Limits that cannot be read leave the text as printed.
      printed = text::printFloat(value, notation, precision);
    }
  }
  return printed;
}

void FloatBase::writeText(std::string_view value, bool verify) const {
  const auto number = text::parseFloat(value);
  if (!number || std::isnan(*number))
    refuse<InvalidArgumentException>("{}: '{}' is not a number", path(), shownText(value));
  writeNumber(*number, verify);
}

int64_t FloatBase::integerMin() const {
  const double min = minimum();
  const auto limit = ceiledToInteger(min);
  if (!limit) refuseCast(min);
  return *limit;
}

int64_t FloatBase::integerMax() const {
  const double max = maximum();
  const auto limit = flooredToInteger(max);
  if (!limit) refuseCast(max);
  return *limit;
}

int64_t FloatBase::integerIncrement() const {
  if (!hasIncrement()) return 1;
  const auto rounded = roundedToInteger(computeIncrement());
  return rounded ? std::max<int64_t>(*rounded, 1) : 1;
}

void FloatBase::refuseCast(double value) const {
  refuse<RuntimeException>("{}: {} does not fit a 64-bit integer", path(), text::printFloatExactly(value));
}

void FloatBase::check(double value) const {
  const double min = minimum();
  const double max = maximum();
  if (value >= min && value <= max) return;
  const std::string shown = text::printFloatExactly(value);
  if (value > max)
    refuse<OutOfRangeException>("{}: value {} must be at most Max = {}", path(), shown, text::printFloatExactly(max));
  refuse<OutOfRangeException>("{}: value {} must be at least Min = {}", path(), shown, text::printFloatExactly(min));
}

std::vector<int64_t> FloatBase::integerValueSet(bool bounded) const {
  std::vector<int64_t> values;
  for (const double each : valueSet(bounded))
    if (const auto rounded = roundedToInteger(each)) values.push_back(*rounded);
  return values;
}

}  // namespace GENAPI_NAMESPACE

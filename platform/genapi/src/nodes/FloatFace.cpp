#include "nodes/FloatFace.h"

#include <algorithm>
#include <cmath>

#include "Base/GCException.h"
#include "nodes/KeptLimit.h"
#include "nodes/NumberGrid.h"
#include "text/NumberSyntax.h"

namespace GENAPI_NAMESPACE {

using GENICAM_NAMESPACE::gcstring;

double FloatFace::GetValue(bool Verify, bool IgnoreCache) {
  return reading([&] { return readFloat({.verify = Verify, .ignoreCache = IgnoreCache}); });
}

void FloatFace::SetValue(double Value, bool Verify) {
  writing(Verify, [&] { writeFloat(Value, Verify); });
}

gcstring FloatFace::ToString(bool Verify, bool IgnoreCache) {
  return reading([&] { return readText({.verify = Verify, .ignoreCache = IgnoreCache}); });
}

void FloatFace::FromString(const gcstring& ValueStr, bool Verify) {
  writing(Verify, [&] { writeText(ValueStr.view(), Verify); });
}

bool FloatFace::IsValueCacheValid() const {
  if (isFloating()) return true;
  const AutoLock lock(map().GetLock());
  return !isUncached() && (state().flags & kValid) != 0;
}

double FloatFace::GetMin() {
  return asked([&] { return floatMin(); });
}
double FloatFace::GetMax() {
  return asked([&] { return floatMax(); });
}
bool FloatFace::HasInc() {
  return asked([&] { return hasFloatIncrement(); });
}
double FloatFace::GetInc() {
  return asked([&] { return floatIncrement(); });
}
EIncMode FloatFace::GetIncMode() {
  return asked([&] {
    if (hasValueSet()) return listIncrement;
    return hasFloatIncrement() ? fixedIncrement : noIncrement;
  });
}
const double_autovector_t FloatFace::GetListOfValidValues(bool bounded) {
  return asked([&] { return double_autovector_t(floatValueSet(bounded)); });
}
ERepresentation FloatFace::GetRepresentation() {
  return asked([&] { return representation(); });
}
const gcstring FloatFace::GetUnit() const {
  return asked([&] { return gcstring(const_cast<FloatFace*>(this)->unit()); });
}
EDisplayNotation FloatFace::GetDisplayNotation() const {
  return asked([&] { return const_cast<FloatFace*>(this)->displayNotation(); });
}
int64_t FloatFace::GetDisplayPrecision() const {
  return asked([&] { return const_cast<FloatFace*>(this)->displayPrecision(); });
}

void FloatFace::ImposeMin(double Value) {
  map().operate(this, [&] {
    Imposed& imposed = map().impose(index());
    imposed.hasFloatMin = true;
    imposed.floatMin = Value;
    map().invalidated(index());
  });
}

void FloatFace::ImposeMax(double Value) {
  map().operate(this, [&] {
    Imposed& imposed = map().impose(index());
    imposed.hasFloatMax = true;
    imposed.floatMax = Value;
    map().invalidated(index());
  });
}

double FloatFace::readFloat(Reading how) {
  NodeState& mine = state();
  if ((mine.flags & kHasValue) && !how.ignoreCache) {
    if (EvaluationStep* asking = map().evaluation()) asking->noteConsumption();
    const double value = value_;
    if (how.verify) check(value);
    return value;
  }
  EvaluationStep step(map(), *this);
  const double value = fetch(how);
  if (!isUncached() && step.isUnspoiled()) {
    value_ = value;
    mine.flags |= kHasValue | kValid;
  }
  if (how.verify) check(value);
  return value;
}

int64_t FloatFace::readInteger(Reading how) {
  const double value = readFloat(how);
  const auto rounded = roundedToInteger(value);
  if (!rounded) refuseCast(value);
  return *rounded;
}

void FloatFace::writeFloat(double value, bool verify) {
  const EvaluationStep step(map(), *this);
  if (verify) check(value);
  store(value, verify);
  completeWrite();
  if (verify) checkErrors();
}

gcstring FloatFace::readText(Reading how) {
  const double value = readFloat(how);
  const EDisplayNotation notation = displayNotation();
  const int64_t precision = displayPrecision();
  std::string printed = text::printFloat(value, notation, precision);
  // Rounded up, the largest numbers print as one that no double holds.
  const auto back = text::parseFloat(printed);
  if (std::isfinite(value) && back != value) {
    try {
      const double min = floatMin();
      const double max = floatMax();
      printed = text::stepInsideLimits(std::move(printed), value, min, max, notation, precision);
    } catch (const GENICAM_NAMESPACE::GenericException&) {
      // Limits that cannot be read leave the text as printed.
      printed = text::printFloat(value, notation, precision);
    }
  }
  return gcstring(std::move(printed));
}

void FloatFace::writeText(std::string_view value, bool verify) {
  const auto number = text::parseFloat(value);
  if (!number || std::isnan(*number)) {
    throw INVALID_ARGUMENT_EXCEPTION("%s: '%s' is not a number", map().pathTo(*this).c_str(), shownText(value).c_str());
  }
  writeFloat(*number, verify);
}

double FloatFace::floatMin() {
  return keptLimit(*this, kHasMin, min_, NodeBase::floatMin(), [&] {
    const double own = fetchMin();
    const Imposed* imposed = map().imposed(index());
    return imposed && imposed->hasFloatMin ? std::max(own, imposed->floatMin) : own;
  });
}

double FloatFace::floatMax() {
  return keptLimit(*this, kHasMax, max_, NodeBase::floatMax(), [&] {
    const double own = fetchMax();
    const Imposed* imposed = map().imposed(index());
    return imposed && imposed->hasFloatMax ? std::min(own, imposed->floatMax) : own;
  });
}

int64_t FloatFace::integerMin() {
  const double min = floatMin();
  const auto limit = ceiledToInteger(min);
  if (!limit) refuseCast(min);
  return *limit;
}

int64_t FloatFace::integerMax() {
  const double max = floatMax();
  const auto limit = flooredToInteger(max);
  if (!limit) refuseCast(max);
  return *limit;
}

int64_t FloatFace::integerIncrement() {
  if (!hasFloatIncrement()) return 1;
  const auto rounded = roundedToInteger(floatIncrement());
  return rounded ? std::max<int64_t>(*rounded, 1) : 1;
}

void FloatFace::refuseCast(double value) {
  throw RUNTIME_EXCEPTION("%s: %s does not fit a 64-bit integer", map().pathTo(*this).c_str(),
                          text::printFloatExactly(value).c_str());
}

void FloatFace::check(double value) {
  const double min = floatMin();
  const double max = floatMax();
  if (value >= min && value <= max) return;
  const std::string path = map().pathTo(*this);
  const std::string shown = text::printFloatExactly(value);
  if (value > max) {
    throw OUT_OF_RANGE_EXCEPTION("%s: value %s must be at most Max = %s", path.c_str(), shown.c_str(),
                                 text::printFloatExactly(max).c_str());
  }
  throw OUT_OF_RANGE_EXCEPTION("%s: value %s must be at least Min = %s", path.c_str(), shown.c_str(),
                               text::printFloatExactly(min).c_str());
}

std::vector<double> FloatFace::withinLimits(std::vector<double> values) {
  const double min = floatMin();
  const double max = floatMax();
  std::erase_if(values, [&](double each) { return !(each >= min && each <= max); });
  return values;
}

std::vector<int64_t> FloatFace::integerValueSet(bool bounded) {
  std::vector<int64_t> values;
  for (const double each : floatValueSet(bounded)) {
    if (const auto rounded = roundedToInteger(each)) values.push_back(*rounded);
  }
  return values;
}

}  // namespace GENAPI_NAMESPACE

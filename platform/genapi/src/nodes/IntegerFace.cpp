#include "nodes/IntegerFace.h"

#include <algorithm>

#include "Base/GCException.h"
#include "nodes/KeptLimit.h"
#include "nodes/NumberGrid.h"
#include "text/NumberSyntax.h"

namespace GENAPI_NAMESPACE {

using GENICAM_NAMESPACE::gcstring;

int64_t IntegerFace::GetValue(bool Verify, bool IgnoreCache) {
  return reading([&] { return readInteger({.verify = Verify, .ignoreCache = IgnoreCache}); });
}

void IntegerFace::SetValue(int64_t Value, bool Verify) {
  writing(Verify, [&] { writeInteger(Value, Verify); });
}

gcstring IntegerFace::ToString(bool Verify, bool IgnoreCache) {
  return reading([&] { return readText({.verify = Verify, .ignoreCache = IgnoreCache}); });
}

void IntegerFace::FromString(const gcstring& ValueStr, bool Verify) {
  writing(Verify, [&] { writeText(ValueStr.view(), Verify); });
}

bool IntegerFace::IsValueCacheValid() const {
  if (isFloating()) return true;
  const AutoLock lock(map().GetLock());
  return !isUncached() && (state().flags & kValid) != 0;
}

int64_t IntegerFace::GetMin() {
  return asked([&] { return integerMin(); });
}
int64_t IntegerFace::GetMax() {
  return asked([&] { return integerMax(); });
}
int64_t IntegerFace::GetInc() {
  return asked([&] { return integerIncrement(); });
}
EIncMode IntegerFace::GetIncMode() {
  return asked([&] { return hasValueSet() ? listIncrement : fixedIncrement; });
}
const int64_autovector_t IntegerFace::GetListOfValidValues(bool bounded) {
  return asked([&] { return int64_autovector_t(integerValueSet(bounded)); });
}
ERepresentation IntegerFace::GetRepresentation() {
  return asked([&] { return representation(); });
}
const gcstring IntegerFace::GetUnit() {
  return asked([&] { return gcstring(unit()); });
}

void IntegerFace::ImposeMin(int64_t Value) {
  map().operate(this, [&] {
    Imposed& imposed = map().impose(index());
    imposed.hasIntegerMin = true;
    imposed.integerMin = Value;
    map().invalidated(index());
  });
}

void IntegerFace::ImposeMax(int64_t Value) {
  map().operate(this, [&] {
    Imposed& imposed = map().impose(index());
    imposed.hasIntegerMax = true;
    imposed.integerMax = Value;
    map().invalidated(index());
  });
}

int64_t IntegerFace::readInteger(Reading how) {
  NodeState& mine = state();
  if ((mine.flags & kHasValue) && !how.ignoreCache) {
    if (EvaluationStep* asking = map().evaluation()) asking->noteConsumption();
    const int64_t value = value_;
    if (how.verify) check(value);
    return value;
  }
  EvaluationStep step(map(), *this);
  const int64_t value = fetch(how);
  if (!isUncached() && step.isUnspoiled()) {
    value_ = value;
    mine.flags |= kHasValue | kValid;
  }
  if (how.verify) check(value);
  return value;
}

void IntegerFace::writeInteger(int64_t value, bool verify) {
  const EvaluationStep step(map(), *this);
  if (verify) check(value);
  store(value, verify);
  completeWrite();
  if (verify) checkErrors();
}

void IntegerFace::writeFloat(double value, bool verify) {
  const EvaluationStep step(map(), *this);
  const int64_t min = integerMin();
  const int64_t max = integerMax();
  const bool inside = value >= static_cast<double>(min) && value <= static_cast<double>(max);
  if (value != value || (verify && !inside)) {
    throw OUT_OF_RANGE_EXCEPTION("%s: value %s must be between Min = %ld and Max = %ld", map().pathTo(*this).c_str(),
                                 text::printFloatExactly(value).c_str(), static_cast<long>(min),
                                 static_cast<long>(max));
  }
  if (hasValueSet()) {
    const std::vector<int64_t> values = integerValueSet(true);
    const auto nearest = std::min_element(values.begin(), values.end(), [&](int64_t a, int64_t b) {
      const auto distance = [&](int64_t each) {
        const long double difference = static_cast<long double>(value) - static_cast<long double>(each);
        return difference < 0 ? -difference : difference;
      };
      return distance(a) < distance(b);
    });
    if (nearest != values.end()) return writeInteger(*nearest, verify);
  }
  const int64_t increment = integerIncrement();
  if (increment <= 0 || min > max) {
    throw LOGICAL_ERROR_EXCEPTION("%s: no value is allowed by Min = %ld, Max = %ld and Inc = %ld",
                                  map().pathTo(*this).c_str(), static_cast<long>(min), static_cast<long>(max),
                                  static_cast<long>(increment));
  }
  writeInteger(nearestGridPoint(value, min, max, increment), verify);
}

gcstring IntegerFace::readText(Reading how) {
  return gcstring(text::printInteger(readInteger(how), representation()));
}

void IntegerFace::writeText(std::string_view value, bool verify) {
  const auto number = text::parseInteger(value, representation());
  if (!number) {
    throw INVALID_ARGUMENT_EXCEPTION("%s: '%s' is not an integer", map().pathTo(*this).c_str(),
                                     shownText(value).c_str());
  }
  writeInteger(*number, verify);
}

int64_t IntegerFace::integerMin() {
  return keptLimit(*this, kHasMin, min_, NodeBase::integerMin(), [&] {
    const int64_t own = fetchMin();
    const Imposed* imposed = map().imposed(index());
    return imposed && imposed->hasIntegerMin ? std::max(own, imposed->integerMin) : own;
  });
}

int64_t IntegerFace::integerMax() {
  return keptLimit(*this, kHasMax, max_, NodeBase::integerMax(), [&] {
    const int64_t own = fetchMax();
    const Imposed* imposed = map().imposed(index());
    return imposed && imposed->hasIntegerMax ? std::min(own, imposed->integerMax) : own;
  });
}

void IntegerFace::check(int64_t value) {
  const int64_t min = integerMin();
  const int64_t max = integerMax();
  const auto shown = static_cast<long>(value);
  if (value > max) {
    throw OUT_OF_RANGE_EXCEPTION("%s: value %ld must be at most Max = %ld", map().pathTo(*this).c_str(), shown,
                                 static_cast<long>(max));
  }
  if (value < min) {
    throw OUT_OF_RANGE_EXCEPTION("%s: value %ld must be at least Min = %ld", map().pathTo(*this).c_str(), shown,
                                 static_cast<long>(min));
  }
  if (hasValueSet()) {
    const std::vector<int64_t> values = integerValueSet(false);
    if (std::find(values.begin(), values.end(), value) != values.end()) return;
    throw OUT_OF_RANGE_EXCEPTION("%s: value %ld is not in the set of valid values", map().pathTo(*this).c_str(), shown);
  }
  const int64_t increment = integerIncrement();
  if (increment == 1) return;
  if (increment <= 0) {
    throw LOGICAL_ERROR_EXCEPTION("%s: increment %ld is not above 0", map().pathTo(*this).c_str(),
                                  static_cast<long>(increment));
  }
  if ((static_cast<uint64_t>(value) - static_cast<uint64_t>(min)) % static_cast<uint64_t>(increment) != 0) {
    throw OUT_OF_RANGE_EXCEPTION("%s: value %ld must be Min %ld plus a multiple of Inc %ld",
                                 map().pathTo(*this).c_str(), shown, static_cast<long>(min),
                                 static_cast<long>(increment));
  }
}

std::vector<int64_t> IntegerFace::withinLimits(std::vector<int64_t> values) {
  const int64_t min = integerMin();
  const int64_t max = integerMax();
  std::erase_if(values, [&](int64_t each) { return each < min || each > max; });
  return values;
}

std::vector<double> IntegerFace::floatValueSet(bool bounded) {
  const std::vector<int64_t> values = integerValueSet(bounded);
  return {values.begin(), values.end()};
}

}  // namespace GENAPI_NAMESPACE

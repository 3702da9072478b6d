// Moving numbers between integers and floats: rounding, limits, and the grid of values that an increment allows.
#pragma once
#include <cstdint>
#include <optional>

#include "Base/GCTypes.h"

namespace GENAPI_NAMESPACE {

// Half away from zero; nothing when the result does not fit (NaN included).
std::optional<int64_t> roundedToInteger(double value);
// The smallest integer not below, the largest not above; nothing when it does not fit.
std::optional<int64_t> ceiledToInteger(double value);
std::optional<int64_t> flooredToInteger(double value);

// The point of min, min + inc, min + 2 inc .. max that lies nearest to the value; a tie goes away from zero. Needs
// inc >= 1, min <= max and a value that is no NaN.
int64_t nearestGridPoint(double value, int64_t min, int64_t max, int64_t inc);

}  // namespace GENAPI_NAMESPACE

// How nodes are named inside the engine: their number in description order.
#pragma once
#include <cstdint>

#include "Base/GCTypes.h"

namespace GENAPI_NAMESPACE {

using NodeIndex = uint32_t;
inline constexpr NodeIndex kNoNode = ~NodeIndex{0};

}  // namespace GENAPI_NAMESPACE

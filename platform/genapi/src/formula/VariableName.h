// Names of variables: "GAIN" stands for a node's value, "GAIN.Max" for something else that can be asked of the node.
#pragma once

#include "Base/GCTypes.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace GENAPI_NAMESPACE::formula {

enum class Aspect : uint8_t { Value, Min, Max, Increment, AccessMode, Visibility, CachingMode, Entry };

struct VariableAspect {
  Aspect aspect = Aspect::Value;
  std::string_view entry{};  // of Aspect::Entry: "GAIN.Entry.High" asks for the value of High
};

// Nothing for an unknown suffix.
std::optional<VariableAspect> aspectOf(std::string_view variable, bool foldCase) noexcept;

}  // namespace GENAPI_NAMESPACE::formula

// Which features change, or may change, when a node does.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tool {

// The features whose value, limits or availability depend on the node or on what a write to it writes, directly or
// through others, in the order of the description. Categories, which only list features, are left out. Throws
// GENICAM_NAMESPACE::GenericException for a description that does not load.
std::vector<std::string> dependentFeatures(std::string_view description, const std::string& name);

}  // namespace tool

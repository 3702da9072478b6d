// Which features change, or may change, when a node does.
#pragma once

#include <GenApi/INodeMap.h>

#include <string>
#include <vector>

namespace tool {

// The features whose value, limits or availability depend on the node or on what a write to it writes, directly or
// through others, in the order of the description. Categories, which only list features, are left out.
std::vector<std::string> dependentFeatures(GENAPI_NAMESPACE::INodeMap& description, const std::string& name);

}  // namespace tool

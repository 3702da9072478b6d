// What a description says about its nodes, gathered for people who look features up.
#pragma once

#include <GenApi/INodeMap.h>

#include "Output.h"

namespace tool {

// {"vendor", "model", "version", "nodes": {NAME: {...}}}, one member for every node: its "type" (the element), "kind"
// (integer, float, ..., or node) and "links" ([element, target] pairs), the texts, limits and entries that it has
// (name, value, text, and the features that decide whether it is there), and for a category its "features". Members
// without a value are left out.
Json featureReference(GENAPI_NAMESPACE::INodeMap& map);

}  // namespace tool

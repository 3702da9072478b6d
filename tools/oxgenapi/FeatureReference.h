// What a description says about its nodes, gathered for people who look features up.
#pragma once

#include <string>

#include "Output.h"

namespace tool {

// {"vendor", "model", "version", "nodes": {NAME: {...}}}, one member for every node: its "type" (the element), "kind"
// (integer, float, ..., or node) and "links" ([element, target] pairs), the texts, limits and entries that it has, and
// for a category its "features". Members without a value are left out. Loads no device. Throws
// GENICAM_NAMESPACE::GenericException for a description that does not load.
Json featureReference(const std::string& path);

}  // namespace tool

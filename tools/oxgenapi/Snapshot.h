// Snapshots: features and their values of one moment, as the JSON array that a node map stream gives.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "Failure.h"
#include "NodeMap.h"
#include "Settings.h"

namespace tool {

// Records the features in their order. What cannot be recorded is reported and left out.
std::string snapshotText(const NodeMap& map, const std::vector<std::string>& features,
                         const std::function<void(const Failure&)>& problem);

// Whether a text is a snapshot; no line of a settings text begins like one.
bool isSnapshot(std::string_view text);

// One setting per record, the feature's name being its key. Throws Failure for a text that is no snapshot.
std::vector<Setting> parseSnapshot(std::string_view text);

}  // namespace tool

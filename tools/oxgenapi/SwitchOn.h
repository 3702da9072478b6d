// Switching on what stands behind a selector, such as the notification of each event.
#pragma once

#include <string>
#include <vector>

#include "NodeMap.h"

namespace tool {

struct Switch {
  const char* selector;
  const char* feature;
  const char* on;  // the feature's value
};

// Switches on what these entries of the selector select. Without entries: all that can be switched on, unless one of
// them is on already; the selector then stands where it stood.
void switchOn(const NodeMap& map, const Switch& which, const std::vector<std::string>& entries);

}  // namespace tool

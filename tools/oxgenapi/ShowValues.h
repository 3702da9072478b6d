// The values of a group of nodes below a heading, as events and images bring them.
#pragma once

#include <vector>

#include "Session.h"

namespace tool {

// One indented line each in text output; in JSON output nothing is printed. Returns name and value, or name and error,
// of each. Nodes that are not readable are left out.
Json showValues(Session& session, const std::vector<const Node*>& nodes);

}  // namespace tool

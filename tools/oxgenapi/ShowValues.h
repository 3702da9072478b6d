// The values of a group of nodes, as events and images bring them. Nodes that are not readable are left out.
#pragma once

#include <vector>

#include "Session.h"

namespace tool {

// Name and value of each as members of one object; what fails is reported and stands there as {"error": ...}.
Json valuesJson(Session& session, const std::vector<const Node*>& nodes);

// One indented line each.
void showValues(Session& session, const std::vector<const Node*>& nodes);

}  // namespace tool

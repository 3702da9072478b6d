// Which event of a description is which: its number, its name, the features that it fills.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "Session.h"

namespace tool {

struct EventFacts {
  std::string name;  // the entry of EventSelector; empty where the features' names do not tell
  std::vector<std::string> features;
};

// By event ID, hexadecimal digits as the description writes them. Throws Failure.
std::map<std::string, EventFacts> eventIndex(Session& session);

}  // namespace tool

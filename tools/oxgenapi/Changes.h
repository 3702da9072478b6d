// Notes which nodes of a map have changed, as the library reports it.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "NodeMap.h"

namespace tool {

class Changes {
 public:
  // Follows the named nodes. Throws Failure for a name that the map does not have.
  Changes(const NodeMap& map, const std::vector<std::string>& names);

  // The nodes that have changed since the last call, in the order in which they were named. They belong to this object.
  std::vector<const Node*> take();

 private:
  struct Followed {
    Node node;
    bool changed = false;
    std::optional<oxgenapi::UpdateRegistration> updates;  // ends before what it marks
  };
  std::vector<std::unique_ptr<Followed>> followed_;  // each keeps its address: its updates mark it
};

// The names of all features that have a value.
std::vector<std::string> valueFeatures(const NodeMap& map);

}  // namespace tool

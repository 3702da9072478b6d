// Which features change, or may change, when a node does.
#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include "NodeMap.h"

namespace tool {

class Dependents {
 public:
  // Asks every node of the map what it reads. The map must outlive this object.
  explicit Dependents(const NodeMap& map);

  // The features that take their value or their limits from the node, directly or through others.
  std::vector<std::string> of(const std::string& name) const;

 private:
  const NodeMap& map_;
  std::unordered_map<std::string, std::vector<std::string>> readers_;  // by the node that is read
};

}  // namespace tool

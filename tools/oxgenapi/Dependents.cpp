#include "Dependents.h"

#include <deque>
#include <unordered_set>

#include "Failure.h"

namespace tool {

Dependents::Dependents(const NodeMap& map) : map_(map) {
  for (const std::string& name : map.nodeNames()) {
    try {
      const Node node = map.node(name);
      if (node.type() == NT_Category) {
        continue;  // a category lists its features, it does not depend on them
      }
      for (const std::string& child : node.list(NL_Children)) {
        readers_[child].push_back(name);
      }
    } catch (const Failure&) {
      continue;  // a node without a handle of its own depends on nothing that could be shown
    }
  }
}

std::vector<std::string> Dependents::of(const std::string& name) const {
  std::vector<std::string> features;
  std::unordered_set<std::string> seen{name};
  std::deque<std::string> open{name};
  while (!open.empty()) {
    const auto found = readers_.find(open.front());
    open.pop_front();
    if (found == readers_.end()) {
      continue;
    }
    for (const std::string& reader : found->second) {
      if (!seen.insert(reader).second) {
        continue;
      }
      open.push_back(reader);
      if (map_.node(reader).infoBoolean(NI_IsFeature)) {
        features.push_back(reader);
      }
    }
  }
  return features;
}

}  // namespace tool

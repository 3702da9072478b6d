#include "Changes.h"

#include <utility>

#include "Failure.h"
#include "Value.h"

namespace tool {

Changes::Changes(const NodeMap& map, const std::vector<std::string>& names) {
  followed_.reserve(names.size());
  for (const std::string& name : names) {
    Followed& item = *followed_.emplace_back(std::make_unique<Followed>());
    item.node = map.node(name);
    // Only a mark: reading here, in the middle of the change, could see half of it.
    item.updates = item.node.onUpdate([&item](const Node&) { item.changed = true; });
  }
}

std::vector<const Node*> Changes::take() {
  std::vector<const Node*> nodes;
  for (const auto& item : followed_)
    if (std::exchange(item->changed, false)) nodes.push_back(&item->node);
  return nodes;
}

std::vector<std::string> valueFeatures(const NodeMap& map) {
  std::vector<std::string> names;
  for (const std::string& name : map.nodeNames()) {
    try {
      const Node node = map.node(name);
      if (hasValue(node.type()) && node.type() != NT_EnumEntry && node.infoBoolean(NI_IsFeature)) names.push_back(name);
    } catch (const Failure&) {
      continue;  // a node without a handle is no feature
    }
  }
  return names;
}

}  // namespace tool

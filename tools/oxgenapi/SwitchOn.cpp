#include "SwitchOn.h"

namespace tool {
namespace {

// Empty when one is on.
std::vector<std::string> entriesToSwitch(const NodeMap& map, const Switch& which) {
  const Node selector = map.node(which.selector);
  const Node feature = map.node(which.feature);
  std::vector<std::string> found;
  for (const std::string& name : selector.list(NL_EnumEntries)) {
    const Node entry = map.node(name);
    if (!entry.readable()) {
      continue;
    }
    selector.set(entry.text());
    if (!feature.writable()) {
      continue;
    }
    if (feature.readable() && feature.text() == which.on) {
      return {};
    }
    found.push_back(entry.text());
  }
  return found;
}

}  // namespace

void switchOn(const NodeMap& map, const Switch& which, const std::vector<std::string>& entries) {
  const Node selector = map.node(which.selector);
  const std::string before = selector.text();
  for (const std::string& entry : entries.empty() ? entriesToSwitch(map, which) : entries) {
    selector.set(entry);
    map.node(which.feature).set(which.on);
  }
  if (entries.empty()) {
    selector.set(before);
  }
}

}  // namespace tool

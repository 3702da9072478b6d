#include "nodes/PlainNodes.h"

#include <algorithm>

namespace GENAPI_NAMESPACE {

using GENICAM_NAMESPACE::gcstring;

void PlainNode::FromString(const gcstring&, bool) {
  refuse<AccessException>("{}: not writable: a plain node has no value", name());
}

gcstring CategoryNode::ToString(bool, bool) { return GetName(true); }

void CategoryNode::FromString(const gcstring&, bool) {
  refuse<AccessException>("{}: not writable: a category has no value", name());
}

void CategoryNode::GetFeatures(FeatureList_t& Features) const {
  const std::vector<NodeIndex> children = related(ctReadingChildren);
  Features.clear();
  Features.reserve(children.size());
  for (const NodeIndex each : children)
    if (auto* value = dynamic_cast<IValue*>(&other(each))) Features.push_back(value);
}

// The most visible of everything below; categories on the way count by what they hold and by what was imposed on them.
EVisibility CategoryNode::GetVisibility() const {
  const AutoLock lock(device().dispatch.lock());
  EVisibility best = Invisible;
  struct Waiting {
    NodeIndex category;
    EVisibility limit;  // imposed on the way down
  };
  std::vector<Waiting> waiting{{index(), Beginner}};
  std::vector<uint8_t> visited(description().nodeCount(), Invisible);  // the limit with which each was looked into
  while (!waiting.empty()) {
    const NodeIndex current = waiting.back().category;
    const Imposed* imposed = device().imposed(current);
    const EVisibility limit = Combine(waiting.back().limit, imposed ? imposed->visibility : Beginner);
    waiting.pop_back();
    if (limit >= best || limit >= visited[current]) continue;  // nothing more visible can come from here
    visited[current] = static_cast<uint8_t>(limit);
    for (const Property& each : description().properties(current)) {
      if (each.element != Element::pFeature) continue;
      if (description().node(each.target).type == NodeType::Category)
        waiting.push_back({each.target, limit});
      else
        best = std::min(best, Combine(limit, other(each.target).GetVisibility()));
    }
  }
  return best;
}

EAccessMode CategoryNode::combinedMode() const {
  if (const Imposed* imposed = device().imposed(index()); imposed && imposed->accessMode == NI) return NI;
  if (const NodeBase* guard = linked(Element::pIsImplemented)) {
    if (IsReadable(guard->accessMode()) && !guard->readTruth()) return NI;
  }
  bool any = false;
  for (const Property& each : properties()) {
    if (each.element != Element::pFeature) continue;
    any = true;
    if (other(each.target).accessMode() != NI) return RO;
  }
  return any ? NI : RO;
}

}  // namespace GENAPI_NAMESPACE

#include "nodes/PlainNodes.h"

#include <algorithm>

#include "Base/GCException.h"

namespace GENAPI_NAMESPACE {

using GENICAM_NAMESPACE::gcstring;

gcstring PlainNode::ToString(bool, bool) {
  return reading([] { return gcstring(); });
}

void PlainNode::FromString(const gcstring&, bool) {
  throw ACCESS_EXCEPTION("%s: not writable: a plain node has no value", zeroTerminated(name()).c_str());
}

gcstring CategoryNode::ToString(bool, bool) {
  return GetName(true);
}

void CategoryNode::FromString(const gcstring&, bool) {
  throw ACCESS_EXCEPTION("%s: not writable: a category has no value", zeroTerminated(name()).c_str());
}

void CategoryNode::GetFeatures(FeatureList_t& Features) const {
  const std::vector<NodeIndex> children = related(ctReadingChildren);
  Features.clear();
  Features.reserve(children.size());
  for (const NodeIndex each : children) {
    if (auto* value = dynamic_cast<IValue*>(&map().node(each))) Features.push_back(value);
  }
}

// The most visible of everything below; categories on the way count by what they hold and by what was imposed on them.
EVisibility CategoryNode::GetVisibility() const {
  const AutoLock lock(map().GetLock());
  const Description& description = map().description();
  EVisibility best = Invisible;
  struct Waiting {
    NodeIndex category;
    EVisibility limit;  // imposed on the way down
  };
  std::vector<Waiting> waiting{{index(), Beginner}};
  std::vector<uint8_t> visited(description.nodeCount(), Invisible);  // the limit with which each was looked into
  while (!waiting.empty()) {
    const NodeIndex current = waiting.back().category;
    const Imposed* imposed = map().imposed(current);
    const EVisibility limit = Combine(waiting.back().limit, imposed ? imposed->visibility : Beginner);
    waiting.pop_back();
    if (limit >= best || limit >= visited[current]) continue;  // nothing more visible can come from here
    visited[current] = static_cast<uint8_t>(limit);
    for (const Property& each : description.properties(current)) {
      if (each.element != Element::pFeature) continue;
      if (description.node(each.target).type == NodeType::Category) {
        waiting.push_back({each.target, limit});
      } else {
        best = std::min(best, Combine(limit, map().node(each.target).GetVisibility()));
      }
    }
  }
  return best;
}

EAccessMode CategoryNode::combinedMode() {
  if (modeEpoch_ == map().categoryEpoch()) return mode_;
  const uint32_t epoch = map().categoryEpoch();
  const EAccessMode mode = computedMode();
  if (epoch == map().categoryEpoch()) {
    mode_ = mode;
    modeEpoch_ = epoch;
  }
  return mode;
}

EAccessMode CategoryNode::computedMode() {
  if (const Imposed* imposed = map().imposed(index()); imposed && imposed->accessMode == NI) return NI;
  if (NodeBase* guard = linked(Element::pIsImplemented)) {
    if (IsReadable(guard->accessMode()) && !guard->readTruth()) return NI;
  }
  bool any = false;
  for (const Property& each : properties()) {
    if (each.element != Element::pFeature) continue;
    any = true;
    if (map().node(each.target).accessMode() != NI) return RO;
  }
  return any ? NI : RO;
}

}  // namespace GENAPI_NAMESPACE

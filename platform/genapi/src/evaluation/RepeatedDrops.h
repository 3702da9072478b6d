// Selectors are written again and again, and few of their many dependents remember anything between two writes. For
// the last written nodes with many dependents ("hubs") this notes which nodes have begun to remember something since;
// only those need dropping. Plain bookkeeping: Evaluation has the rules. Before the first such write nothing is noted.
#pragma once
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "description/NodeIndex.h"

namespace GENAPI_NAMESPACE {

class RepeatedDrops {
 public:
  static constexpr size_t kManyDependents = 64;  // fewer are dropped faster than looked for

  struct Hub {
    NodeIndex node;
    uint64_t revision;  // of the last drop of its dependents
    size_t seen;        // length of the log then
  };

  explicit RepeatedDrops(size_t nodeCount) : longestLog_(kManyDependents + nodeCount / 8) {}

  bool isNoting() const { return !hubs_.empty(); }
  // Whether there is room for another note, and for one more hub; otherwise forget() first.
  bool hasRoom() const { return log_.size() < longestLog_; }
  bool hasRoomFor(NodeIndex hub) const {
    return hubs_.size() < kHubs ||
           std::any_of(hubs_.begin(), hubs_.end(), [hub](const Hub& each) { return each.node == hub; });
  }
  // The node has begun to remember something. Once between two drops of it is enough.
  void note(NodeIndex node) { log_.push_back(node); }
  // Call it before all dependents of the node are dropped, as of that revision. Returns the nodes that have begun to
  // remember since the last such drop, in no order, maybe repeated; nullopt when that is not known.
  std::optional<std::span<const NodeIndex>> beginDrop(NodeIndex node, uint64_t revision);
  std::span<const Hub> hubs() const { return hubs_; }
  void forget() {
    log_.clear();
    hubs_.clear();
  }

 private:
  static constexpr size_t kHubs = 8;  // known at a time

  const size_t longestLog_;
  std::vector<NodeIndex> log_;
  std::vector<Hub> hubs_;
};

}  // namespace GENAPI_NAMESPACE

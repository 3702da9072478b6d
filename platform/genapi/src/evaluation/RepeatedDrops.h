// Selectors are written again and again, and between two writes few of their many dependents remember anything. For
// the nodes with many dependents that were written last, this knows who has begun to remember since; nobody else has to
// be dropped. Plain bookkeeping; Evaluation has the rules. Nothing is noted before the first such write.
#pragma once
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
  // No room for another note, or another hub: forget all.
  bool isFull() const { return log_.size() == longestLog_ || hubs_.size() == kHubs; }
  // The node has begun to remember something. Once between two drops of it is enough.
  void note(NodeIndex node) { log_.push_back(node); }
  // All dependents of the node are about to be dropped, as of that revision. Who has begun to remember since that
  // happened last, in no order, maybe repeated; nothing when that is not known.
  std::optional<std::span<const NodeIndex>> beginDrop(NodeIndex node, uint64_t revision);
  std::span<const Hub> hubs() const { return hubs_; }
  void forget() {
    log_.clear();
    hubs_.clear();
  }

 private:
  static constexpr size_t kHubs = 8;  // told apart at once

  const size_t longestLog_;
  std::vector<NodeIndex> log_;
  std::vector<Hub> hubs_;
};

}  // namespace GENAPI_NAMESPACE

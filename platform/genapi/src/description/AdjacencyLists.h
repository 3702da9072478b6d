// For every node a short list of others, all lists in one array.
#pragma once
#include <algorithm>
#include <span>
#include <utility>
#include <vector>

#include "description/NodeIndex.h"

namespace GENAPI_NAMESPACE {

class AdjacencyLists {
 public:
  // `forEachPair(visit)` calls visit(from, to) for every pair; it runs twice and must do the same both times. Lists
  // come out sorted, each node once.
  template <class ForEachPair>
  AdjacencyLists(size_t nodes, ForEachPair&& forEachPair) : starts_(nodes + 1, 0) {
    forEachPair([&](NodeIndex from, NodeIndex) { ++starts_[from + 1]; });
    for (size_t i = 0; i < nodes; ++i) starts_[i + 1] += starts_[i];
    targets_.resize(starts_[nodes]);
    std::vector<uint32_t> next(starts_.begin(), starts_.end() - 1);
    forEachPair([&](NodeIndex from, NodeIndex to) { targets_[next[from]++] = to; });
    removeDoubles();
  }

  std::span<const NodeIndex> of(NodeIndex node) const {
    return {targets_.data() + starts_[node], starts_[node + 1] - starts_[node]};
  }

 private:
  void removeDoubles() {
    uint32_t kept = 0;
    for (size_t node = 0; node + 1 < starts_.size(); ++node) {
      const auto first = targets_.begin() + starts_[node];
      const auto last = targets_.begin() + starts_[node + 1];
      starts_[node] = kept;
      if (!std::is_sorted(first, last)) std::sort(first, last);
      const auto end = std::unique(first, last);
      std::copy(first, end, targets_.begin() + kept);
      kept += static_cast<uint32_t>(end - first);
    }
    starts_.back() = kept;
    targets_.resize(kept);
  }

  std::vector<uint32_t> starts_;
  std::vector<NodeIndex> targets_;
};

}  // namespace GENAPI_NAMESPACE

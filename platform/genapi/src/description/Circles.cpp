#include "description/Circles.h"

#include <algorithm>

namespace GENAPI_NAMESPACE {

namespace {

// Strongly connected components by Tarjan's algorithm, with a stack of its own.
class ComponentSearch {
 public:
  ComponentSearch(const AdjacencyLists& edges, std::vector<bool>& onCircle)
      : edges_(edges), onCircle_(onCircle), number_(onCircle.size()), lowest_(onCircle.size()) {}

  void from(NodeIndex start) {
    if (number_[start] != 0) return;
    open(start);
    while (!walk_.empty()) {
      Step& step = walk_.back();
      const std::span<const NodeIndex> targets = edges_.of(step.node);
      if (step.next == targets.size()) {
        close();
        continue;
      }
      const NodeIndex target = targets[step.next++];
      if (target == step.node) onCircle_[target] = true;
      if (number_[target] == 0)
        open(target);
      else
        lowest_[step.node] = std::min(lowest_[step.node], number_[target]);
    }
  }

 private:
  struct Step {
    NodeIndex node;
    size_t next;
  };
  static constexpr uint32_t kDone = ~uint32_t{0};

  void open(NodeIndex node) {
    number_[node] = lowest_[node] = ++count_;
    walk_.push_back({node, 0});
    component_.push_back(node);
  }

  void close() {
    const NodeIndex node = walk_.back().node;
    const bool isRoot = lowest_[node] == number_[node];
    walk_.pop_back();
    if (!walk_.empty()) {
      uint32_t& above = lowest_[walk_.back().node];
      above = std::min(above, lowest_[node]);
    }
    if (!isRoot) return;
    const bool isCircle = component_.back() != node;
    for (NodeIndex each = kNoNode; each != node;) {
      each = component_.back();
      component_.pop_back();
      number_[each] = kDone;
      if (isCircle) onCircle_[each] = true;
    }
  }

  const AdjacencyLists& edges_;
  std::vector<bool>& onCircle_;
  std::vector<uint32_t> number_, lowest_;  // in order of discovery, from 1
  std::vector<Step> walk_;
  std::vector<NodeIndex> component_;
  uint32_t count_ = 0;
};

}  // namespace

Circles::Circles(const AdjacencyLists& edges, size_t nodes) : onCircle_(nodes) {
  ComponentSearch search(edges, onCircle_);
  for (NodeIndex node = 0; node < nodes; ++node) search.from(node);
}

}  // namespace GENAPI_NAMESPACE

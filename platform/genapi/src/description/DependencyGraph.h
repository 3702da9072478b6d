// Who depends on whom: the static graph of a description, computed at the first use and shared by its node maps.
//
// An edge x -> y means that y must forget what it knows when x changes. Edges come from
//   - every link that is read for a value, limit, address, length or formula (the linked node -> the node with the
//   link),
//   - pValueCopy, guards (pIsImplemented, pIsAvailable, pIsLocked, pBlockPolling), pInvalidator and pPort, likewise,
//   - selectors (the selector -> each pSelected target), entries (-> their enumeration) and features (-> their
//   category).
// Writing links, pError, pAlias and pCastAlias make no edge. All walks are iterative.
#pragma once
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "GenApi/Types.h"
#include "description/Derivations.h"
#include "description/NodeIndex.h"

namespace GENAPI_NAMESPACE {

class Description;
class NodeTraits;

// Working memory for walks that are too large to be remembered; one per node map, under its lock.
struct WalkScratch {
  std::vector<uint32_t> mark;
  uint32_t epoch = 0;
  std::vector<NodeIndex> found;
};

class DependencyGraph final : public Derived {
 public:
  explicit DependencyGraph(const Description& description);
  ~DependencyGraph() override;

  // Nodes with a direct edge from x, each once.
  std::span<const NodeIndex> directDependents(NodeIndex x) const;
  // Everything reachable from x in description order; x itself only when a cycle leads back to it. Remembered within
  // kMaxClosureBytes for the whole description; past that computed into the scratch, where it is valid until the next
  // use.
  std::span<const NodeIndex> dependents(NodeIndex x, WalkScratch& scratch) const;
  // Whether a circle of dependencies leads from x back to x.
  bool dependsOnItself(NodeIndex x) const;
  // Nodes that have a reading link to x (the links of GetParents), each once, description order.
  std::span<const NodeIndex> readingParents(NodeIndex x) const;
  // Selectors that name x directly or through the reading parents of what they select; description order.
  std::vector<NodeIndex> selecting(NodeIndex x) const;
  // The pSelected targets of x in XML order, then their reading parents, transitively, without categories.
  std::vector<NodeIndex> selected(NodeIndex x) const;

  // What follows for each node from the nodes that it is linked to.
  const NodeTraits& traits() const;

 private:
  struct Data;
  std::unique_ptr<Data> data_;
};

}  // namespace GENAPI_NAMESPACE

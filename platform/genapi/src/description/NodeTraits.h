// What follows for each node from the nodes it is linked to: caching mode, whether its access mode may be remembered,
// whether values of other nodes can change its access mode or its limits, whether it is a feature.
#pragma once
#include <vector>

#include "GenApi/Types.h"
#include "description/AdjacencyLists.h"
#include "description/Description.h"

namespace GENAPI_NAMESPACE {

class NodeTraits {
 public:
  // `parents`: for each node, who reads it.
  NodeTraits(const Description& description, const AdjacencyLists& parents);

  // The node's own Cachable combined with the caching modes of everything that it reads.
  ECachingMode cachingMode(NodeIndex node) const { return static_cast<ECachingMode>(traits_[node].cachingMode); }
  // False when some value that the access mode depends on may not be cached.
  bool accessModeCacheable(NodeIndex node) const { return traits_[node].accessModeCacheable; }
  // Whether a change of another node's value can change the node's access mode (guards anywhere below it, tables), or
  // its limits. What does not follow values changes only when a port is connected or invalidated, when something is
  // imposed, or when the node is invalidated by name.
  bool accessModeFollowsValues(NodeIndex node) const { return traits_[node].accessModeFollowsValues; }
  bool limitsFollowValues(NodeIndex node) const { return traits_[node].limitsFollowValues; }
  // Reachable from the category Root through pFeature.
  bool isFeature(NodeIndex node) const { return traits_[node].feature; }

 private:
  struct Traits {
    uint8_t cachingMode = WriteThrough;
    bool accessModeCacheable = true;
    bool incrementCacheable = true;
    bool accessModeFollowsValues = false;
    bool limitsFollowValues = false;
    bool feature = false;
  };

  void findCachingModes(const Description& description, const AdjacencyLists& parents);
  void findUncacheableIncrements(const Description& description);
  void findUncacheableAccess(const Description& description);
  void findValueFollowers(const Description& description);
  void findFeatures(const Description& description);

  std::vector<Traits> traits_;
};

}  // namespace GENAPI_NAMESPACE

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

  ECachingMode cachingMode(NodeIndex node) const { return static_cast<ECachingMode>(traits_[node].cachingMode); }
  bool accessModeCacheable(NodeIndex node) const { return traits_[node].accessModeCacheable; }
  bool accessModeFollowsValues(NodeIndex node) const { return traits_[node].accessModeFollowsValues; }
  bool limitsFollowValues(NodeIndex node) const { return traits_[node].limitsFollowValues; }
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

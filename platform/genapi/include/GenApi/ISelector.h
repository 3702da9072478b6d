// Selector relations; implemented by every node.
#pragma once
#include "GenApi/Container.h"
#include "GenApi/IBase.h"

namespace GENAPI_NAMESPACE {

class ISelector : virtual public IBase {
 public:
  // True when the node has at least one selected feature.
  virtual bool IsSelector() const = 0;
  // The selected features, then the reading parents of each. The list is replaced.
  virtual void GetSelectedFeatures(FeatureList_t& list) const = 0;
  // All selectors that select this node, in description order. The list is replaced.
  virtual void GetSelectingFeatures(FeatureList_t& list) const = 0;
};

}  // namespace GENAPI_NAMESPACE

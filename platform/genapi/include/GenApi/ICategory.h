// Categories: the feature tree.
#pragma once
#include "GenApi/Container.h"
#include "GenApi/IValue.h"

namespace GENAPI_NAMESPACE {

class ICategory : virtual public IValue {
 public:
  // The features in description order, those that are not implemented included. The list is replaced.
  virtual void GetFeatures(FeatureList_t& Features) const = 0;
};

}  // namespace GENAPI_NAMESPACE

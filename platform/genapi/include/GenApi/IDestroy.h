// How a node map is ended.
#pragma once
#include "Base/GCTypes.h"

namespace GENAPI_NAMESPACE {

class IDestroy {
 public:
  // Frees the node map and all its nodes; no other thread may use them any more.
  virtual void Destroy() = 0;

 protected:
  ~IDestroy() = default;
};

}  // namespace GENAPI_NAMESPACE

// What callers of the firmware updater implement is destroyed through this.
#pragma once
#include "Base/GCTypes.h"

namespace GENAPI_NAMESPACE {

class IDestructible {
 public:
  virtual ~IDestructible() = default;
};

}  // namespace GENAPI_NAMESPACE

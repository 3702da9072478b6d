// The root of all node interfaces: every node and port answers for its access mode.
#pragma once
#include "Base/GCTypes.h"
#include "GenApi/Types.h"

namespace GENAPI_NAMESPACE {

class IBase {
 public:
  // The node's present access mode. Throws only what a port implementation throws while guards are read.
  virtual EAccessMode GetAccessMode() const = 0;
  virtual ~IBase() = default;
};

// A null pointer answers false.
inline bool IsReadable(const IBase* base) { return base && IsReadable(base->GetAccessMode()); }
inline bool IsWritable(const IBase* base) { return base && IsWritable(base->GetAccessMode()); }
inline bool IsAvailable(const IBase* base) { return base && IsAvailable(base->GetAccessMode()); }
inline bool IsImplemented(const IBase* base) { return base && IsImplemented(base->GetAccessMode()); }
inline bool IsReadable(const IBase& base) { return IsReadable(base.GetAccessMode()); }
inline bool IsWritable(const IBase& base) { return IsWritable(base.GetAccessMode()); }
inline bool IsAvailable(const IBase& base) { return IsAvailable(base.GetAccessMode()); }
inline bool IsImplemented(const IBase& base) { return IsImplemented(base.GetAccessMode()); }

}  // namespace GENAPI_NAMESPACE

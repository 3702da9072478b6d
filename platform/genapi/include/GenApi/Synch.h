// The lock of a node map.
#pragma once
#include <atomic>
#include <cstdint>

#include "Base/GCTypes.h"

namespace GENAPI_NAMESPACE {

// A recursive lock: the owning thread may lock it again and must unlock it as often.
class CLock {
 public:
  CLock() = default;
  CLock(const CLock&) = delete;
  CLock& operator=(const CLock&) = delete;
  void Lock();
  bool TryLock();
  void Unlock();

 private:
  bool seize();
  void lockContended();
  std::atomic<uint32_t> state_{0};   // 0 free, 1 held, 2 held and waited for
  std::atomic<uintptr_t> owner_{0};  // the owning thread, written only by it
  uint32_t depth_ = 0;               // guarded by the lock itself
};

// Holds the lock for its scope.
class AutoLock {
 public:
  explicit AutoLock(CLock& lock) : lock_(lock) { lock_.Lock(); }
  ~AutoLock() { lock_.Unlock(); }
  AutoLock(const AutoLock&) = delete;
  AutoLock& operator=(const AutoLock&) = delete;

 private:
  CLock& lock_;
};

}  // namespace GENAPI_NAMESPACE

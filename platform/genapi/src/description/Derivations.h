// What is computed from a description once, at its first use, and then shared: the dependency graph, the layout of its
// nodes in memory, compiled formulas, tables of entries.
#pragma once
#include <atomic>
#include <cstddef>
#include <memory>

#include "Base/GCTypes.h"

namespace GENAPI_NAMESPACE {

// Immutable once it is made.
class Derived {
 public:
  virtual ~Derived() = default;
};

class Derivations {
 public:
  explicit Derivations(size_t slots) : slots_(new std::atomic<const Derived*>[slots]()), count_(slots) {}
  ~Derivations() {
    for (size_t i = 0; i < count_; ++i) delete slots_[i].load(std::memory_order_relaxed);
  }
  Derivations(const Derivations&) = delete;
  Derivations& operator=(const Derivations&) = delete;

  // What the slot holds, made by `make` (which returns a unique_ptr to it) at the first call. When two threads make it
  // at once, one copy is freed.
  template <class T, class Make>
  const T& get(size_t slot, Make&& make) const {
    const Derived* known = slots_[slot].load(std::memory_order_acquire);
    if (!known) {
      std::unique_ptr<const T> made = make();
      if (slots_[slot].compare_exchange_strong(known, made.get(), std::memory_order_acq_rel)) known = made.release();
    }
    return static_cast<const T&>(*known);
  }

  // The same if it was made already, else null.
  const Derived* known(size_t slot) const { return slots_[slot].load(std::memory_order_acquire); }

 private:
  const std::unique_ptr<std::atomic<const Derived*>[]> slots_;
  const size_t count_;
};

}  // namespace GENAPI_NAMESPACE

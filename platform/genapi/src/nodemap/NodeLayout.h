// What all node maps of one description share beyond the description itself: where each node lies in a map's arena, and
// what nodes derive from their records at first use (compiled formulas, tables of entries).
#pragma once
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "description/NodeIndex.h"

namespace GENAPI_NAMESPACE {

class Description;

// Something computed once per description and node, immutable then.
class Derived {
 public:
  virtual ~Derived() = default;
};

class NodeLayout {
 public:
  explicit NodeLayout(const Description& description);
  ~NodeLayout();
  NodeLayout(const NodeLayout&) = delete;
  NodeLayout& operator=(const NodeLayout&) = delete;

  // The layout of that description, made at the first call.
  static const NodeLayout& of(const Description& description);

  size_t offset(NodeIndex node) const { return size_t{offsets_[node]} * kUnit; }
  size_t arenaBytes() const { return arenaBytes_; }

  // The node's derived object, made by `make` (which returns a unique_ptr to it) at the first call. When two threads
  // make it at once, one copy is freed.
  template <class T, class Make>
  const T& derived(NodeIndex node, Make&& make) const {
    const Derived* known = derived_[node].load(std::memory_order_acquire);
    if (!known) {
      std::unique_ptr<const T> made = make();
      if (derived_[node].compare_exchange_strong(known, made.get(), std::memory_order_acq_rel)) known = made.release();
    }
    return static_cast<const T&>(*known);
  }

  // The derived object if it was made already, else null.
  const Derived* knownDerived(NodeIndex node) const { return derived_[node].load(std::memory_order_acquire); }

 private:
  static constexpr size_t kUnit = 8;
  std::vector<uint32_t> offsets_;  // in units
  size_t arenaBytes_ = 0;
  mutable std::vector<std::atomic<const Derived*>> derived_;
};

}  // namespace GENAPI_NAMESPACE

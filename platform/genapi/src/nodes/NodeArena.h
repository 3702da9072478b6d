// The nodes of one device: each has a fixed place in description order and is built there at its first use.
#pragma once
#include <atomic>
#include <cstddef>
#include <mutex>

#include "description/NodeIndex.h"
#include "evaluation/ZeroPages.h"
#include "nodes/NodeLayout.h"

namespace GENAPI_NAMESPACE {

struct Device;
class NodeBase;

class NodeArena {
 public:
  explicit NodeArena(Device& device);
  ~NodeArena();
  NodeArena(const NodeArena&) = delete;
  NodeArena& operator=(const NodeArena&) = delete;

  // The node, built now if need be. Needs no lock.
  NodeBase& node(NodeIndex index) {
    if (!ready_[index].load(std::memory_order_acquire)) build(index);
    return *placeOf(index);
  }
  // The node if it was built, else null. Needs no lock.
  NodeBase* ifBuilt(NodeIndex index) {
    return ready_[index].load(std::memory_order_acquire) ? placeOf(index) : nullptr;
  }

 private:
  NodeBase* placeOf(NodeIndex index) { return reinterpret_cast<NodeBase*>(nodes_ + layout_.offset(index)); }
  void build(NodeIndex index);

  Device& device_;
  const NodeLayout& layout_;
  const size_t count_;
  ZeroPages pages_;
  std::atomic<uint8_t>* const ready_;
  std::byte* const nodes_;
  std::mutex buildMutex_;  // a leaf: construction touches no other node and calls nothing
};

}  // namespace GENAPI_NAMESPACE

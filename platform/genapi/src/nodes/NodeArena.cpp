#include "nodes/NodeArena.h"

#include "nodes/Device.h"
#include "nodes/NodeBase.h"
#include "nodes/NodeFactory.h"

namespace GENAPI_NAMESPACE {

namespace {
constexpr size_t aligned(size_t bytes) {
  constexpr size_t kUnit = alignof(std::max_align_t);
  return (bytes + kUnit - 1) / kUnit * kUnit;
}
}  // namespace

NodeArena::NodeArena(Device& device)
    : device_(device),
      layout_(NodeLayout::of(device.description)),
      count_(device.description.nodeCount()),
      pages_(aligned(count_) + layout_.arenaBytes()),
      ready_(static_cast<std::atomic<uint8_t>*>(pages_.start())),
      nodes_(static_cast<std::byte*>(pages_.start()) + aligned(count_)) {}

NodeArena::~NodeArena() {
  for (NodeIndex index = 0; index < count_; ++index)
    if (NodeBase* node = ifBuilt(index)) node->~NodeBase();
}

void NodeArena::build(NodeIndex index) {
  const std::lock_guard<std::mutex> lock(buildMutex_);
  if (ready_[index].load(std::memory_order_relaxed)) return;
  constructNode(nodes_ + layout_.offset(index), device_, index);
  ready_[index].store(1, std::memory_order_release);
}

}  // namespace GENAPI_NAMESPACE

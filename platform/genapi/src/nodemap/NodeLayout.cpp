#include "nodemap/NodeLayout.h"

#include "description/Description.h"
#include "nodes/NodeFactory.h"

namespace GENAPI_NAMESPACE {

NodeLayout::NodeLayout(const Description& description)
    : offsets_(description.nodeCount()), derived_(description.nodeCount()) {
  size_t end = 0;
  for (NodeIndex node = 0; node < description.nodeCount(); ++node) {
    offsets_[node] = static_cast<uint32_t>(end / kUnit);
    end += (nodeBytes(description.node(node).type) + kUnit - 1) / kUnit * kUnit;
  }
  arenaBytes_ = end;
}

NodeLayout::~NodeLayout() {
  for (const auto& each : derived_) delete each.load(std::memory_order_relaxed);
}

const NodeLayout& NodeLayout::of(const Description& description) {
  const NodeLayout* known = description.layout.load(std::memory_order_acquire);
  if (!known) {
    auto made = std::make_unique<const NodeLayout>(description);
    description.deleteLayout.store([](const NodeLayout* layout) { delete layout; }, std::memory_order_release);
    if (description.layout.compare_exchange_strong(known, made.get(), std::memory_order_acq_rel))
      known = made.release();
  }
  return *known;
}

}  // namespace GENAPI_NAMESPACE

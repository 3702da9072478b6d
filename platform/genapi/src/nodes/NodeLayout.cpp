#include "nodes/NodeLayout.h"

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

const NodeLayout& NodeLayout::of(const Description& description) {
  return description.derived().get<NodeLayout>(Description::kLayout,
                                               [&] { return std::make_unique<const NodeLayout>(description); });
}

}  // namespace GENAPI_NAMESPACE

// Builds nodes at their places.
#pragma once
#include <cstddef>

#include "description/Element.h"
#include "description/NodeIndex.h"

namespace GENAPI_NAMESPACE {

struct Device;

// Bytes that a node of that type takes.
size_t nodeBytes(NodeType type);
// Builds the node; touches no other node. NodeBase lies at the start of every node.
void constructNode(void* place, Device& device, NodeIndex index);

}  // namespace GENAPI_NAMESPACE

#include "nodes/NodeFactory.h"

#include <new>
#include <type_traits>

#include "nodes/BooleanNode.h"
#include "nodes/CommandNode.h"
#include "nodes/ConverterNode.h"
#include "nodes/EnumEntryNode.h"
#include "nodes/EnumerationNode.h"
#include "nodes/NumberNode.h"
#include "nodes/PlainNodes.h"
#include "nodes/PortNode.h"
#include "nodes/RegisterNodes.h"
#include "nodes/SwissKnifeNode.h"
#include "nodes/UnsupportedNodes.h"

namespace GENAPI_NAMESPACE {

namespace {

// Calls visit with the class that represents the type.
template <class Visit>
auto withNodeClass(NodeType type, Visit&& visit) {
  switch (type) {
    case NodeType::Node: break;
    case NodeType::Category: return visit(std::type_identity<CategoryNode>());
    case NodeType::Integer: return visit(std::type_identity<IntegerNode>());
    case NodeType::IntReg:
    case NodeType::MaskedIntReg: return visit(std::type_identity<IntRegNode>());
    case NodeType::Boolean: return visit(std::type_identity<BooleanNode>());
    case NodeType::Command: return visit(std::type_identity<CommandNode>());
    case NodeType::Enumeration: return visit(std::type_identity<EnumerationNode>());
    case NodeType::EnumEntry: return visit(std::type_identity<EnumEntryNode>());
    case NodeType::Float: return visit(std::type_identity<FloatNode>());
    case NodeType::FloatReg: return visit(std::type_identity<FloatRegNode>());
    case NodeType::Converter: return visit(std::type_identity<FloatConverterNode>());
    case NodeType::IntConverter: return visit(std::type_identity<IntConverterNode>());
    case NodeType::SwissKnife: return visit(std::type_identity<SwissKnifeNode<FloatBase>>());
    case NodeType::IntSwissKnife: return visit(std::type_identity<SwissKnifeNode<IntegerBase>>());
    case NodeType::String: return visit(std::type_identity<StringNode>());
    case NodeType::StringReg: return visit(std::type_identity<StringRegNode>());
    case NodeType::Register:
    case NodeType::ConfRom: return visit(std::type_identity<RegisterNode>());
    case NodeType::Port: return visit(std::type_identity<PortNode>());
    case NodeType::TextDesc: return visit(std::type_identity<UnsupportedTextNode>());
    case NodeType::IntKey: return visit(std::type_identity<UnsupportedKeyNode>());
    case NodeType::AdvFeatureLock:
    case NodeType::SmartFeature: return visit(std::type_identity<UnsupportedIntegerNode>());
  }
  return visit(std::type_identity<PlainNode>());
}

}  // namespace

size_t nodeBytes(NodeType type) {
  return withNodeClass(type, []<class Node>(std::type_identity<Node>) { return sizeof(Node); });
}

void constructNode(void* place, Device& device, NodeIndex index) {
  withNodeClass(device.description.node(index).type, [&]<class Node>(std::type_identity<Node>) {
    static_assert(alignof(Node) <= 8, "places in the arena are 8 bytes apart");
    const NodeBase* base = new (place) Node(device, index);
    static_cast<void>(base);
  });
}

}  // namespace GENAPI_NAMESPACE

// Components built elsewhere call the abstract interfaces by place; these places never change.
#include <gtest/gtest.h>

#include <cstring>

#include "INode.h"
#include "INodeMap.h"

namespace {

// The place of a virtual operation in its table, as a pointer to member holds it.
template <class Member>
size_t placeOf(Member member) {
  ptrdiff_t offset = 0;
  static_assert(sizeof member >= sizeof offset);
  std::memcpy(&offset, &member, sizeof offset);
  return static_cast<size_t>(offset - 1) / sizeof(void*);
}

// The operations stand one behind the other from that place on.
template <class... Members>
void expectPlaces(size_t first, Members... members) {
  for (const size_t place : {placeOf(members)...}) EXPECT_EQ(place, first++);
}

TEST(InterfaceOrder, Node) {
  using ORX::INode;
  expectPlaces(0, &INode::DestroyInPlace, &INode::ListInterfaces);
  // The destructors are 2 and 3.
  expectPlaces(4, &INode::GetType, &INode::GetInfoAsBoolean, &INode::GetInfoAsFloat, &INode::GetInfoAsInteger,
               &INode::GetInfoAsString, &INode::GetInfoAsStringW, &INode::GetInfoEnum, &INode::GetInfoEnumW,
               &INode::GetListCount, &INode::GetList, &INode::GetListW, &INode::GetAsBoolean, &INode::GetAsFloat,
               &INode::GetAsInteger, &INode::GetAsString, &INode::GetAsStringW, &INode::Invalidate,
               &INode::SetAsBoolean, &INode::SetAsFloat, &INode::SetAsInteger, &INode::SetAsString,
               &INode::SetAsStringW, &INode::RegisterUpdate, &INode::DeregisterUpdate, &INode::GetVerifyMode,
               &INode::SetVerifyMode);
}

TEST(InterfaceOrder, NodeMap) {
  using ORX::INodeMap;
  expectPlaces(0, &INodeMap::DestroyInPlace, &INodeMap::ListInterfaces);
  // The destructors are 2 and 3.
  expectPlaces(4, &INodeMap::GetNode, &INodeMap::GetNodeCount, &INodeMap::ListNode, &INodeMap::ListNodeW,
               &INodeMap::GetInfoAsBoolean, &INodeMap::GetInfoAsInteger, &INodeMap::GetInfoAsFloat,
               &INodeMap::GetInfoAsString, &INodeMap::GetInfoAsStringW, &INodeMap::PollNodes, &INodeMap::ConnectPort,
               &INodeMap::LoadXMLFile, &INodeMap::LoadXMLString, &INodeMap::DeliverEvent, &INodeMap::DeliverEventEx,
               &INodeMap::AttachChunk, &INodeMap::AttachChunkEx, &INodeMap::UpdateChunks, &INodeMap::DetachAllChunks);
}

}  // namespace

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

TEST(InterfaceOrder, Node) {
  using ORX::INode;
  const size_t places[] = {placeOf(&INode::DestroyInPlace),
                           placeOf(&INode::ListInterfaces),
                           2,
                           3,  // the destructors
                           placeOf(&INode::GetType),
                           placeOf(&INode::GetInfoAsBoolean),
                           placeOf(&INode::GetInfoAsFloat),
                           placeOf(&INode::GetInfoAsInteger),
                           placeOf(&INode::GetInfoAsString),
                           placeOf(&INode::GetInfoAsStringW),
                           placeOf(&INode::GetInfoEnum),
                           placeOf(&INode::GetInfoEnumW),
                           placeOf(&INode::GetListCount),
                           placeOf(&INode::GetList),
                           placeOf(&INode::GetListW),
                           placeOf(&INode::GetAsBoolean),
                           placeOf(&INode::GetAsFloat),
                           placeOf(&INode::GetAsInteger),
                           placeOf(&INode::GetAsString),
                           placeOf(&INode::GetAsStringW),
                           placeOf(&INode::Invalidate),
                           placeOf(&INode::SetAsBoolean),
                           placeOf(&INode::SetAsFloat),
                           placeOf(&INode::SetAsInteger),
                           placeOf(&INode::SetAsString),
                           placeOf(&INode::SetAsStringW),
                           placeOf(&INode::RegisterUpdate),
                           placeOf(&INode::DeregisterUpdate),
                           placeOf(&INode::GetVerifyMode),
                           placeOf(&INode::SetVerifyMode)};
  for (size_t place = 0; place < std::size(places); ++place) EXPECT_EQ(places[place], place);
}

TEST(InterfaceOrder, NodeMap) {
  using ORX::INodeMap;
  const size_t places[] = {placeOf(&INodeMap::DestroyInPlace),
                           placeOf(&INodeMap::ListInterfaces),
                           2,
                           3,  // the destructors
                           placeOf(&INodeMap::GetNode),
                           placeOf(&INodeMap::GetNodeCount),
                           placeOf(&INodeMap::ListNode),
                           placeOf(&INodeMap::ListNodeW),
                           placeOf(&INodeMap::GetInfoAsBoolean),
                           placeOf(&INodeMap::GetInfoAsInteger),
                           placeOf(&INodeMap::GetInfoAsFloat),
                           placeOf(&INodeMap::GetInfoAsString),
                           placeOf(&INodeMap::GetInfoAsStringW),
                           placeOf(&INodeMap::PollNodes),
                           placeOf(&INodeMap::ConnectPort),
                           placeOf(&INodeMap::LoadXMLFile),
                           placeOf(&INodeMap::LoadXMLString),
                           placeOf(&INodeMap::DeliverEvent),
                           placeOf(&INodeMap::DeliverEventEx),
                           placeOf(&INodeMap::AttachChunk),
                           placeOf(&INodeMap::AttachChunkEx),
                           placeOf(&INodeMap::UpdateChunks),
                           placeOf(&INodeMap::DetachAllChunks)};
  for (size_t place = 0; place < std::size(places); ++place) EXPECT_EQ(places[place], place);
}

}  // namespace

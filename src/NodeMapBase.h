// What node maps and their proxies have in common: the container, and access to what is loaded.
#pragma once
#include <memory>

#include "Base/GCTypes.h"
#include "INodeMap.h"
#include "OxBase/SharedRef.h"

namespace GENAPI_NAMESPACE {
class INode;
}

namespace orxGenApi {

class LoadedMap;
class Node;

class NodeMapBase : public ORX::INodeMap, public orxBase::enable_shared_from_this<NodeMapBase> {
 public:
  using InterfaceType = ORX::INodeMap;
  static uint64_t interfaceId() noexcept { return OX_INTERFACE_NODE_MAP; }

  // The node map itself; that of a proxy is the one it stands for.
  virtual NodeMapBase* target() noexcept { return this; }

  // What the last successful load made, empty before it. Hold it for as long as anything of it is used.
  virtual std::shared_ptr<LoadedMap> loaded() noexcept = 0;

  // The node object for an engine node of that load; the one handed out before while it lives. Throws orx_error, and
  // what building a node throws.
  virtual orxBase::shared_ref<Node> nodeFor(const std::shared_ptr<LoadedMap>& load,
                                            GENAPI_NAMESPACE::INode* engineNode) = 0;
};

template <>
struct HandleKind<NodeMapBase> : HandleKind<ORX::INodeMap> {};

}  // namespace orxGenApi

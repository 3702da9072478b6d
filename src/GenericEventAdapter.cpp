#include "GenericEventAdapter.h"

#include <algorithm>

#include "Base/GCException.h"
#include "GenApi/INode.h"
#include "GenApi/INodeMap.h"

namespace orxGenApi {

GenericEventAdapter::GenericEventAdapter(GENAPI_NAMESPACE::INodeMap* pNodeMap) {
  GenericEventAdapter::AttachNodeMap(pNodeMap);
}

GenericEventAdapter::~GenericEventAdapter() = default;

void GenericEventAdapter::AttachNodeMap(GENAPI_NAMESPACE::INodeMap* pNodeMap) {
  GENAPI_NAMESPACE::NodeList_t nodes;
  pNodeMap->GetNodes(nodes);
  const auto end = std::partition(nodes.begin(), nodes.end(), [](GENAPI_NAMESPACE::INode* node) {
    return node != nullptr && !node->GetEventID().empty();
  });
  std::vector<std::unique_ptr<GENAPI_NAMESPACE::CEventPort>> ports;
  ports.reserve(static_cast<size_t>(end - nodes.begin()));
  for (auto node = nodes.begin(); node != end; ++node)
    ports.push_back(std::make_unique<GENAPI_NAMESPACE::CEventPort>(*node));
  ports_.swap(ports);
}

void GenericEventAdapter::DetachNodeMap() { ports_.clear(); }

void GenericEventAdapter::DeliverMessage(const uint8_t[], uint32_t) {
  constexpr int kLine = 75;  // where callers of this class expect the failure to come from
  throw GENICAM_NAMESPACE::LogicalErrorException("Operation not supported: Use DeliverEvent<T>",
                                                 "src/GenericEventAdapter", kLine);
}

}  // namespace orxGenApi

// An event adapter that owns a port for every node with an event ID, and refuses bare messages.
#pragma once
#include <cstdint>
#include <memory>
#include <vector>

#include "GenApi/EventAdapter.h"

namespace orxGenApi {

class GenericEventAdapter : public GENAPI_NAMESPACE::CEventAdapter {
 public:
  // Attaches to the node map.
  explicit GenericEventAdapter(GENAPI_NAMESPACE::INodeMap* pNodeMap);
  ~GenericEventAdapter() override;

  // Builds ports for the nodes with an event ID in place of the present ones; those stay when it throws.
  void AttachNodeMap(GENAPI_NAMESPACE::INodeMap* pNodeMap) override;
  void DetachNodeMap() override;
  // Always LogicalErrorException: bytes alone do not tell their event ID.
  void DeliverMessage(const uint8_t msg[], uint32_t numBytes) override;

  // How many ports there are.
  size_t portCount() const noexcept { return ports_.size(); }

 private:
  std::vector<std::unique_ptr<GENAPI_NAMESPACE::CEventPort>> ports_;
};

}  // namespace orxGenApi

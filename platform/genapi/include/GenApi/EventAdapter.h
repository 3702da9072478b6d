// Base class of the adapters that deliver event messages to a node map.
#pragma once
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "GenApi/EventPort.h"

namespace GENAPI_NAMESPACE {

class INodeMap;

// Owns one CEventPort for every node with an event ID. Several nodes may share an ID. An adapter is destroyed before
// its node map; should the map end first, its ports know no node any more and stay harmless.
class CEventAdapter {
 public:
  virtual ~CEventAdapter();
  CEventAdapter(const CEventAdapter&) = delete;
  CEventAdapter& operator=(const CEventAdapter&) = delete;

  // Builds the event ports, in description order; detaches from a former map first. Throws InvalidArgumentException for
  // null or a node map of another engine.
  virtual void AttachNodeMap(INodeMap* pNodeMap);
  // Destroys the event ports.
  virtual void DetachNodeMap();
  // Delivers a message in the layout that the adapter understands.
  virtual void DeliverMessage(const uint8_t msg[], uint32_t numBytes) = 0;

 protected:
  explicit CEventAdapter(INodeMap* pNodeMap = nullptr);
  // Hands the payload to every port whose ID equals the hexadecimal text (any case, leading zeros ignored) and
  // invalidates their nodes, as one operation. The cost does not depend on nodes with other IDs. An ID that no node
  // has is no error. Throws InvalidArgumentException (text empty or not hexadecimal, null msg with bytes, more than
  // kMaxEventBytes) and std::bad_alloc; no port has changed then.
  void deliver(const uint8_t msg[], uint32_t numBytes, std::string_view eventId);

  std::vector<CEventPort*>* m_ppEventPorts = nullptr;  // null while no node map is attached; owned

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace GENAPI_NAMESPACE

#include "GenApi/EventAdapter.h"

#include <algorithm>
#include <unordered_map>

#include "GenApi/INodeMap.h"
#include "nodes/PortNode.h"
#include "ports/EventPortState.h"
#include "text/Refusal.h"

namespace GENAPI_NAMESPACE {

namespace {

// The ports of one event ID, and their nodes as the map wants them.
struct Receivers {
  std::vector<CEventPort*> ports;
  std::vector<INode*> nodes;
};

}  // namespace

struct CEventAdapter::State final : public MapEndObserver {
  INodeMap* map = nullptr;
  ILiveData* live = nullptr;
  std::unordered_map<std::string, Receivers> byId;  // by the ID's significant bytes

  void nodeMapEnds() noexcept override { forget(); }
  void forget() noexcept {
    map = nullptr;
    live = nullptr;
    byId.clear();
  }
};

CEventAdapter::CEventAdapter(INodeMap* pNodeMap) : state_(std::make_unique<State>()) {
  if (pNodeMap) CEventAdapter::AttachNodeMap(pNodeMap);
}

CEventAdapter::~CEventAdapter() { CEventAdapter::DetachNodeMap(); }

void CEventAdapter::AttachNodeMap(INodeMap* pNodeMap) {
  auto* live = dynamic_cast<ILiveData*>(pNodeMap);
  if (!live) refuse<InvalidArgumentException>("event adapter: no node map of this engine was given");
  CEventAdapter::DetachNodeMap();
  BoundLock lock(pNodeMap);
  NodeList_t nodes;
  live->eventNodes(nodes);
  m_ppEventPorts = new std::vector<CEventPort*>;
  try {
    m_ppEventPorts->reserve(nodes.size());
    for (INode* node : nodes) {
      auto* own = static_cast<NodeBase*>(node);
      auto* ownPort = own->record().type == NodeType::Port ? static_cast<PortNode*>(own) : nullptr;
      auto port = std::make_unique<CEventPort>();
      port->state_->binding.bind(node, ownPort, pNodeMap, live, ownPort ? port.get() : nullptr);
      port->state_->takeId(own->find(Element::EventID)->value(), ownPort != nullptr);
      const HexId& id = port->state_->id;
      if (id.readable()) {
        Receivers& receivers = state_->byId[id.significant()];
        receivers.ports.push_back(port.get());
        receivers.nodes.push_back(node);
      }
      m_ppEventPorts->push_back(port.release());
    }
  } catch (...) {
    CEventAdapter::DetachNodeMap();
    throw;
  }
  state_->map = pNodeMap;
  state_->live = live;
  live->endObservers().add(*state_);
}

void CEventAdapter::DetachNodeMap() {
  BoundLock lock(state_->map);
  state_->leave();
  state_->forget();
  if (!m_ppEventPorts) return;
  std::vector<CEventPort*>* ports = m_ppEventPorts;
  m_ppEventPorts = nullptr;
  for (CEventPort* port : *ports) delete port;
  delete ports;
}

void CEventAdapter::deliver(const uint8_t msg[], uint32_t numBytes, std::string_view eventId) {
  HexId id;
  if (!id.parse(eventId))
    refuse<InvalidArgumentException>("event ID '{}' is not a hexadecimal number", eventId.substr(0, 64));
  CEventPort::State::checkPayload(nullptr, msg, numBytes);
  const auto found = state_->byId.find(id.significant());
  if (found == state_->byId.end()) return;

  struct Delivery final : LiveChange {
    std::span<INode* const> apply() override {
      accessMayChange = false;
      for (const CEventPort* port : receivers->ports) port->state_->reserve(length);
      for (const CEventPort* port : receivers->ports) {
        accessMayChange |= !port->state_->delivered;
        port->state_->store(bytes, length);
      }
      return receivers->nodes;
    }
    const Receivers* receivers = nullptr;
    const uint8_t* bytes = nullptr;
    int64_t length = 0;
  };
  Delivery delivery;
  delivery.receivers = &found->second;
  delivery.bytes = msg;
  delivery.length = numBytes;
  state_->live->changeTogether(delivery);
}

}  // namespace GENAPI_NAMESPACE

#include "GenApi/ChunkAdapter.h"

#include "GenApi/INode.h"
#include "GenApi/INodeMap.h"
#include "nodes/PortNode.h"
#include "ports/ChunkPortState.h"
#include "text/Refusal.h"

namespace GENAPI_NAMESPACE {

struct CChunkAdapter::State final : public MapEndObserver {
  INodeMap* map = nullptr;
  ILiveData* live = nullptr;
  std::vector<INode*> changed;  // sized for all ports once, so that no frame allocates

  void nodeMapEnds() noexcept override { forget(); }
  void forget() noexcept {
    map = nullptr;
    live = nullptr;
  }

  // Runs `change` (which fills `changed`) as one operation of the map, or alone when there is none.
  template <typename Change>
  void together(bool accessMayChange, Change change) {
    struct Operation final : LiveChange {
      Operation(State& itsState, Change& itsChange) : state(itsState), change(itsChange) {}
      std::span<INode* const> apply() override {
        state.changed.clear();
        change();
        return state.changed;
      }
      State& state;
      Change& change;
    };
    Operation operation(*this, change);
    operation.accessMayChange = accessMayChange;
    if (live)
      live->changeTogether(operation);
    else
      operation.apply();
  }
};

CChunkAdapter::CChunkAdapter(INodeMap* pNodeMap, int64_t MaxChunkCacheSize)
    : m_MaxChunkCacheSize(MaxChunkCacheSize), state_(std::make_unique<State>()) {
  if (pNodeMap) AttachNodeMap(pNodeMap);
}

CChunkAdapter::~CChunkAdapter() {
  DetachNodeMap();
}

void CChunkAdapter::AttachNodeMap(INodeMap* pNodeMap) {
  auto* live = dynamic_cast<ILiveData*>(pNodeMap);
  if (!live) refuse<InvalidArgumentException>("chunk adapter: no node map of this engine was given");
  DetachNodeMap();
  BoundLock lock(pNodeMap);
  NodeList_t nodes;
  live->chunkPorts(nodes);
  m_ppChunkPorts = new std::vector<CChunkPort*>;
  try {
    m_ppChunkPorts->reserve(nodes.size());
    state_->changed.reserve(nodes.size());
    for (INode* node : nodes) {
      auto* own = static_cast<PortNode*>(static_cast<NodeBase*>(node));
      auto port = std::make_unique<CChunkPort>(nullptr);
      port->state_->binding.bind(node, own, pNodeMap, live, port.get());
      port->state_->readNodeFacts(own);
      port->state_->copyLimit = m_MaxChunkCacheSize;
      m_ppChunkPorts->push_back(port.release());
    }
  } catch (...) {
    DetachNodeMap();
    throw;
  }
  state_->map = pNodeMap;
  state_->live = live;
  live->endObservers().add(*state_);
}

void CChunkAdapter::DetachNodeMap() {
  BoundLock lock(state_->map);
  state_->leave();
  state_->forget();
  if (!m_ppChunkPorts) return;
  std::vector<CChunkPort*>* ports = m_ppChunkPorts;
  m_ppChunkPorts = nullptr;
  for (CChunkPort* port : *ports) delete port;
  delete ports;
}

void CChunkAdapter::UpdateBuffer(uint8_t* pBaseAddress) {
  if (!pBaseAddress) refuse<InvalidArgumentException>("chunk adapter: the buffer's base address is null");
  if (!m_ppChunkPorts) return;
  state_->together(false, [this, pBaseAddress] {
    for (const CChunkPort* port : *m_ppChunkPorts)
      if (port->state_->start) port->state_->checkBase(pBaseAddress);
    for (const CChunkPort* port : *m_ppChunkPorts) {
      CChunkPort::State& state = *port->state_;
      if (!state.start) continue;
      state.rebase(pBaseAddress);
      if (state.binding.node()) state_->changed.push_back(state.binding.node());
    }
  });
}

void CChunkAdapter::DetachBuffer() {
  if (!m_ppChunkPorts) return;
  state_->together(true, [this] {
    for (const CChunkPort* port : *m_ppChunkPorts) {
      CChunkPort::State& state = *port->state_;
      if (!state.start) continue;
      state.start = nullptr;
      if (state.binding.node()) state_->changed.push_back(state.binding.node());
    }
  });
}

void CChunkAdapter::ClearCaches() {
  if (!m_ppChunkPorts) return;
  BoundLock lock(state_->map);
  for (CChunkPort* port : *m_ppChunkPorts) port->ClearCache();
}

}  // namespace GENAPI_NAMESPACE

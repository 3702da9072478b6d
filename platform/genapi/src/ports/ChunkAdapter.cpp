#include "GenApi/ChunkAdapter.h"

#include <algorithm>

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
  // Places of the ports whose ID the description gives, by ID and place, beside their IDs; and of those to be asked.
  std::vector<uint64_t> ids;
  std::vector<uint32_t> places, asked;

  void sortIds(const std::vector<CChunkPort*>& ports);

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

void CChunkAdapter::State::sortIds(const std::vector<CChunkPort*>& ports) {
  ids.clear();
  places.clear();
  asked.clear();
  const auto id = [&](uint32_t place) -> const HexId& { return ports[place]->state_->id; };
  for (uint32_t place = 0; place < ports.size(); ++place)
    if (!ports[place]->state_->idIsFixed)
      asked.push_back(place);
    else if (id(place).isNumber())
      places.push_back(place);
  std::stable_sort(places.begin(), places.end(),
                   [&](uint32_t a, uint32_t b) { return id(a).number() < id(b).number(); });
  for (const uint32_t place : places) ids.push_back(id(place).number());
}

CChunkAdapter::PortPlaces CChunkAdapter::placesOf(uint64_t ChunkID) const {
  const auto [first, last] = std::equal_range(state_->ids.begin(), state_->ids.end(), ChunkID);
  return {std::span(state_->places)
              .subspan(static_cast<size_t>(first - state_->ids.begin()), static_cast<size_t>(last - first)),
          state_->asked};
}

CChunkAdapter::CChunkAdapter(INodeMap* pNodeMap, int64_t MaxChunkCacheSize)
    : m_MaxChunkCacheSize(MaxChunkCacheSize), state_(std::make_unique<State>()) {
  if (pNodeMap) AttachNodeMap(pNodeMap);
}

CChunkAdapter::~CChunkAdapter() { DetachNodeMap(); }

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
    state_->sortIds(*m_ppChunkPorts);
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

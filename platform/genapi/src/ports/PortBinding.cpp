#include "ports/PortBinding.h"

#include "GenApi/INode.h"
#include "GenApi/INodeMap.h"
#include "text/Refusal.h"

namespace GENAPI_NAMESPACE {

bool PortBinding::bind(INode* node, IPort* implementation) {
  INodeMap* map = node->GetNodeMap();
  auto* live = dynamic_cast<ILiveData*>(map);
  if (!live) refuse<InvalidArgumentException>("{}: the node belongs to no node map of this engine", node->GetName());
  return bind(node, dynamic_cast<IPort*>(node), map, live, implementation);
}

bool PortBinding::bind(INode* node, IPort* port, INodeMap* map, ILiveData* live, IPort* implementation) {
  release();
  BoundLock lock(map);
  tie(node, port, map, live);
  if (!implementation) return true;
  try {
    if (map->Connect(implementation, node->GetName())) return true;
  } catch (...) {
    leave();
    forget();
    throw;
  }
  leave();
  forget();
  return false;
}

void PortBinding::release() noexcept {
  if (!map_) return;
  BoundLock lock(map_);
  leave();
  INode* node = node_;
  INodeMap* map = map_;
  const bool connected = connected_;
  forget();
  if (!connected) return;
  try {
    map->Connect(static_cast<IPort*>(nullptr), node->GetName());
  } catch (...) {  // a destructor runs this; the node has no implementation any more whatever else failed
  }
}

bool PortBinding::connectionChanged(IPort* portNode) {
  if (!portNode) {
    connected_ = false;
    return false;
  }
  bool foreign = false;
  if (portNode != port_) {
    auto* node = dynamic_cast<INode*>(portNode);
    INodeMap* const map = node ? node->GetNodeMap() : nullptr;
    auto* live = dynamic_cast<ILiveData*>(map);
    if (!live) return false;
    release();
    tie(node, portNode, map, live);
    foreign = true;
  }
  connected_ = true;
  return foreign;
}

void PortBinding::tie(INode* node, IPort* port, INodeMap* map, ILiveData* live) {
  node_ = node;
  port_ = port;
  map_ = map;
  live_ = live;
  live_->endObservers().add(*this);
}

void PortBinding::forget() noexcept {
  node_ = nullptr;
  port_ = nullptr;
  map_ = nullptr;
  live_ = nullptr;
  connected_ = false;
}

BoundLock::BoundLock(INodeMap* map) : lock_(map ? &map->GetLock() : nullptr) {
  if (lock_) lock_->Lock();
}

BoundLock::~BoundLock() {
  if (lock_) lock_->Unlock();
}

}  // namespace GENAPI_NAMESPACE

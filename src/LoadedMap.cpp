#include "LoadedMap.h"

#include <utility>

#include "CacheCheckReport.h"

namespace orxGenApi {
using GENAPI_NAMESPACE::AutoLock;
using GENICAM_NAMESPACE::gcstring;

void LoadedMap::Destroy::operator()(GENAPI_NAMESPACE::INodeMap* map) const noexcept {
  if (auto* destroyable = dynamic_cast<GENAPI_NAMESPACE::IDestroy*>(map)) destroyable->Destroy();
}

LoadedMap::LoadedMap(EngineMap map) : map_(std::move(map)), adapters_(std::make_shared<Adapters>(map_.get())) {
  checkCacheIfAsked(*map_);
}

LoadedMap::~LoadedMap() { retire(); }

std::shared_ptr<Adapters> LoadedMap::adapters() {
  AutoLock lock(map_->GetLock());
  return adapters_;
}

bool LoadedMap::connect(std::shared_ptr<Port> port, const gcstring& name) {
  std::shared_ptr<Port> replaced;  // ends after the lock is released
  AutoLock lock(map_->GetLock());
  if (retired_) return false;
  auto [place, isNew] = ports_.try_emplace(name);  // first, so that no connection is made that cannot be kept
  bool connected = false;
  try {
    connected = map_->Connect(port.get(), name);
  } catch (...) {
    if (isNew) ports_.erase(place);
    throw;
  }
  if (!connected) {
    if (isNew) ports_.erase(place);
    return false;
  }
  replaced = std::exchange(place->second, std::move(port));
  return true;
}

const GENAPI_NAMESPACE::NodeList_t& LoadedMap::nodes() {
  AutoLock lock(map_->GetLock());
  if (nodes_.empty()) {
    GENAPI_NAMESPACE::NodeList_t nodes;
    map_->GetNodes(nodes);
    nodes_.swap(nodes);
  }
  return nodes_;
}

void LoadedMap::retire() noexcept {
  std::shared_ptr<Adapters> adapters;
  std::map<gcstring, std::shared_ptr<Port>> ports;
  {
    AutoLock lock(map_->GetLock());
    retired_ = true;
    for (auto& [name, port] : ports_) {
      try {
        map_->Connect(nullptr, name);
      } catch (...) {  // the port goes all the same; the engine does not throw here
      }
    }
    adapters.swap(adapters_);
    ports.swap(ports_);
  }
  // Outside the lock: a port or adapter in which a call still is stays alive until that call has left it.
  adapters.reset();
}

}  // namespace orxGenApi

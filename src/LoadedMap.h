// What one successful load of a description creates, as one counted object: the engine's node map, the adapters over
// it, and the ports connected to it.
//
// The node map object holds the current one, every Node the one it was made from, every running operation the one it
// works on. Whatever is retired or replaced while a call is inside it lives until that call has left it.
#pragma once
#include <map>
#include <memory>

#include "Base/GCString.h"
#include "GenApi/Container.h"
#include "GenApi/EventAdapterGeneric.h"
#include "GenApi/IDestroy.h"
#include "GenApi/INodeMap.h"
#include "GenericChunkAdapter.h"
#include "Port.h"

namespace orxGenApi {

// In this order, because members end in the opposite one: event adapter, then chunk adapter.
struct Adapters {
  explicit Adapters(GENAPI_NAMESPACE::INodeMap* map) : chunks(map), events(map) {}
  CGenericChunkAdapter chunks;
  GENAPI_NAMESPACE::CEventAdapterGeneric events;
};

class LoadedMap {
 public:
  struct Destroy {
    void operator()(GENAPI_NAMESPACE::INodeMap* map) const noexcept;
  };
  using EngineMap = std::unique_ptr<GENAPI_NAMESPACE::INodeMap, Destroy>;

  explicit LoadedMap(EngineMap map);
  ~LoadedMap();
  LoadedMap(const LoadedMap&) = delete;
  LoadedMap& operator=(const LoadedMap&) = delete;

  // Never null.
  GENAPI_NAMESPACE::INodeMap* map() const noexcept { return map_.get(); }

  // Held by each operation on them for its length; empty once retired.
  std::shared_ptr<Adapters> adapters();

  // Connects a port under a name of the description, in place of the one connected before. False, and nothing changed,
  // when there is no port of that name, or when another load has taken this one's place.
  bool connect(std::shared_ptr<Port> port, const GENICAM_NAMESPACE::gcstring& name);

  // All nodes in description order.
  const GENAPI_NAMESPACE::NodeList_t& nodes();

  // Another load has taken its place: disconnects and drops ports and adapters. Nodes keep answering from what needs
  // no port. Must not be called under a lock that a port callback could wait for.
  void retire() noexcept;

 private:
  const EngineMap map_;
  // Guarded by the engine map's lock.
  std::shared_ptr<Adapters> adapters_;
  std::map<GENICAM_NAMESPACE::gcstring, std::shared_ptr<Port>> ports_;
  GENAPI_NAMESPACE::NodeList_t nodes_;
  bool retired_ = false;
};

}  // namespace orxGenApi

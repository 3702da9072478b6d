// What chunk ports, event ports and their adapters need from a node map beyond its public interface. The engine's
// node map implements ILiveData; it is reached by dynamic_cast from INodeMap.
#pragma once
#include <span>
#include <string>

#include "Base/GCTypes.h"
#include "GenApi/Container.h"

namespace GENAPI_NAMESPACE {

// Somebody who keeps pointers into a node map and must forget them when the map ends first. Observers form an
// intrusive ring, so joining and leaving cost two pointer writes and no memory. All of it runs under the map's lock.
class MapEndObserver {
 public:
  MapEndObserver() : previous_(this), next_(this) {}
  MapEndObserver(const MapEndObserver&) = delete;
  MapEndObserver& operator=(const MapEndObserver&) = delete;
  // The map and its nodes are about to go: forget every pointer, call nothing on them.
  virtual void nodeMapEnds() noexcept = 0;

  void join(MapEndObserver& ring) {
    leave();
    previous_ = ring.previous_;
    next_ = &ring;
    previous_->next_ = this;
    ring.previous_ = this;
  }
  void leave() {
    previous_->next_ = next_;
    next_->previous_ = previous_;
    previous_ = next_ = this;
  }

 protected:
  virtual ~MapEndObserver() { leave(); }
  MapEndObserver* next() const { return next_; }

 private:
  friend class MapEndRing;
  MapEndObserver* previous_;
  MapEndObserver* next_;
};

// The head of the ring: one member of the node map. Ending it tells everybody, in the order of joining.
class MapEndRing final : private MapEndObserver {
 public:
  void add(MapEndObserver& observer) { observer.join(*this); }
  void end() noexcept {
    while (next() != this) {
      MapEndObserver* observer = next();
      observer->leave();
      observer->nodeMapEnds();
    }
  }

 private:
  void nodeMapEnds() noexcept override {}
};

// A change of what one or several ports answer, carried out inside one operation of the map.
class LiveChange {
 public:
  // Runs under the map's lock. Returns the nodes to invalidate (port nodes, nodes with an event ID), each once; the
  // map copies what it needs out of the list before the first callback runs. An exception ends the operation: nothing
  // is dropped, nothing fires, the exception leaves.
  virtual std::span<INode* const> apply() = 0;

  // To be cleared by apply() when the ports only answer with other bytes: access modes that follow from no value then
  // need not be found anew for every frame or message.
  bool accessMayChange = true;

 protected:
  ~LiveChange() = default;
};

class ILiveData {
 public:
  // Port nodes with ChunkID or pChunkID, in description order. The list is replaced; no other node is built.
  virtual void chunkPorts(NodeList_t& nodes) = 0;
  // Nodes with an EventID, in description order. The list is replaced; no other node is built.
  virtual void eventNodes(NodeList_t& nodes) = 0;
  // Drops the caches of the port's registers and of everything in their deps, without callbacks; their access modes
  // too, where these may change with more than values. Takes the lock.
  virtual void dropPortSilently(INode* portNode, bool accessMayChange) = 0;
  // One operation: takes the lock once, applies the change, invalidates the nodes returned with their deps (for a port
  // node: all its registers and their deps; access modes as the change says), fires every callback of every node
  // reached once inside the lock, releases the lock, fires the callbacks outside the lock.
  virtual void changeTogether(LiveChange& change) = 0;
  // "Addressed > ... > Node": through which nodes the evaluation under way has come to this one. Under the map's lock.
  virtual std::string pathTo(INode* node) const = 0;
  // Told at the end of the map's life, before any node is destroyed. To be joined and left under the map's lock.
  virtual MapEndRing& endObservers() = 0;

 protected:
  ~ILiveData() = default;
};

}  // namespace GENAPI_NAMESPACE

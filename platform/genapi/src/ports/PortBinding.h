// The tie between a chunk or event port and the node it serves.
#pragma once
#include "GenApi/IPort.h"
#include "GenApi/Synch.h"
#include "nodemap/LiveData.h"

namespace GENAPI_NAMESPACE {

class INode;
class INodeMap;

// Forgets everything when the node map is destroyed first.
class PortBinding final : public MapEndObserver {
 public:
  PortBinding() = default;
  ~PortBinding() { release(); }

  // Ties to the node after releasing a former one; with an implementation, connects it to the node, which must be a
  // port node. False (and nothing tied) when there is no such port. Throws InvalidArgumentException for a node of
  // another engine's map.
  bool bind(INode* node, IPort* implementation);
  // The same for a node whose map and face as a port (null for other nodes) are known: every new map binds all its
  // chunk and event ports, and casts would be most of the work.
  bool bind(INode* node, IPort* port, INodeMap* map, ILiveData* live, IPort* implementation);
  // Disconnects the node if the implementation is still its own.
  void release() noexcept;
  // Takes what SetPortImpl of the implementation got. True when it now serves a port node that it was not bound to:
  // somebody connected it by hand.
  bool connectionChanged(IPort* portNode);

  // Null when nothing is tied or the map has ended.
  INode* node() const { return node_; }
  ILiveData* live() const { return live_; }
  INodeMap* map() const { return map_; }
  bool isConnected() const { return connected_; }
  // The nodes through which an access came here, for its refusal; under the map's lock. `otherwise` while nothing is
  // tied.
  std::string path(const std::string& otherwise) const { return live_ ? live_->pathTo(node_) : otherwise; }

  void nodeMapEnds() noexcept override { forget(); }

 private:
  void tie(INode* node, IPort* port, INodeMap* map, ILiveData* live);
  void forget() noexcept;

  INode* node_ = nullptr;
  IPort* port_ = nullptr;  // the node as a port; null for other nodes
  INodeMap* map_ = nullptr;
  ILiveData* live_ = nullptr;
  bool connected_ = false;
};

// Holds the lock of the bound map, if there is one, for its scope.
class BoundLock {
 public:
  explicit BoundLock(INodeMap* map);
  ~BoundLock();
  BoundLock(const BoundLock&) = delete;
  BoundLock& operator=(const BoundLock&) = delete;

 private:
  CLock* lock_;
};

}  // namespace GENAPI_NAMESPACE

// One device: the state of all nodes of a description, their lock, caches, callbacks and polling clocks.
//
// Nodes lie at fixed places of one arena and are built at first use. States, ready marks and arena are one block of
// zero pages, so what nobody uses costs no memory.
#pragma once
#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "GenApi/Findings.h"
#include "GenApi/IDestroy.h"
#include "GenApi/IDeviceInfo.h"
#include "GenApi/INodeMap.h"
#include "description/Description.h"
#include "description/DescriptionLoader.h"
#include "nodemap/CallbackRegistry.h"
#include "nodemap/EvaluationStep.h"
#include "nodemap/LiveData.h"
#include "nodemap/NodeLayout.h"
#include "nodemap/NodeState.h"
#include "nodemap/RegisterCache.h"

namespace GENAPI_NAMESPACE {

class NodeBase;
class PollClock;

// What a client imposed on a node. Rare, so kept beside the nodes.
struct Imposed {
  EAccessMode accessMode = RW;
  EVisibility visibility = Beginner;
  bool hasIntegerMin = false, hasIntegerMax = false, hasFloatMin = false, hasFloatMax = false;
  int64_t integerMin = 0, integerMax = 0;
  double floatMin = 0, floatMax = 0;
};

class NodeMap final : public INodeMap, public IDestroy, public IDeviceInfo, public IFindings, public ILiveData {
 public:
  NodeMap(LoadedDescription loaded, const GENICAM_NAMESPACE::gcstring& deviceName);
  ~NodeMap() override;

  // INodeMap
  void GetNodes(NodeList_t& Nodes) const override;
  INode* GetNode(const GENICAM_NAMESPACE::gcstring& Key) const override;
  void InvalidateNodes() const override;
  bool Connect(IPort* pPort, const GENICAM_NAMESPACE::gcstring& PortName) const override;
  bool Connect(IPort* pPort) const override;
  GENICAM_NAMESPACE::gcstring GetDeviceName() const override { return deviceName_; }
  void Poll(int64_t ElapsedTime) override;
  CLock& GetLock() const override { return lock_; }
  uint64_t GetNumNodes() const override { return description_->nodeCount(); }
  bool ParseSwissKnifes(GENICAM_NAMESPACE::gcstring_vector* pErrorList) const override;

  void Destroy() override { delete this; }

  // IDeviceInfo
  GENICAM_NAMESPACE::gcstring GetModelName() const override;
  GENICAM_NAMESPACE::gcstring GetVendorName() const override;
  GENICAM_NAMESPACE::gcstring GetToolTip() const override;
  GENICAM_NAMESPACE::gcstring GetStandardNameSpace() const override;
  void GetGenApiVersion(GENICAM_NAMESPACE::Version_t& Version, uint16_t& Build) const override;
  void GetSchemaVersion(GENICAM_NAMESPACE::Version_t& Version) const override;
  void GetDeviceVersion(GENICAM_NAMESPACE::Version_t& Version) const override;
  GENICAM_NAMESPACE::gcstring GetProductGuid() const override;
  GENICAM_NAMESPACE::gcstring GetVersionGuid() const override;

  void GetFindings(std::vector<Finding>& Findings) const override;

  // ILiveData
  void chunkPorts(NodeList_t& nodes) override;
  void eventNodes(NodeList_t& nodes) override;
  void dropPortSilently(INode* portNode, bool accessMayChange) override;
  void changeTogether(LiveChange& change) override;
  std::string pathTo(INode* node) const override;
  MapEndRing& endObservers() override { return endObservers_; }

  // --- for the nodes; all of it under the lock unless said otherwise ---

  const Description& description() const { return *description_; }
  const DependencyGraph& graph() const { return description_->graph(); }
  const NodeLayout& layout() const { return layout_; }
  const std::string& sourceName() const { return sourceName_; }

  // The node, built now if need be. Needs no lock.
  NodeBase& node(NodeIndex index) const {
    if (!ready_[index].load(std::memory_order_acquire)) build(index);
    return *placeOf(index);
  }
  // The node if it was built, else null. Needs no lock.
  NodeBase* nodeIfBuilt(NodeIndex index) const {
    return ready_[index].load(std::memory_order_acquire) ? placeOf(index) : nullptr;
  }
  NodeState& state(NodeIndex index) const { return states_[index]; }

  // Runs one public operation: takes the lock, runs the body, and, when this was the outermost operation of the thread
  // and something was collected, fires the callbacks: inside the lock, then outside. What the body throws leaves after
  // the callbacks of what was really changed.
  template <class Body>
  auto operate(NodeBase* addressed, Body&& body) const -> decltype(body());

  // Throws LogicalErrorException inside too many callbacks of callbacks. Writes ask before they change anything.
  static void requireShallowNesting();

  // The number of the last invalidation.
  uint64_t stamp() const { return stamp_; }
  // Drops what followed from the node's value in everything that depends on it.
  void dropDependents(NodeIndex index) const;
  // Something may be remembered from now on.
  void noteUse() const { inUse_ = true; }
  // The same for a port, which access modes depend on too.
  void dropPort(NodeIndex index, bool accessMayChange = true) const;
  // Drops the node's own caches; a register also forgets the content of its place.
  void dropNode(NodeIndex index) const;
  // Adds the node, or everything that depends on it, to what is called back at the end of the operation.
  void collect(NodeIndex index) const {
    if (states_[index].flags & kHasCallbacks) collected_.push_back(index);
  }
  void collectDependents(NodeIndex index) const;
  // The node's value has changed: drops and collects what depends on it; then the node itself is collected too.
  void changed(NodeIndex index) const;
  // Drops and collects the node with everything that depends on it. Access modes and limits that follow from no value
  // may be spared.
  void invalidated(NodeIndex index, bool evenSteady = true) const;
  // Runs a change of remembered content that a read has brought about: evaluations under way that have used nothing
  // else yet may keep their results all the same.
  template <class Change>
  void sparingEvaluations(Change&& change) const;

  RegisterCache& registers() const { return registers_; }
  void forgetPlace(NodeIndex user) const noexcept;
  // Whether content that came from a write answers reads of that register.
  bool mayUseWritten(NodeIndex user) const;

  EvaluationStep*& evaluation() const { return evaluation_; }
  // "Addressed > Inner > Refusing"
  std::string pathTo(const NodeBase& refusing) const;

  const Imposed* imposed(NodeIndex index) const;
  Imposed& impose(NodeIndex index) const;  // marks the node

  CallbackHandleType addCallback(NodeIndex index, CNodeCallback* callback) const;
  bool removeCallback(NodeIndex index, CallbackHandleType handle) const;
  void deregister(CallbackHandleType handle) const;

  // Access modes of categories are kept until this changes.
  uint32_t categoryEpoch() const { return categoryEpoch_; }
  void renewCategories() const { ++categoryEpoch_; }
  // Set while an access mode computation ran into itself: nothing on the way back is kept.
  bool& accessCycle() const { return accessCycle_; }
  int& accessDepth() const { return accessDepth_; }
  // While Poll runs, noticed changes fire with it.
  bool isPolling() const { return polling_; }
  WalkScratch& scratch() const { return scratch_; }

 private:
  class Operation;

  NodeBase* placeOf(NodeIndex index) const { return reinterpret_cast<NodeBase*>(arena_ + layout_.offset(index)); }
  void build(NodeIndex index) const;
  void dropComputed(NodeIndex index, bool evenSteady) const;
  INode* publicNode(NodeIndex index) const;

  std::shared_ptr<const Description> description_;
  std::string sourceName_;
  GENICAM_NAMESPACE::gcstring deviceName_;
  const NodeLayout& layout_;

  // One block of zero pages: states, ready marks, arena.
  void* block_ = nullptr;
  size_t blockBytes_ = 0;
  NodeState* states_ = nullptr;
  std::atomic<uint8_t>* ready_ = nullptr;
  std::byte* arena_ = nullptr;
  mutable std::mutex buildMutex_;  // a leaf: construction touches no other node and calls nothing

  mutable CLock lock_;
  mutable uint64_t stamp_ = 1;
  mutable EvaluationStep* evaluation_ = nullptr;
  mutable bool inUse_ = false;      // a node was asked or written before; until then there is nothing to drop
  mutable int operationDepth_ = 0;  // of the operation under way; an operation inside a callback starts anew
  mutable std::vector<NodeIndex> collected_;
  mutable RegisterCache registers_{const_cast<NodeMap&>(*this)};
  mutable CallbackRegistry callbacks_;
  mutable std::map<NodeIndex, Imposed> imposed_;
  mutable WalkScratch scratch_;
  mutable uint32_t categoryEpoch_ = 1;
  mutable bool accessCycle_ = false;
  mutable int accessDepth_ = 0;
  mutable bool polling_ = false;
  std::unique_ptr<PollClock> pollClock_;
  MapEndRing endObservers_;
};

// The frame of one public call. Leaving it gives the lock back.
class NodeMap::Operation {
 public:
  explicit Operation(const NodeMap& map) : map_(map) {
    map.lock_.Lock();
    evaluation_ = map.evaluation_;
    map.evaluation_ = nullptr;
    ++map.operationDepth_;
  }
  ~Operation() {
    if (held_) leave();
  }
  Operation(const Operation&) = delete;
  Operation& operator=(const Operation&) = delete;
  bool mustFire() const { return held_ && map_.operationDepth_ == 1 && !map_.collected_.empty(); }
  // Fires what was collected and gives the lock back in between. Throws the first exception of a callback.
  void fire(NodeBase* addressed);

 private:
  void leave() {
    --map_.operationDepth_;
    map_.evaluation_ = evaluation_;
    map_.lock_.Unlock();
    held_ = false;
  }
  const NodeMap& map_;
  EvaluationStep* evaluation_;  // of an operation that this one interrupts, from inside a port
  bool held_ = true;
};

template <class Body>
auto NodeMap::operate(NodeBase* addressed, Body&& body) const -> decltype(body()) {
  Operation operation(*this);
  if (addressed) noteUse();
  try {
    if constexpr (std::is_void_v<decltype(body())>) {
      body();
      if (operation.mustFire()) [[unlikely]] {
        operation.fire(addressed);
      }
    } else {
      decltype(body()) result = body();
      if (operation.mustFire()) [[unlikely]] {
        operation.fire(addressed);
      }
      return result;
    }
  } catch (...) {
    if (operation.mustFire()) {
      try {
        operation.fire(addressed);
      } catch (...) {  // NOLINT: the operation's own failure is the one to report
      }
    }
    throw;
  }
}

template <class Change>
void NodeMap::sparingEvaluations(Change&& change) const {
  for (EvaluationStep* step = evaluation_; step && step->mayBeSpared(); step = step->up()) step->spare(true);
  change();
  for (EvaluationStep* step = evaluation_; step && step->isSpared(); step = step->up()) step->spare(false);
}

inline EvaluationStep::~EvaluationStep() {
  map_.evaluation() = up_;
  if (up_) up_->consumed_ = true;
}

}  // namespace GENAPI_NAMESPACE

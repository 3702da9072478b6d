#include "nodemap/NodeMap.h"

#include <sys/mman.h>

#include <algorithm>
#include <cstdlib>
#include <new>

#include "Base/GCException.h"
#include "description/Limits.h"
#include "nodemap/PollClock.h"
#include "nodes/FormulaSet.h"
#include "nodes/NodeBase.h"
#include "nodes/NodeFactory.h"
#include "nodes/PortNode.h"

namespace GENAPI_NAMESPACE {

using GENICAM_NAMESPACE::gcstring;
using GENICAM_NAMESPACE::gcstring_vector;
using GENICAM_NAMESPACE::Version_t;

namespace {

constexpr size_t alignUp(size_t bytes, size_t unit) {
  return (bytes + unit - 1) / unit * unit;
}

// Fresh zero pages from the system: only what is used will cost memory, whatever the heap holds. A few pages come
// faster from the heap.
constexpr size_t kFewPages = 32 << 10;

void* zeroedBlock(size_t bytes) {
  void* const block = bytes <= kFewPages
                          ? std::calloc(1, bytes)
                          : mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (block == nullptr || block == MAP_FAILED) throw std::bad_alloc();
  return block;
}

void freeBlock(void* block, size_t bytes) {
  bytes <= kFewPages ? std::free(block) : static_cast<void>(munmap(block, bytes));
}

// Operations inside callbacks of operations, of this thread.
thread_local int firingNesting = 0;

}  // namespace

NodeMap::NodeMap(LoadedDescription loaded, const gcstring& deviceName)
    : description_(std::move(loaded.description)),
      sourceName_(std::move(loaded.sourceName)),
      deviceName_(deviceName),
      layout_(NodeLayout::of(*description_)) {
  const size_t count = description_->nodeCount();
  const size_t readyAt = count * sizeof(NodeState);
  const size_t arenaAt = alignUp(readyAt + count, alignof(std::max_align_t));
  blockBytes_ = std::max<size_t>(arenaAt + layout_.arenaBytes(), 1);
  block_ = zeroedBlock(blockBytes_);
  auto* bytes = static_cast<std::byte*>(block_);
  states_ = reinterpret_cast<NodeState*>(bytes);
  ready_ = reinterpret_cast<std::atomic<uint8_t>*>(bytes + readyAt);
  arena_ = bytes + arenaAt;
}

NodeMap::~NodeMap() {
  endObservers_.end();
  callbacks_.clear();  // while the nodes they point to still live
  for (NodeIndex index = 0; index < description_->nodeCount(); ++index) {
    if (NodeBase* node = nodeIfBuilt(index)) node->~NodeBase();
  }
  freeBlock(block_, blockBytes_);
}

void NodeMap::build(NodeIndex index) const {
  const std::lock_guard<std::mutex> lock(buildMutex_);
  if (ready_[index].load(std::memory_order_relaxed)) return;
  constructNode(arena_ + layout_.offset(index), const_cast<NodeMap&>(*this), index);
  ready_[index].store(1, std::memory_order_release);
}

INode* NodeMap::publicNode(NodeIndex index) const {
  return &node(index);
}

void NodeMap::GetNodes(NodeList_t& Nodes) const {
  Nodes.clear();
  Nodes.reserve(description_->nodeCount());
  for (NodeIndex index = 0; index < description_->nodeCount(); ++index) Nodes.push_back(publicNode(index));
}

INode* NodeMap::GetNode(const gcstring& Key) const {
  std::string_view name = Key.view();
  int wanted = _UndefinedNameSpace;
  if (const size_t colon = name.find("::"); colon != std::string_view::npos) {
    const std::string_view prefix = name.substr(0, colon);
    if (prefix == "Std") {
      wanted = Standard;
    } else if (prefix == "Cust") {
      wanted = Custom;
    } else {
      return nullptr;
    }
    name.remove_prefix(colon + 2);
  }
  const NodeIndex index = description_->indexOf(name);
  if (index == kNoNode) return nullptr;
  if (wanted != _UndefinedNameSpace && description_->node(index).nameSpace != wanted) return nullptr;
  return publicNode(index);
}

void NodeMap::InvalidateNodes() const {
  operate(nullptr, [&] {
    ++stamp_;
    for (NodeIndex index = 0; index < description_->nodeCount(); ++index) dropNode(index);
    registers_.dropAll();
    renewCategories();
    for (const NodeIndex index : callbacks_.nodes()) collect(index);
  });
}

bool NodeMap::Connect(IPort* pPort, const gcstring& PortName) const {
  const NodeIndex index = description_->indexOf(PortName.view());
  if (index == kNoNode || description_->node(index).type != NodeType::Port) return false;
  operate(nullptr, [&] { static_cast<PortNode&>(node(index)).connect(pPort); });
  return true;
}

bool NodeMap::Connect(IPort* pPort) const {
  return Connect(pPort, "Device");
}

void NodeMap::Poll(int64_t ElapsedTime) {
  if (ElapsedTime < 0)
    throw INVALID_ARGUMENT_EXCEPTION("Poll: elapsed time %ld is negative", static_cast<long>(ElapsedTime));
  if (description_->polledNodes().empty()) return;
  operate(nullptr, [&] {
    if (!pollClock_) pollClock_ = std::make_unique<PollClock>(*this);
    struct Mark {
      bool& polling;
      const bool before = std::exchange(polling, true);
      ~Mark() { polling = before; }
    } mark{polling_};
    pollClock_->advance(ElapsedTime);
  });
}

bool NodeMap::ParseSwissKnifes(gcstring_vector* pErrorList) const {
  bool sound = true;
  for (NodeIndex index = 0; index < description_->nodeCount(); ++index) {
    if (!hasFormulas(description_->node(index).type)) continue;
    for (const std::string& defect : FormulaSet::of(*description_, index).defects()) {
      sound = false;
      if (pErrorList) pErrorList->push_back(gcstring(std::string_view(defect)));
    }
  }
  return sound;
}

gcstring NodeMap::GetModelName() const {
  return gcstring(description_->device().modelName);
}
gcstring NodeMap::GetVendorName() const {
  return gcstring(description_->device().vendorName);
}
gcstring NodeMap::GetToolTip() const {
  return gcstring(description_->device().toolTip);
}
gcstring NodeMap::GetStandardNameSpace() const {
  return gcstring(description_->device().standardNameSpace);
}
gcstring NodeMap::GetProductGuid() const {
  return gcstring(description_->device().productGuid);
}
gcstring NodeMap::GetVersionGuid() const {
  return gcstring(description_->device().versionGuid);
}
void NodeMap::GetSchemaVersion(Version_t& Version) const {
  Version = description_->device().schemaVersion;
}
void NodeMap::GetDeviceVersion(Version_t& Version) const {
  Version = description_->device().deviceVersion;
}

void NodeMap::GetGenApiVersion(Version_t& Version, uint16_t& Build) const {
  Version.Major = 3;
  Version.Minor = 4;
  Version.SubMinor = 2;
  Build = 0;
}

void NodeMap::GetFindings(std::vector<Finding>& Findings) const {
  for (const FindingRecord& each : description_->findings()) {
    const std::string_view node = each.node == kNoNode ? std::string_view() : description_->node(each.node).name();
    Findings.push_back({each.severity, each.line, gcstring(node), gcstring(std::string_view(each.element)),
                        gcstring(std::string_view(each.reason))});
  }
  for (NodeIndex index = 0; index < description_->nodeCount(); ++index) {
    if (!hasFormulas(description_->node(index).type)) continue;
    const FormulaSet* formulas = FormulaSet::ifKnown(*description_, index);
    if (!formulas) continue;
    for (const std::string& defect : formulas->defects()) {
      Findings.push_back({svDefect, description_->lineOf(index), gcstring(description_->node(index).name()), "Formula",
                          gcstring(std::string_view(defect))});
    }
  }
}

void NodeMap::chunkPorts(NodeList_t& nodes) {
  nodes.clear();
  for (const NodeIndex index : description_->chunkPorts()) nodes.push_back(publicNode(index));
}

void NodeMap::eventNodes(NodeList_t& nodes) {
  nodes.clear();
  for (const NodeIndex index : description_->eventNodes()) nodes.push_back(publicNode(index));
}

void NodeMap::dropPortSilently(INode* portNode, bool accessMayChange) {
  operate(nullptr, [&] { dropPort(static_cast<NodeBase*>(portNode)->index(), accessMayChange); });
}

void NodeMap::changeTogether(LiveChange& change) {
  operate(nullptr, [&] {
    for (INode* each : change.apply()) invalidated(static_cast<NodeBase*>(each)->index(), change.accessMayChange);
  });
}

void NodeMap::dropComputed(NodeIndex index, bool evenSteady) const {
  NodeState& dropped = states_[index];
  dropped.stamp = stamp_;
  const uint16_t flags = dropped.flags;
  uint16_t lost = kForgettable;
  if (!evenSteady) {
    if (dropped.traits & kSteadyAccessMode) lost &= static_cast<uint16_t>(~kHasAccessMode);
    if (dropped.traits & kSteadyLimits) lost &= static_cast<uint16_t>(~(kHasMin | kHasMax));
  }
  dropped.flags = flags & static_cast<uint16_t>(~lost);
  if (flags & kHasPlace) placeOf(index)->forgetContent();
}

void NodeMap::dropNode(NodeIndex index) const {
  dropComputed(index, true);
}

void NodeMap::dropDependents(NodeIndex index) const {
  ++stamp_;
  for (const NodeIndex each : graph().dependents(index, scratch_)) dropComputed(each, false);
}

void NodeMap::dropPort(NodeIndex index, bool accessMayChange) const {
  ++stamp_;
  if (!inUse_) return;  // ports are connected to every new map, which must not take the graph
  for (const NodeIndex each : graph().dependents(index, scratch_)) dropComputed(each, accessMayChange);
  dropComputed(index, accessMayChange);
}

void NodeMap::collectDependents(NodeIndex index) const {
  for (const NodeIndex each : graph().dependents(index, scratch_)) collect(each);
}

void NodeMap::changed(NodeIndex index) const {
  ++stamp_;
  for (const NodeIndex each : graph().dependents(index, scratch_)) {
    dropComputed(each, false);
    collect(each);
  }
  collect(index);
}

void NodeMap::invalidated(NodeIndex index, bool evenSteady) const {
  ++stamp_;
  for (const NodeIndex each : graph().dependents(index, scratch_)) {
    dropComputed(each, evenSteady);
    collect(each);
  }
  dropComputed(index, evenSteady);
  collect(index);
}

void NodeMap::forgetPlace(NodeIndex user) const noexcept {
  if (states_[user].flags & kHasPlace) placeOf(user)->forgetPlace();
}

bool NodeMap::mayUseWritten(NodeIndex user) const {
  return node(user).mayUseWritten();
}

std::string NodeMap::pathTo(INode* node) const {
  return pathTo(*static_cast<NodeBase*>(node));
}

std::string NodeMap::pathTo(const NodeBase& refusing) const {
  std::vector<const NodeBase*> chain;
  for (const EvaluationStep* step = evaluation_; step; step = step->up()) chain.push_back(&step->node());
  if (chain.empty() || chain.front() != &refusing) chain.insert(chain.begin(), &refusing);
  std::string path;
  for (auto each = chain.rbegin(); each != chain.rend(); ++each) {
    if (each != chain.rbegin() && *each == *(each - 1)) continue;  // a node that asks itself, for its limits
    if (!path.empty()) path += " > ";
    path += (*each)->name();
  }
  return path;
}

const Imposed* NodeMap::imposed(NodeIndex index) const {
  return states_[index].flags & kImposed ? &imposed_.find(index)->second : nullptr;
}

Imposed& NodeMap::impose(NodeIndex index) const {
  Imposed& entry = imposed_[index];
  states_[index].flags |= kImposed;
  return entry;
}

CallbackHandleType NodeMap::addCallback(NodeIndex index, CNodeCallback* callback) const {
  const AutoLock lock(lock_);
  const CallbackHandleType handle = callbacks_.add(*this, index, callback);
  states_[index].flags |= kHasCallbacks;
  return handle;
}

bool NodeMap::removeCallback(NodeIndex index, CallbackHandleType handle) const {
  const AutoLock lock(lock_);
  const bool removed = callbacks_.remove(index, handle);
  if (!callbacks_.has(index)) states_[index].flags &= static_cast<uint16_t>(~kHasCallbacks);
  return removed;
}

void NodeMap::deregister(CallbackHandleType handle) const {
  const AutoLock lock(lock_);
  const NodeIndex index = callbacks_.nodeOf(handle);
  if (index != kNoNode) removeCallback(index, handle);
}

void NodeMap::requireShallowNesting() {
  if (firingNesting < kMaxOperationNesting) return;
  throw LOGICAL_ERROR_EXCEPTION("more than %d operations inside the callbacks of each other", kMaxOperationNesting);
}

void NodeMap::Operation::fire(NodeBase* addressed) {
  std::vector<NodeIndex> nodes = std::move(map_.collected_);
  map_.collected_.clear();
  requireShallowNesting();
  std::sort(nodes.begin(), nodes.end());
  nodes.erase(std::unique(nodes.begin(), nodes.end()), nodes.end());
  if (addressed) {
    const auto first = std::find(nodes.begin(), nodes.end(), addressed->index());
    if (first != nodes.end()) std::rotate(nodes.begin(), first, first + 1);
  }
  CallbackList list;
  for (const NodeIndex each : nodes) map_.callbacks_.append(each, list);

  std::exception_ptr failure;
  const auto call = [&](ECallbackType type) {
    ++firingNesting;
    for (const auto& each : list) {
      try {
        each->call(type);
      } catch (...) {
        if (!failure) failure = std::current_exception();
      }
    }
    --firingNesting;
  };
  // An operation inside a callback is one of its own: it fires at its own end.
  const int depth = std::exchange(map_.operationDepth_, 0);
  const bool polling = std::exchange(map_.polling_, false);
  call(cbPostInsideLock);
  map_.operationDepth_ = depth;
  map_.polling_ = polling;
  leave();
  call(cbPostOutsideLock);
  if (failure) std::rethrow_exception(failure);
}

}  // namespace GENAPI_NAMESPACE

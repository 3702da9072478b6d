#include "evaluation/Dispatch.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "text/Refusal.h"

namespace GENAPI_NAMESPACE {

namespace {

// Operations of this thread inside ports and callbacks of each other, on any map.
thread_local int nesting = 0;

constexpr size_t kSearchSteps = 16;  // of a search among dependents, for comparison with a walk over them

}  // namespace

void Dispatch::requireShallowNesting() {
  if (nesting < kMaxOperationNesting) return;
  refuse<LogicalErrorException>("more than {} operations inside the callbacks of each other", kMaxOperationNesting);
}

// --- changes ---

void Dispatch::collect(std::span<const NodeIndex> nodes) {
  if (callbacks_.isEmpty()) return;
  if (callbacks_.nodeCount() * kSearchSteps > nodes.size()) {
    for (const NodeIndex each : nodes) collect(each);
    return;
  }
  callbacks_.forEachNode([&](NodeIndex node) {
    if (std::binary_search(nodes.begin(), nodes.end(), node)) collected_.push_back(node);
  });
}

bool Dispatch::isCovered(NodeIndex node) {
  if (lastChanged_ == kNoNode || rememberedAtChange_ != evaluation_.remembered()) return false;
  const std::span<const NodeIndex> dropped = evaluation_.dependents(lastChanged_);
  return std::binary_search(dropped.begin(), dropped.end(), node);
}

bool Dispatch::dropAndCollectDependents(NodeIndex node) {
  // What depends on a node depends on its sources, too: up a chain of written nodes one walk is enough.
  if (isCovered(node)) return false;
  collect(evaluation_.dropDependents(node));
  lastChanged_ = node;
  rememberedAtChange_ = evaluation_.remembered();
  return true;
}

bool Dispatch::changed(NodeIndex node) {
  const bool walked = dropAndCollectDependents(node);
  collect(node);
  return walked ? state_.nodes[node].dropped == evaluation_.revision() : evaluation_.graph().dependsOnItself(node);
}

void Dispatch::noticed(NodeIndex node) {
  if (polling_)
    changed(node);
  else
    evaluation_.dropDependents(node);
}

void Dispatch::invalidated(NodeIndex node, bool evenSteady) {
  collect(evaluation_.dropDependents(node, evenSteady));
  evaluation_.drop(node, evenSteady);
  collect(node);
}

void Dispatch::invalidatedAll() {
  evaluation_.dropAll();
  callbacks_.forEachNode([&](NodeIndex node) { collect(node); });
}

void Dispatch::portChanged(NodeIndex port, bool evenSteady) {
  // Ports are connected to every new map, which must not build the graph.
  if (!evaluation_.hasMemory()) return;
  evaluation_.dropDependents(port, evenSteady);
  evaluation_.drop(port, evenSteady);
}

// --- callbacks ---

CallbackHandleType Dispatch::addCallback(INode& owner, NodeIndex node, CNodeCallback* callback) {
  const AutoLock lock(lock_);
  const CallbackHandleType handle = callbacks_.add(owner, node, callback);
  state_.nodes[node].marks |= kHasCallbacks;
  return handle;
}

bool Dispatch::removeCallback(NodeIndex node, CallbackHandleType handle) {
  const AutoLock lock(lock_);
  const bool removed = callbacks_.remove(node, handle);
  if (!callbacks_.has(node)) state_.nodes[node].marks &= static_cast<uint8_t>(~kHasCallbacks);
  return removed;
}

void Dispatch::Operation::interrupt() {
  if (nesting >= kMaxOperationNesting) {
    --dispatch_.operations_;
    dispatch_.lock_.Unlock();
    requireShallowNesting();
  }
  ++nesting;
  interrupted_ = dispatch_.evaluation_.suspend();
}

void Dispatch::Operation::resume() {
  dispatch_.evaluation_.resume(interrupted_);
  --nesting;
}

void Dispatch::Operation::fire(NodeIndex addressed) {
  std::vector<NodeIndex> nodes = std::exchange(dispatch_.collected_, {});
  dispatch_.lastChanged_ = kNoNode;
  requireShallowNesting();
  std::sort(nodes.begin(), nodes.end());
  nodes.erase(std::unique(nodes.begin(), nodes.end()), nodes.end());
  const auto first = std::find(nodes.begin(), nodes.end(), addressed);
  if (first != nodes.end()) std::rotate(nodes.begin(), first, first + 1);
  CallbackList list;
  for (const NodeIndex each : nodes) dispatch_.callbacks_.append(each, list);

  std::exception_ptr failure;
  const auto call = [&](ECallbackType type) {
    ++nesting;
    for (const auto& each : list) {
      try {
        each->call(type);
      } catch (...) {
        if (!failure) failure = std::current_exception();
      }
    }
    --nesting;
  };
  // An operation inside a callback is one of its own: it fires at its own end.
  const int operations = std::exchange(dispatch_.operations_, 0);
  const bool polling = std::exchange(dispatch_.polling_, false);
  dispatch_.evaluation_.endCall();
  call(cbPostInsideLock);
  dispatch_.operations_ = operations;
  dispatch_.polling_ = polling;
  leave();
  call(cbPostOutsideLock);
  if (failure) std::rethrow_exception(failure);
}

}  // namespace GENAPI_NAMESPACE

// Who wants to be called back when a node changes.
#pragma once
#include <atomic>
#include <map>
#include <memory>
#include <vector>

#include "GenApi/NodeCallback.h"
#include "description/NodeIndex.h"

namespace GENAPI_NAMESPACE {

// One registration. Whoever drops the last reference destroys the callback, so a list that is being fired keeps what it
// still has to call; a registration that has ended meanwhile is not called any more.
class CallbackRecord {
 public:
  CallbackRecord(CNodeCallback* callback, CallbackHandleType handle) : callback_(callback), handle_(handle) {}
  ~CallbackRecord() { callback_->Destroy(); }
  CallbackRecord(const CallbackRecord&) = delete;
  CallbackRecord& operator=(const CallbackRecord&) = delete;
  void call(ECallbackType type) const {
    if (!ended_.load(std::memory_order_acquire)) (*callback_)(type);
  }
  void end() { ended_.store(true, std::memory_order_release); }
  CallbackHandleType handle() const { return handle_; }

 private:
  CNodeCallback* callback_;
  CallbackHandleType handle_;
  std::atomic<bool> ended_{false};
};

using CallbackList = std::vector<std::shared_ptr<CallbackRecord>>;

// The registrations of one node map; guarded by its lock.
class CallbackRegistry {
 public:
  CallbackRegistry() = default;
  CallbackRegistry(const CallbackRegistry&) = delete;
  CallbackRegistry& operator=(const CallbackRegistry&) = delete;
  ~CallbackRegistry() { clear(); }
  // Takes over the callback, also when it throws std::bad_alloc.
  CallbackHandleType add(const INodeMap& map, NodeIndex node, CNodeCallback* callback);
  // False when the handle is not one of the node's.
  bool remove(NodeIndex node, CallbackHandleType handle);
  // Ends and destroys all registrations.
  void clear() noexcept;
  bool has(NodeIndex node) const { return lists_.count(node) != 0; }
  // Appends the node's registrations in the order in which they were made.
  void append(NodeIndex node, CallbackList& list) const;
  std::vector<NodeIndex> nodes() const;
  // The node that the handle belongs to, or kNoNode.
  NodeIndex nodeOf(CallbackHandleType handle) const;

 private:
  std::map<NodeIndex, CallbackList> lists_;
};

}  // namespace GENAPI_NAMESPACE

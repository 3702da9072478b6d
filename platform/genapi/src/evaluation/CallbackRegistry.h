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
  explicit CallbackRecord(CNodeCallback* callback) : callback_(callback) {}
  ~CallbackRecord() { callback_->Destroy(); }
  CallbackRecord(const CallbackRecord&) = delete;
  CallbackRecord& operator=(const CallbackRecord&) = delete;
  void call(ECallbackType type) const {
    if (!ended_.load(std::memory_order_acquire)) (*callback_)(type);
  }
  void end() { ended_.store(true, std::memory_order_release); }

 private:
  CNodeCallback* callback_;
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
  // Takes over the callback, also when it throws std::bad_alloc. `owner` is what deregisters by handle alone.
  CallbackHandleType add(INode& owner, NodeIndex node, CNodeCallback* callback);
  // False when the handle is not one of the node's.
  bool remove(NodeIndex node, CallbackHandleType handle);
  // Ends and destroys all registrations.
  void clear() noexcept;
  bool isEmpty() const { return lists_.empty(); }
  size_t nodeCount() const { return lists_.size(); }
  bool has(NodeIndex node) const { return lists_.count(node) != 0; }
  // Appends the node's registrations in the order in which they were made.
  void append(NodeIndex node, CallbackList& list) const;
  template <class Visit>
  void forEachNode(Visit&& visit) const {
    for (const auto& [node, records] : lists_) visit(node);
  }

 private:
  using Records = std::map<CallbackHandleType, std::shared_ptr<CallbackRecord>>;  // handles count up
  std::map<NodeIndex, Records> lists_;
};

}  // namespace GENAPI_NAMESPACE

#include "evaluation/CallbackRegistry.h"

#include <mutex>
#include <unordered_map>
#include <utility>

#include "GenApi/INode.h"

namespace GENAPI_NAMESPACE {

namespace {

// Which node a handle belongs to, for Deregister(), which is given nothing else. Touched only when callbacks are
// registered and deregistered.
struct HandleDirectory {
  std::mutex mutex;
  std::unordered_map<CallbackHandleType, INode*> nodes;
  CallbackHandleType next = 1;
};

HandleDirectory& directory() {
  static HandleDirectory* const theDirectory = new HandleDirectory;  // outlives every node map, static ones included
  return *theDirectory;
}

CallbackHandleType enter(INode& node) {
  HandleDirectory& all = directory();
  const std::lock_guard<std::mutex> lock(all.mutex);
  const CallbackHandleType handle = all.next++;
  all.nodes.emplace(handle, &node);
  return handle;
}

void forget(CallbackHandleType handle) {
  HandleDirectory& all = directory();
  const std::lock_guard<std::mutex> lock(all.mutex);
  all.nodes.erase(handle);
}

INode* nodeOf(CallbackHandleType handle) {
  HandleDirectory& all = directory();
  const std::lock_guard<std::mutex> lock(all.mutex);
  const auto found = all.nodes.find(handle);
  return found == all.nodes.end() ? nullptr : found->second;
}

}  // namespace

void CallbackRegistry::clear() noexcept {
  const auto ended = std::exchange(lists_, {});  // callbacks destroyed here find no registration any more
  for (const auto& [node, records] : ended) {
    for (const auto& [handle, record] : records) {
      record->end();
      forget(handle);
    }
  }
}

CallbackHandleType CallbackRegistry::add(INode& owner, NodeIndex node, CNodeCallback* callback) {
  std::shared_ptr<CallbackRecord> record;
  CallbackHandleType handle = 0;
  try {
    handle = enter(owner);
    record = std::make_shared<CallbackRecord>(callback);
  } catch (...) {
    if (handle) forget(handle);
    callback->Destroy();
    throw;
  }
  try {
    lists_[node].emplace(handle, std::move(record));
  } catch (...) {
    const auto list = lists_.find(node);
    if (list != lists_.end() && list->second.empty()) lists_.erase(list);
    forget(handle);
    throw;
  }
  return handle;
}

bool CallbackRegistry::remove(NodeIndex node, CallbackHandleType handle) {
  const auto list = lists_.find(node);
  if (list == lists_.end()) return false;
  const auto record = list->second.extract(handle);  // destroyed after the list is in order again
  if (record.empty()) return false;
  record.mapped()->end();
  if (list->second.empty()) lists_.erase(list);
  forget(handle);
  return true;
}

void CallbackRegistry::append(NodeIndex node, CallbackList& list) const {
  const auto found = lists_.find(node);
  if (found == lists_.end()) return;
  for (const auto& [handle, record] : found->second) list.push_back(record);
}

void Deregister(CallbackHandleType hCallback) {
  if (INode* node = nodeOf(hCallback)) node->DeregisterCallback(hCallback);
}

}  // namespace GENAPI_NAMESPACE

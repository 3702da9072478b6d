#include "nodemap/CallbackRegistry.h"

#include <algorithm>
#include <mutex>
#include <unordered_map>
#include <utility>

#include "GenApi/INodeMap.h"
#include "nodemap/NodeMap.h"

namespace GENAPI_NAMESPACE {

namespace {

// Which map a handle belongs to, for Deregister(), which is given nothing else. Touched only when callbacks are
// registered and deregistered.
struct HandleDirectory {
  std::mutex mutex;
  std::unordered_map<CallbackHandleType, const INodeMap*> maps;
  CallbackHandleType next = 1;
};

HandleDirectory& directory() {
  static HandleDirectory* const theDirectory = new HandleDirectory;  // outlives every node map, static ones included
  return *theDirectory;
}

CallbackHandleType enrol(const INodeMap& map) {
  HandleDirectory& all = directory();
  const std::lock_guard<std::mutex> lock(all.mutex);
  const CallbackHandleType handle = all.next++;
  all.maps.emplace(handle, &map);
  return handle;
}

void strike(CallbackHandleType handle) {
  HandleDirectory& all = directory();
  const std::lock_guard<std::mutex> lock(all.mutex);
  all.maps.erase(handle);
}

const INodeMap* mapOf(CallbackHandleType handle) {
  HandleDirectory& all = directory();
  const std::lock_guard<std::mutex> lock(all.mutex);
  const auto found = all.maps.find(handle);
  return found == all.maps.end() ? nullptr : found->second;
}

}  // namespace

void CallbackRegistry::clear() noexcept {
  const auto ended = std::exchange(lists_, {});  // callbacks destroyed here find no registration any more
  for (const auto& [node, list] : ended) {
    for (const auto& record : list) {
      record->end();
      strike(record->handle());
    }
  }
}

CallbackHandleType CallbackRegistry::add(const INodeMap& map, NodeIndex node, CNodeCallback* callback) {
  std::shared_ptr<CallbackRecord> record;
  CallbackHandleType handle = 0;
  try {
    handle = enrol(map);
    record = std::make_shared<CallbackRecord>(callback, handle);
  } catch (...) {
    if (handle) strike(handle);
    callback->Destroy();
    throw;
  }
  try {
    lists_[node].push_back(std::move(record));
  } catch (...) {
    const auto list = lists_.find(node);
    if (list != lists_.end() && list->second.empty()) lists_.erase(list);
    strike(handle);
    throw;
  }
  return handle;
}

bool CallbackRegistry::remove(NodeIndex node, CallbackHandleType handle) {
  const auto list = lists_.find(node);
  if (list == lists_.end()) return false;
  const auto record = std::find_if(list->second.begin(), list->second.end(),
                                   [&](const auto& each) { return each->handle() == handle; });
  if (record == list->second.end()) return false;
  const std::shared_ptr<CallbackRecord> last = *record;  // destroyed after the list is in order again
  last->end();
  list->second.erase(record);
  if (list->second.empty()) lists_.erase(list);
  strike(handle);
  return true;
}

void CallbackRegistry::append(NodeIndex node, CallbackList& list) const {
  const auto found = lists_.find(node);
  if (found != lists_.end()) list.insert(list.end(), found->second.begin(), found->second.end());
}

std::vector<NodeIndex> CallbackRegistry::nodes() const {
  std::vector<NodeIndex> result;
  result.reserve(lists_.size());
  for (const auto& [node, list] : lists_) result.push_back(node);
  return result;
}

NodeIndex CallbackRegistry::nodeOf(CallbackHandleType handle) const {
  for (const auto& [node, list] : lists_) {
    for (const auto& record : list) {
      if (record->handle() == handle) return node;
    }
  }
  return kNoNode;
}

void Deregister(CallbackHandleType hCallback) {
  const auto* map = static_cast<const NodeMap*>(mapOf(hCallback));
  if (map) map->deregister(hCallback);
}

}  // namespace GENAPI_NAMESPACE

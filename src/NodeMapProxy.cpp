#include "NodeMapProxy.h"

#include <utility>

#include "Failure.h"
#include "LoadedMap.h"
#include "Node.h"

namespace orxGenApi {

namespace {

// While the end of a proxy gives up what it stands for: where proxies that end meanwhile put what they stand for.
thread_local orxBase::shared_ref<NodeMapBase>* nextToEnd = nullptr;

}  // namespace

NodeMapProxy::NodeMapProxy(orxBase::shared_ref<NodeMapBase> internal) noexcept
    : internal_(std::move(internal)), target_(internal_ ? internal_->target() : nullptr) {}

NodeMapProxy::~NodeMapProxy() {
  notify();
  if (nextToEnd != nullptr) {
    *nextToEnd = std::move(internal_);
    return;
  }
  // A chain of proxies ends one after the other, not one inside the other: it may be longer than the stack.
  orxBase::shared_ref<NodeMapBase> next = std::move(internal_);
  while (next) {
    orxBase::shared_ref<NodeMapBase> ending = std::exchange(next, {});
    nextToEnd = &next;
    ending.reset();
    nextToEnd = nullptr;
  }
}

void NodeMapProxy::notify() const noexcept {
  if (releaseNotify_ == nullptr) return;
  // What the caller releases in there has ended when the release returns.
  const auto outer = std::exchange(nextToEnd, nullptr);
  try {
    releaseNotify_(userData_);
  } catch (...) {  // it must not throw, and nobody is left to hear of it
  }
  nextToEnd = outer;
}

std::shared_ptr<LoadedMap> NodeMapProxy::loaded() noexcept { return target_->loaded(); }

orxBase::shared_ref<Node> NodeMapProxy::nodeFor(const std::shared_ptr<LoadedMap>& load,
                                                GENAPI_NAMESPACE::INode* engineNode) {
  return target_->nodeFor(load, engineNode);
}

uint32_t NodeMapProxy::GetNode(const char* name, NODE* node) noexcept { return target_->GetNode(name, node); }
uint32_t NodeMapProxy::GetNodeCount(uint32_t* count) noexcept { return target_->GetNodeCount(count); }
uint32_t NodeMapProxy::ListNode(uint32_t index, char* name, size_t& size) noexcept {
  return target_->ListNode(index, name, size);
}
uint32_t NodeMapProxy::ListNodeW(uint32_t index, wchar_t* name, size_t& size) noexcept {
  return target_->ListNodeW(index, name, size);
}
uint32_t NodeMapProxy::GetInfoAsBoolean(TNodeMapInfo info, bool* value) noexcept {
  return target_->GetInfoAsBoolean(info, value);
}
uint32_t NodeMapProxy::GetInfoAsInteger(TNodeMapInfo info, int64_t* value) noexcept {
  return target_->GetInfoAsInteger(info, value);
}
uint32_t NodeMapProxy::GetInfoAsFloat(TNodeMapInfo info, double* value) noexcept {
  return target_->GetInfoAsFloat(info, value);
}
uint32_t NodeMapProxy::GetInfoAsString(TNodeMapInfo info, char* value, size_t& size) noexcept {
  return target_->GetInfoAsString(info, value, size);
}
uint32_t NodeMapProxy::GetInfoAsStringW(TNodeMapInfo info, wchar_t* value, size_t& size) noexcept {
  return target_->GetInfoAsStringW(info, value, size);
}
uint32_t NodeMapProxy::PollNodes(int32_t elapsedMilliseconds) noexcept {
  return target_->PollNodes(elapsedMilliseconds);
}
uint32_t NodeMapProxy::ConnectPort(TReadMem read, TWriteMem write, TPortAccessMode accessMode, void* userData,
                                   const char* portName) noexcept {
  return target_->ConnectPort(read, write, accessMode, userData, portName);
}
uint32_t NodeMapProxy::LoadXMLFile(const char* fileName) noexcept { return target_->LoadXMLFile(fileName); }
uint32_t NodeMapProxy::LoadXMLString(const char* text, size_t length) noexcept {
  return target_->LoadXMLString(text, length);
}
uint32_t NodeMapProxy::DeliverEvent(uint64_t eventId, const void* payload, uint64_t size) noexcept {
  return target_->DeliverEvent(eventId, payload, size);
}
uint32_t NodeMapProxy::DeliverEventEx(const char* eventId, const void* payload, uint64_t size) noexcept {
  return target_->DeliverEventEx(eventId, payload, size);
}

// The one operation that looks whether there is a node map behind it.
uint32_t NodeMapProxy::AttachChunk(uint64_t chunkId, void* base, int64_t offset, int64_t length) noexcept {
  if (target_ == nullptr) {
    const Operation operation{kDelivering, "-NodeMapProxy::AttachChunk", nullptr, nullptr};
    return fail(operation, OXGENAPI_E_INVALID_HANDLE, "No valid NodeMap object assigned");
  }
  return target_->AttachChunk(chunkId, base, offset, length);
}

uint32_t NodeMapProxy::AttachChunkEx(const char* chunkId, void* base, int64_t offset, int64_t length) noexcept {
  return target_->AttachChunkEx(chunkId, base, offset, length);
}
uint32_t NodeMapProxy::UpdateChunks(void* base) noexcept { return target_->UpdateChunks(base); }
uint32_t NodeMapProxy::DetachAllChunks() noexcept { return target_->DetachAllChunks(); }

}  // namespace orxGenApi

#include "NodeMapProxy.h"

#include <utility>

#include "Failure.h"
#include "LoadedMap.h"
#include "Node.h"

namespace orxGenApi {

NodeMapProxy::NodeMapProxy(orxBase::shared_ref<NodeMapBase> internal, TReleaseNotify releaseNotify,
                           void* userData) noexcept
    : internal_(std::move(internal)), releaseNotify_(releaseNotify), userData_(userData) {}

NodeMapProxy::~NodeMapProxy() {
  if (releaseNotify_ == nullptr) return;
  try {
    releaseNotify_(userData_);
  } catch (...) {  // it must not throw, and nobody is left to hear of it
  }
}

std::shared_ptr<LoadedMap> NodeMapProxy::loaded() noexcept {
  return internal_->loaded();
}

orxBase::shared_ref<Node> NodeMapProxy::nodeFor(const std::shared_ptr<LoadedMap>& load,
                                                GENAPI_NAMESPACE::INode* engineNode) {
  return internal_->nodeFor(load, engineNode);
}

uint32_t NodeMapProxy::GetNode(const char* name, NODE* node) noexcept {
  return internal_->GetNode(name, node);
}
uint32_t NodeMapProxy::GetNodeCount(uint32_t* count) noexcept {
  return internal_->GetNodeCount(count);
}
uint32_t NodeMapProxy::ListNode(uint32_t index, char* name, size_t& size) noexcept {
  return internal_->ListNode(index, name, size);
}
uint32_t NodeMapProxy::ListNodeW(uint32_t index, wchar_t* name, size_t& size) noexcept {
  return internal_->ListNodeW(index, name, size);
}
uint32_t NodeMapProxy::GetInfoAsBoolean(TNodeMapInfo info, bool* value) noexcept {
  return internal_->GetInfoAsBoolean(info, value);
}
uint32_t NodeMapProxy::GetInfoAsInteger(TNodeMapInfo info, int64_t* value) noexcept {
  return internal_->GetInfoAsInteger(info, value);
}
uint32_t NodeMapProxy::GetInfoAsFloat(TNodeMapInfo info, double* value) noexcept {
  return internal_->GetInfoAsFloat(info, value);
}
uint32_t NodeMapProxy::GetInfoAsString(TNodeMapInfo info, char* value, size_t& size) noexcept {
  return internal_->GetInfoAsString(info, value, size);
}
uint32_t NodeMapProxy::GetInfoAsStringW(TNodeMapInfo info, wchar_t* value, size_t& size) noexcept {
  return internal_->GetInfoAsStringW(info, value, size);
}
uint32_t NodeMapProxy::PollNodes(int32_t elapsedMilliseconds) noexcept {
  return internal_->PollNodes(elapsedMilliseconds);
}
uint32_t NodeMapProxy::ConnectPort(TReadMem read, TWriteMem write, TPortAccessMode accessMode, void* userData,
                                   const char* portName) noexcept {
  return internal_->ConnectPort(read, write, accessMode, userData, portName);
}
uint32_t NodeMapProxy::LoadXMLFile(const char* fileName) noexcept {
  return internal_->LoadXMLFile(fileName);
}
uint32_t NodeMapProxy::LoadXMLString(const char* text, size_t length) noexcept {
  return internal_->LoadXMLString(text, length);
}
uint32_t NodeMapProxy::DeliverEvent(uint64_t eventId, const void* payload, uint64_t size) noexcept {
  return internal_->DeliverEvent(eventId, payload, size);
}
uint32_t NodeMapProxy::DeliverEventEx(const char* eventId, const void* payload, uint64_t size) noexcept {
  return internal_->DeliverEventEx(eventId, payload, size);
}

// The one operation that looks whether there is a node map behind it.
uint32_t NodeMapProxy::AttachChunk(uint64_t chunkId, void* base, int64_t offset, int64_t length) noexcept {
  if (!internal_) {
    const Operation operation{kDelivering, "-NodeMapProxy::AttachChunk", nullptr, nullptr};
    return fail(operation, OXGENAPI_E_INVALID_HANDLE, "No valid NodeMap object assigned");
  }
  return internal_->AttachChunk(chunkId, base, offset, length);
}

uint32_t NodeMapProxy::AttachChunkEx(const char* chunkId, void* base, int64_t offset, int64_t length) noexcept {
  return internal_->AttachChunkEx(chunkId, base, offset, length);
}
uint32_t NodeMapProxy::UpdateChunks(void* base) noexcept {
  return internal_->UpdateChunks(base);
}
uint32_t NodeMapProxy::DetachAllChunks() noexcept {
  return internal_->DetachAllChunks();
}

}  // namespace orxGenApi

// A second handle for a node map, with a lifetime of its own.
#pragma once
#include "NodeMapBase.h"
#include "OxGenApi/Types.h"

namespace orxGenApi {

// Forwards every operation unchanged to the node map behind it, which it keeps alive. What a chain of proxies stands
// for is found once, so that a call costs the same through all of them.
class NodeMapProxy : public NodeMapBase {
 public:
  explicit NodeMapProxy(orxBase::shared_ref<NodeMapBase> internal) noexcept;
  // Notifies first, while the node map behind it is still there.
  ~NodeMapProxy() override;

  // For a proxy that its creator gets; one that nobody gets ends without a word.
  void setReleaseNotify(TReleaseNotify releaseNotify, void* userData) noexcept {
    releaseNotify_ = releaseNotify;
    userData_ = userData;
  }

  NodeMapBase* target() noexcept override { return target_; }
  std::shared_ptr<LoadedMap> loaded() noexcept override;
  orxBase::shared_ref<Node> nodeFor(const std::shared_ptr<LoadedMap>& load,
                                    GENAPI_NAMESPACE::INode* engineNode) override;

  uint32_t GetNode(const char* name, NODE* node) noexcept override;
  uint32_t GetNodeCount(uint32_t* count) noexcept override;
  uint32_t ListNode(uint32_t index, char* name, size_t& size) noexcept override;
  uint32_t ListNodeW(uint32_t index, wchar_t* name, size_t& size) noexcept override;
  uint32_t GetInfoAsBoolean(TNodeMapInfo info, bool* value) noexcept override;
  uint32_t GetInfoAsInteger(TNodeMapInfo info, int64_t* value) noexcept override;
  uint32_t GetInfoAsFloat(TNodeMapInfo info, double* value) noexcept override;
  uint32_t GetInfoAsString(TNodeMapInfo info, char* value, size_t& size) noexcept override;
  uint32_t GetInfoAsStringW(TNodeMapInfo info, wchar_t* value, size_t& size) noexcept override;
  uint32_t PollNodes(int32_t elapsedMilliseconds) noexcept override;
  uint32_t ConnectPort(TReadMem read, TWriteMem write, TPortAccessMode accessMode, void* userData,
                       const char* portName) noexcept override;
  uint32_t LoadXMLFile(const char* fileName) noexcept override;
  uint32_t LoadXMLString(const char* text, size_t length) noexcept override;
  uint32_t DeliverEvent(uint64_t eventId, const void* payload, uint64_t size) noexcept override;
  uint32_t DeliverEventEx(const char* eventId, const void* payload, uint64_t size) noexcept override;
  uint32_t AttachChunk(uint64_t chunkId, void* base, int64_t offset, int64_t length) noexcept override;
  uint32_t AttachChunkEx(const char* chunkId, void* base, int64_t offset, int64_t length) noexcept override;
  uint32_t UpdateChunks(void* base) noexcept override;
  uint32_t DetachAllChunks() noexcept override;

 private:
  void notify() const noexcept;

  orxBase::shared_ref<NodeMapBase> internal_;
  NodeMapBase* target_;  // the node map at the end of the chain
  TReleaseNotify releaseNotify_ = nullptr;
  void* userData_ = nullptr;
};

}  // namespace orxGenApi

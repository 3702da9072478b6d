// The object behind a NODEMAP handle: what is loaded, and the nodes handed out for it.
#pragma once
#include <array>
#include <memory>
#include <string>
#include <unordered_map>

#include "Base/GCString.h"
#include "Failure.h"
#include "GenApi/Synch.h"
#include "NodeMapBase.h"

namespace GENAPI_NAMESPACE {
class CNodeMapFactory;
class IDeviceInfo;
}  // namespace GENAPI_NAMESPACE

namespace orxGenApi {

class NodeMap : public NodeMapBase {
 public:
  NodeMap() = default;
  ~NodeMap() override;

  std::shared_ptr<LoadedMap> loaded() noexcept override;
  orxBase::shared_ref<Node> nodeFor(const std::shared_ptr<LoadedMap>& load,
                                    GENAPI_NAMESPACE::INode* engineNode) override;

  uint32_t GetNode(const char* name, NODE* node) noexcept override;
  uint32_t GetNodeCount(uint32_t* count) noexcept override;
  uint32_t ListNode(uint32_t index, char* name, size_t& size) noexcept override;
  uint32_t ListNodeW(uint32_t index, wchar_t* name, size_t& size) noexcept override;

  // NodeMapInfo.cpp
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

  // NodeMapData.cpp
  uint32_t DeliverEvent(uint64_t eventId, const void* payload, uint64_t size) noexcept override;
  uint32_t DeliverEventEx(const char* eventId, const void* payload, uint64_t size) noexcept override;
  uint32_t AttachChunk(uint64_t chunkId, void* base, int64_t offset, int64_t length) noexcept override;
  uint32_t AttachChunkEx(const char* chunkId, void* base, int64_t offset, int64_t length) noexcept override;
  uint32_t UpdateChunks(void* base) noexcept override;
  uint32_t DetachAllChunks() noexcept override;

 private:
  // "<device name><tag>: <text>" in the record of a failure.
  Operation operation(const char* tag, const FailureRules& rules) const noexcept;
  std::shared_ptr<LoadedMap> current() const noexcept;
  // What is loaded; throws orx_error when nothing is.
  std::shared_ptr<LoadedMap> required(const char* otherwise = "No NodeMap object available") const;
  std::string listedName(uint32_t index) const;
  int64_t versionNumber(TNodeMapInfo info) const;
  std::string infoText(TNodeMapInfo info) const;
  void install(GENAPI_NAMESPACE::CNodeMapFactory& factory);

  // The nodes handed out, by what they stand for.
  using NodeCache = std::unordered_map<const GENAPI_NAMESPACE::INode*, orxBase::weak_ref<Node>>;

  // The same by the names that they were asked for with; only names that a node has, so there are as many at most.
  struct NameHash : std::hash<std::string_view> {
    using is_transparent = void;
  };
  using NameCache = std::unordered_map<std::string, orxBase::weak_ref<Node>, NameHash, std::equal_to<>>;

  // The node that was handed out for that name, if there still is one.
  orxBase::shared_ref<Node> known(const char* name) const;
  void remember(const std::shared_ptr<LoadedMap>& load, const char* name, const orxBase::shared_ref<Node>& node);

  // A leaf: while it is held nothing is built, released or called.
  mutable GENAPI_NAMESPACE::CLock cacheLock_;
  std::shared_ptr<LoadedMap> loaded_;  // guarded by cacheLock_
  NodeCache nodeCache_;                // of loaded_; guarded by cacheLock_
  NameCache nameCache_;                // of loaded_; guarded by cacheLock_
};

// The text form of a numeric event or chunk ID: hexadecimal digits, lower case, with a leading zero that follows from
// the number of bits, not of digits. Receivers compare it digit by digit, so the rule stays as it is.
std::array<char, 18> numericIdText(uint64_t id) noexcept;

}  // namespace orxGenApi

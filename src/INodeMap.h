// The abstract node map behind a NODEMAP handle.
#pragma once
#include <cstddef>
#include <cstdint>

#include "HandleKind.h"
#include "OxBase/IDisposableType.h"
#include "OxBase/OxBase.h"
#include "OxGenApi/Types.h"

namespace ORX {

// The order of these operations is fixed: components built elsewhere call them by their place. None throws; each
// returns 0, or a code that it has set as last error. Text is returned by the caller-buffer protocol.
class INodeMap : public virtual IDisposableType {
 public:
  virtual ~INodeMap() = default;
  // A handle whose reference the caller owns; zero after a failure.
  virtual uint32_t GetNode(const char* name, NODE* node) = 0;
  virtual uint32_t GetNodeCount(uint32_t* count) = 0;
  virtual uint32_t ListNode(uint32_t index, char* name, size_t& size) = 0;
  virtual uint32_t ListNodeW(uint32_t index, wchar_t* name, size_t& size) = 0;

  virtual uint32_t GetInfoAsBoolean(TNodeMapInfo info, bool* value) = 0;
  virtual uint32_t GetInfoAsInteger(TNodeMapInfo info, int64_t* value) = 0;
  virtual uint32_t GetInfoAsFloat(TNodeMapInfo info, double* value) = 0;
  virtual uint32_t GetInfoAsString(TNodeMapInfo info, char* value, size_t& size) = 0;
  virtual uint32_t GetInfoAsStringW(TNodeMapInfo info, wchar_t* value, size_t& size) = 0;

  virtual uint32_t PollNodes(int32_t elapsedMilliseconds) = 0;
  virtual uint32_t ConnectPort(TReadMem read, TWriteMem write, TPortAccessMode accessMode, void* userData,
                               const char* portName) = 0;
  virtual uint32_t LoadXMLFile(const char* fileName) = 0;
  // Null text: length 0.
  virtual uint32_t LoadXMLString(const char* text, size_t length) = 0;

  virtual uint32_t DeliverEvent(uint64_t eventId, const void* payload, uint64_t size) = 0;
  virtual uint32_t DeliverEventEx(const char* eventId, const void* payload, uint64_t size) = 0;

  virtual uint32_t AttachChunk(uint64_t chunkId, void* base, int64_t offset, int64_t length) = 0;
  virtual uint32_t AttachChunkEx(const char* chunkId, void* base, int64_t offset, int64_t length) = 0;
  virtual uint32_t UpdateChunks(void* base) = 0;
  virtual uint32_t DetachAllChunks() = 0;
};

}  // namespace ORX

namespace orxGenApi {

template <>
struct HandleKind<ORX::INodeMap> {
  using Interface = ORX::INodeMap;
  static uint64_t id() noexcept { return OX_INTERFACE_NODE_MAP; }
  static constexpr const char* kInvalid = "Invalid NODEMAP handle";
};

}  // namespace orxGenApi

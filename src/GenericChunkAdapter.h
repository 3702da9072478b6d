// Attaches chunks that the caller has found itself: no buffer layout is known here.
#pragma once
#include <atomic>
#include <cstdint>
#include <optional>
#include <string_view>

#include "GenApi/ChunkAdapter.h"

namespace orxGenApi {

class CGenericChunkAdapter : public GENAPI_NAMESPACE::CChunkAdapter {
 public:
  // Chunks of any size may be cached.
  explicit CGenericChunkAdapter(GENAPI_NAMESPACE::INodeMap* map) : CChunkAdapter(map, -1) {}

  // Always false.
  bool CheckBufferLayout(uint8_t* pBuffer, int64_t BufferLength) override;
  // Sets the statistics to 0, then throws LogicalErrorException.
  void AttachBuffer(uint8_t* pBuffer, int64_t BufferLength,
                    GENAPI_NAMESPACE::AttachStatistics_t* pAttachStatistics) override;
  // With a base, moves every attached chunk there; with null, drops what was read through the ports. Throws
  // LogicalErrorException when no node map is attached.
  void UpdateBuffer(uint8_t* pBaseAddress) override;

  // Attaches the chunk to every port with that ID, given as hexadecimal text; a text that is no such ID matches none.
  // Throws LogicalErrorException when no node map is attached, std::logic_error for a null ID where there are ports,
  // and what a port throws that refuses the chunk: those before it stay attached.
  void AttachChunk(const char* ChunkID, uint8_t* pBase, int64_t ChunkOffset, int64_t ChunkLength);

  // How many ports were asked so far whether an ID is theirs; for tests of cost.
  size_t portsAsked() const noexcept { return portsAsked_.load(std::memory_order_relaxed); }

 private:
  // Visits the ports that can have the ID, in their order.
  template <class Adapter, class Visit>
  static void visitPorts(const Adapter& adapter, uint64_t id, Visit visit);

  std::atomic<size_t> portsAsked_{0};
};

// The number that a chunk ID stands for: hexadecimal digits without prefix, at most eight after leading zeros.
std::optional<uint32_t> parseChunkId(std::string_view text) noexcept;

}  // namespace orxGenApi

// A port over the memory of one chunk of an image buffer.
#pragma once
#include <cstdint>
#include <memory>

#include "GenApi/IPortConstruct.h"

namespace GENAPI_NAMESPACE {

// Addresses of two read-only pseudo registers of every chunk port, 8 bytes each in host byte order: the memory address
// of the chunk's start, and the chunk's length in bytes.
inline constexpr int64_t CHUNK_BASE_ADDRESS_REGISTER = INT64_MAX;
inline constexpr int64_t CHUNK_LENGTH_REGISTER = INT64_MAX - 15;

// Serves the registers of a Port node that carries a chunk ID from a chunk of the client's buffer or from a copy of
// it. Address 0 is the chunk's first byte; a negative address a means length + a. The port must not outlive its use by
// several threads: attaching and reading on different threads takes the node map's lock.
class CChunkPort : public IPortConstruct {
 public:
  // With a port node, attaches to it; throws InvalidArgumentException when it is not one.
  explicit CChunkPort(IPort* pPortNode = nullptr);
  // Detaches from the port node; never throws.
  ~CChunkPort() override;
  CChunkPort(const CChunkPort&) = delete;
  CChunkPort& operator=(const CChunkPort&) = delete;

  // Becomes the implementation of the port node, replacing the one it had; detaches from a former node. False (and no
  // change) when the pointer is null or not a port node of a node map.
  bool AttachPort(IPort* pPortNode);
  // Disconnects the port node if this port is still its implementation, and forgets it. Chunk and copy stay.
  void DetachPort();

  // The chunk lies at pBaseAddress + ChunkOffset and is Length bytes long. With Cache, and when the port node's
  // CacheChunkData says Yes and the adapter's limit allows, the bytes are copied now; otherwise the memory must stay
  // valid until the chunk is detached or rebased. Caches above are dropped silently: call InvalidateNode once
  // everything is attached. Throws InvalidArgumentException (null base, negative offset, length below 1, address
  // overflow) and std::bad_alloc; the former attachment then stays.
  void AttachChunk(uint8_t* pBaseAddress, int64_t ChunkOffset, int64_t Length, bool Cache);
  // Forgets the client's memory; a copy stays readable. Fires callbacks if a chunk was attached.
  void DetachChunk();
  // The same offset and length at another base, then InvalidateNode; nothing happens without a chunk. Throws
  // InvalidArgumentException (null base, address overflow).
  void UpdateBuffer(uint8_t* pBaseAddress);
  // Drops the copy.
  void ClearCache();
  // Drops the caches of the port's registers and of what depends on them; fires callbacks.
  void InvalidateNode();

  // Bytes of the chunk ID, (digits + 1) / 2; 0 without a port node and while the ID cannot be read.
  int GetChunkIDLength();
  // Compares with the chunk ID, big end first, leading zero bytes ignored on both sides. False while the ID cannot be
  // read.
  bool CheckChunkID(uint8_t* pChunkID, int Length);
  bool CheckChunkID(uint64_t ChunkID);

  // NA with nothing attached, RW with a chunk, RO when only a copy is left.
  EAccessMode GetAccessMode() const override;
  // Throw RuntimeException (nothing attached), AccessException (a byte outside the chunk; writing a copy or a pseudo
  // register), InvalidArgumentException (negative length, null buffer).
  void Read(void* pBuffer, int64_t Address, int64_t Length) override;
  void Write(const void* pBuffer, int64_t Address, int64_t Length) override;
  // Called by the port node.
  void SetPortImpl(IPort* pPort) override;
  EYesNo GetSwapEndianess() override;

 private:
  friend class CChunkAdapter;
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace GENAPI_NAMESPACE

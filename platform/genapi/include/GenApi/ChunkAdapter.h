// Base class of the adapters that find chunks in image buffers and hand them to chunk ports.
#pragma once
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "GenApi/ChunkPort.h"

namespace GENAPI_NAMESPACE {

class INodeMap;

struct AttachStatistics_t {
  int NumChunkPorts;      // ports with a chunk ID in the node map
  int NumChunks;          // chunks found in the buffer
  int NumAttachedChunks;  // chunks that found a port
};

// Owns one CChunkPort for every port node with a chunk ID. Several ports may share an ID. An adapter is destroyed
// before its node map; should the map end first, its ports know no node any more and stay harmless.
class CChunkAdapter {
 public:
  virtual ~CChunkAdapter();
  CChunkAdapter(const CChunkAdapter&) = delete;
  CChunkAdapter& operator=(const CChunkAdapter&) = delete;

  // True when the buffer has the layout that this adapter understands.
  virtual bool CheckBufferLayout(uint8_t* pBuffer, int64_t Length) = 0;
  // Finds the chunks of a buffer and attaches them.
  virtual void AttachBuffer(uint8_t* pBuffer, int64_t Length, AttachStatistics_t* pAttachStatistics = nullptr) = 0;
  // Moves every attached chunk to another base with the same offset and length, then invalidates all their nodes in
  // one operation. Ports without a chunk are skipped. Throws InvalidArgumentException (null base, address overflow);
  // nothing has moved then.
  virtual void UpdateBuffer(uint8_t* pBaseAddress);

  // Builds the chunk ports, in description order, and connects them to their port nodes; detaches from a former map
  // first. Throws InvalidArgumentException for null or a node map of another engine.
  void AttachNodeMap(INodeMap* pNodeMap);
  // Destroys the chunk ports.
  void DetachNodeMap();
  // Detaches every chunk; copies stay readable. Fires the callbacks of the ports that had one, in one operation.
  void DetachBuffer();
  // Drops every copy.
  void ClearCaches();

 protected:
  // MaxChunkCacheSize: chunks up to this many bytes may be copied when attached; 0 none, -1 no limit.
  explicit CChunkAdapter(INodeMap* pNodeMap = nullptr, int64_t MaxChunkCacheSize = -1);

  // Places in m_ppChunkPorts, in ascending order.
  struct PortPlaces {
    std::span<const uint32_t> given;  // the description gives the port this ID
    std::span<const uint32_t> asked;  // a node answers for the ID: only CheckChunkID can tell
  };
  // All ports that can have the ID; the others need not be looked at. Valid until a node map is attached or detached.
  PortPlaces placesOf(uint64_t ChunkID) const;

  std::vector<CChunkPort*>* m_ppChunkPorts = nullptr;  // null while no node map is attached; owned
  int64_t m_MaxChunkCacheSize;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace GENAPI_NAMESPACE

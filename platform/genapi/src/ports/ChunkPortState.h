// What a chunk port holds; the chunk adapter moves all ports of a map together through it.
#pragma once
#include <cstdint>
#include <string>
#include <vector>

#include "GenApi/ChunkPort.h"
#include "ports/HexId.h"
#include "ports/PortBinding.h"

namespace GENAPI_NAMESPACE {

class PortNode;

struct CChunkPort::State {
  PortBinding binding;
  HexId id;
  std::string idText;      // as the description or the device spells it
  bool idIsFixed = false;  // the description gives the ID itself, not through another node
  bool mayCopy = false;    // CacheChunkData

  uint8_t* start = nullptr;  // the chunk's first byte in the client's memory; null while nothing is attached
  int64_t offset = 0;        // of the chunk from the client's base
  int64_t length = 0;        // of the chunk or of what the copy holds
  std::vector<uint8_t> copy;
  bool hasCopy = false;
  int64_t copyLimit = -1;  // longest chunk to copy; 0 none, -1 no limit

  // Of the node it is bound to, null for none.
  void readNodeFacts(const PortNode* port);
  // What the question says about the ID: asked for every port and record of a frame, so a fixed one takes no lock.
  template <typename Question>
  auto withId(Question question) {
    if (idIsFixed) return binding.node() ? question(id) : question(HexId());
    BoundLock lock(binding.map());
    askDeviceForId();
    return question(id);
  }
  void askDeviceForId();
  std::string name() const;
  // Throws InvalidArgumentException when the chunk would not fit into the address space there.
  void checkBase(const uint8_t* base) const;
  // Moves the chunk; the base has been checked. The copy has its size already, so nothing can fail.
  void rebase(uint8_t* base) noexcept;
};

}  // namespace GENAPI_NAMESPACE

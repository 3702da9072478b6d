// The register part of a node: where its bytes are, and whose port they go through.
#pragma once
#include <cstdint>

#include "GenApi/Types.h"
#include "evaluation/Registers.h"

namespace GENAPI_NAMESPACE {

class NodeBase;
class PortNode;

class RegisterBlock {
 public:
  explicit RegisterBlock(const NodeBase& owner);
  RegisterBlock(const RegisterBlock&) = delete;
  RegisterBlock& operator=(const RegisterBlock&) = delete;

  // The sum of everything that contributes to the address. Throws OutOfRangeException on overflow.
  int64_t address() const;
  // The address as callers see it: on a port with a chunk attached, negative ones count from the chunk's start.
  int64_t reportedAddress() const;
  // Bytes. Throws OutOfRangeException when it is not 1 .. kMaxRegisterBytes.
  int64_t length() const;
  // Rights by the node's own AccessMode, its port, and the links that its address and length come from.
  EAccessMode mode() const;

  // The first bytes of the register, which is `total` long.
  void read(uint8_t* buffer, int64_t bytes, int64_t total, bool ignoreCache) const;
  // True when the content of all of it is known afterwards.
  bool write(const uint8_t* buffer, int64_t bytes, int64_t total) const;
  // What a write of some bits has to be merged with: the content, or what was written last where nothing can be read.
  void readForMerging(uint8_t* buffer, int64_t bytes) const;

 private:
  RegisterPlace place(int64_t length) const;
  PortNode& port() const;
  int64_t computeAddress() const;

  const NodeBase& owner_;
  int64_t fixedAddress_ = 0;
  const int64_t length_;
  const NodeIndex port_, lengthLink_;
  EAccessMode ownMode_ = RO;
  bool addressIsFixed_ = true;
};

}  // namespace GENAPI_NAMESPACE

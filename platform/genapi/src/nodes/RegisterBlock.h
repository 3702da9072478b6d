// The register part of a node: where its bytes are, and how they travel through the cache of places and the port.
#pragma once
#include <cstdint>

#include "GenApi/Types.h"
#include "description/NodeIndex.h"
#include "nodemap/RegisterCache.h"

namespace GENAPI_NAMESPACE {

class NodeBase;
class PortNode;

class RegisterBlock {
 public:
  explicit RegisterBlock(NodeBase& owner);
  RegisterBlock(const RegisterBlock&) = delete;
  RegisterBlock& operator=(const RegisterBlock&) = delete;

  // The sum of everything that contributes to the address. Throws OutOfRangeException on overflow.
  int64_t address();
  // The address as callers see it: on a port with a chunk attached, negative ones count from the chunk's start.
  int64_t reportedAddress();
  // Bytes. Throws OutOfRangeException when it is not 1 .. kMaxRegisterBytes.
  int64_t length();
  // Rights by the node's own AccessMode, its port, and the links that its address and length come from.
  EAccessMode mode();
  EAccessMode elementMode() const { return elementMode_; }

  // All of the register, which is `bytes` long.
  void read(uint8_t* buffer, int64_t bytes, bool ignoreCache);
  void write(const uint8_t* buffer, int64_t bytes);
  // The first bytes of a register that is `total` long.
  void readStart(uint8_t* buffer, int64_t bytes, int64_t total, bool ignoreCache);
  // True when the content of all of it is known afterwards.
  bool writeStart(const uint8_t* buffer, int64_t bytes, int64_t total);
  // What a write of some bits has to be merged with: the content, or what was written last where nothing can be read.
  void readForMerging(uint8_t* buffer, int64_t bytes);

  void forgetContent() noexcept;
  void forgetPlace() noexcept;

 private:
  Place& place(int64_t at, int64_t bytes);
  bool answers(const Place& place) const;
  PortNode& port() const;
  // Drops what is known of the range after a write that failed: the device's state is unknown then.
  void writeOrForget(const uint8_t* buffer, int64_t at, int64_t bytes);
  int64_t fetchLength();
  int64_t fetchAddress();

  NodeBase& owner_;
  Place* place_ = nullptr;  // the one used last; kHasPlace
  int64_t fixedAddress_ = 0;
  int64_t address_ = 0;  // kHasAddress
  int64_t length_ = 0;
  NodeIndex port_ = kNoNode;
  NodeIndex lengthLink_ = kNoNode;
  EAccessMode elementMode_ = RO;
  bool addressIsFixed_ = true;
};

}  // namespace GENAPI_NAMESPACE

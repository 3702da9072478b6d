// The control block behind a handle: one cache line that is never unmapped.
#ifndef OXBASE_CONTROLBLOCK_H
#define OXBASE_CONTROLBLOCK_H

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "OxBase/IDisposableType.h"

namespace oxbase {

// The interfaces of an object that has more than one; immutable once published.
struct InterfaceTable {
  size_t count;
  ORX::InterfaceEntry entries[1];  // count entries follow in the same allocation
};

// Values that are no handle of the caller's may name any block at any time, live, dying or waiting. What such a call
// can read is therefore atomic; the plain members belong to whoever creates or ends the block.
struct alignas(64) ControlBlock {
  // Set in `uses` from creation until an object is published; the checked add refuses such a block.
  static constexpr uint32_t kUnpublished = 0x80000000;
  static constexpr uint32_t kMostCounts = 0x7fffffff;

  std::atomic<uint32_t> uses;  // use counts; zero from the last release on
  std::atomic<uint32_t>
      weaks;  // weak counts, one of them held by all use counts together; zero while it waits for reuse
  std::atomic<uint64_t> interfaceId;
  std::atomic<void*> interfacePointer;
  std::atomic<InterfaceTable*> moreInterfaces;  // all interfaces of an object with several, else null
  ORX::IDisposableType* object;                 // null until published
  void* storage;
  ControlBlock* next;         // in the list of waiting blocks
  std::atomic<bool> claimed;  // an object is being published or has been
};

static_assert(sizeof(ControlBlock) == 64, "a control block is one cache line");

}  // namespace oxbase

#endif

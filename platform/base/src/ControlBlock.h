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

// A bogus handle may hit any block in any state, so everything a check reads is atomic. The plain members belong to
// the thread that creates or destroys the block.
struct alignas(64) ControlBlock {
  // Set in `uses` from creation until an object is published; the checked add refuses such a block.
  static constexpr uint32_t kUnpublished = 0x80000000;
  static constexpr uint32_t kMostCounts = 0x7fffffff;

  std::atomic<uint32_t> uses;   // use counts; zero from the last release on
  std::atomic<uint32_t> weaks;  // weak counts, one held by all use counts together; zero while waiting for reuse
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

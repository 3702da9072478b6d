// The address ranges that all control blocks come from.
//
// A range is reserved without access rights, opened in steps, and never given back. The first is small, each further
// one as large as all before it together: a program with few handles keeps its address space, and even one with
// millions has few ranges to search.
#ifndef OXBASE_BLOCKRANGE_H
#define OXBASE_BLOCKRANGE_H

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "ControlBlock.h"

namespace oxbase {

// All ranges together: 67 million handles alive at once.
inline constexpr size_t kReservedBytes = size_t{4} << 30;
// The first range: a million handles.
inline constexpr size_t kFirstRangeBytes = size_t{64} << 20;
// Where address space is limited, a range takes at most this part of what the limit leaves; none smaller than the
// second number is made.
inline constexpr size_t kPartOfLimit = 16;
inline constexpr size_t kLeastRangeBytes = size_t{64} << 10;
// Without a limit there are seven ranges; under one, this many use up nearly all of it.
inline constexpr size_t kRanges = 64;
// Opened at once: 16,384 blocks.
inline constexpr size_t kStepBytes = size_t{1} << 20;
// A block is reused only after this many others were released after it: so long a stale handle stays dead.
inline constexpr size_t kQuarantinedBlocks = 16384;

struct BlockRange {
  std::atomic<uintptr_t> begin;
  std::atomic<uintptr_t> used;  // bytes that hold blocks: the high-water mark, which only grows

  bool holds(uintptr_t address) const noexcept {
    const uintptr_t end = used.load(std::memory_order_acquire);  // the range begins before it is used
    return address - begin.load(std::memory_order_relaxed) < end;
  }
};

// Declared hidden, so that a check reads it without a detour through the global offset table.
extern BlockRange firstRange __attribute__((visibility("hidden")));

// The same question for all other ranges.
bool isInFurtherRange(uintptr_t address) noexcept;

// The block that a handle value names, null when it names none. Says nothing about whether the block is alive.
inline ControlBlock* findBlock(const void* handle) noexcept {
  const uintptr_t address = reinterpret_cast<uintptr_t>(handle);
  if (address % sizeof(ControlBlock) != 0) return nullptr;
  if (!firstRange.holds(address) && !isInFurtherRange(address)) return nullptr;
  return static_cast<ControlBlock*>(const_cast<void*>(handle));
}

// A block that nobody uses, all its counts zero; null when the ranges are exhausted or memory is.
ControlBlock* takeBlock() noexcept;

// Puts a block whose counts are zero at the end of the list of waiting blocks.
void retireBlock(ControlBlock& block) noexcept;

}  // namespace oxbase

#endif

// The address range that all control blocks come from.
#ifndef OXBASE_BLOCKRANGE_H
#define OXBASE_BLOCKRANGE_H

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "ControlBlock.h"

namespace oxbase {

// Address space for 67 million handles alive at once; costs no memory until it is opened.
inline constexpr size_t kReservedBytes = size_t{4} << 30;
// Where address space is limited: the smallest range worth having, 65,536 handles.
inline constexpr size_t kLeastReservedBytes = size_t{4} << 20;
// Opened at once: 16,384 blocks.
inline constexpr size_t kStepBytes = size_t{1} << 20;
// A block is reused only while this many wait, so that a stale handle stays dead for as many later releases.
inline constexpr size_t kQuarantinedBlocks = 16384;

// First byte of the range, and the number of its bytes that hold blocks: the high-water mark, which only grows.
// Declared hidden, so that a check reads them without a detour through the global offset table.
extern std::atomic<uintptr_t> rangeBegin __attribute__((visibility("hidden")));
extern std::atomic<uintptr_t> rangeUsed __attribute__((visibility("hidden")));

// The block that a handle value names, null when it names none. Says nothing about whether the block is alive.
inline ControlBlock* findBlock(const void* handle) noexcept {
  const uintptr_t used = rangeUsed.load(std::memory_order_acquire);  // the range begins before it is used
  const uintptr_t offset = reinterpret_cast<uintptr_t>(handle) - rangeBegin.load(std::memory_order_relaxed);
  if (offset >= used || offset % sizeof(ControlBlock) != 0) return nullptr;
  return static_cast<ControlBlock*>(const_cast<void*>(handle));
}

// A block that nobody uses, all its counts zero; null when the range is exhausted or memory is.
ControlBlock* takeBlock() noexcept;

// Puts a block whose counts are zero at the end of the list of waiting blocks.
void retireBlock(ControlBlock& block) noexcept;

}  // namespace oxbase

#endif

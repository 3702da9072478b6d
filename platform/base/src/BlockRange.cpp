#include "BlockRange.h"

#include <sys/mman.h>

#include <mutex>
#include <new>

// Present in processes that run with the leak sanitizer, whether or not this library was built with it.
extern "C" void __lsan_register_root_region(const void* begin, size_t size) __attribute__((weak));

namespace oxbase {

constinit std::atomic<uintptr_t> rangeBegin{0};
constinit std::atomic<uintptr_t> rangeUsed{0};

namespace {

// Creation and the end of an object take this; checking a handle never does. Has no destructor to run, so handles can
// still end while the process does.
constinit std::mutex rangeMutex;
size_t reservedBytes = 0;
size_t openedBytes = 0;

ControlBlock* oldestWaiting = nullptr;
ControlBlock* newestWaiting = nullptr;
size_t waitingBlocks = 0;

bool reserveRange() noexcept {
  for (size_t size = kReservedBytes; size >= kLeastReservedBytes; size /= 2) {
    void* begin = mmap(nullptr, size, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (begin == MAP_FAILED) continue;
    reservedBytes = size;
    rangeBegin.store(reinterpret_cast<uintptr_t>(begin), std::memory_order_relaxed);
    // Objects are reached from their blocks only, and the sanitizer does not search mappings by itself.
    if (__lsan_register_root_region != nullptr) __lsan_register_root_region(begin, size);
    return true;
  }
  return false;
}

ControlBlock* carveBlock() noexcept {
  if (reservedBytes == 0 && !reserveRange()) return nullptr;
  const uintptr_t begin = rangeBegin.load(std::memory_order_relaxed);
  const uintptr_t used = rangeUsed.load(std::memory_order_relaxed);
  if (used == openedBytes) {
    if (openedBytes == reservedBytes) return nullptr;
    void* step = reinterpret_cast<void*>(begin + openedBytes);
    if (mprotect(step, kStepBytes, PROT_READ | PROT_WRITE) != 0) return nullptr;
    openedBytes += kStepBytes;
  }
  auto* block = ::new (reinterpret_cast<void*>(begin + used)) ControlBlock{};
  rangeUsed.store(used + sizeof(ControlBlock), std::memory_order_release);
  return block;
}

}  // namespace

ControlBlock* takeBlock() noexcept {
  const std::lock_guard lock(rangeMutex);
  if (waitingBlocks < kQuarantinedBlocks) return carveBlock();
  ControlBlock* block = oldestWaiting;
  oldestWaiting = block->next;
  --waitingBlocks;
  return block;
}

void retireBlock(ControlBlock& block) noexcept {
  const std::lock_guard lock(rangeMutex);
  block.next = nullptr;
  if (waitingBlocks == 0) {
    oldestWaiting = &block;
  } else {
    newestWaiting->next = &block;
  }
  newestWaiting = &block;
  ++waitingBlocks;
}

}  // namespace oxbase

#include "BlockRange.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <mutex>
#include <new>

// Present in processes that run with the leak sanitizer, whether or not this library was built with it.
extern "C" void __lsan_register_root_region(const void* begin, size_t size) __attribute__((weak));

namespace oxbase {

constinit BlockRange firstRange{};

namespace {

// Creation and the end of an object take this; checking a handle never does. Has no destructor to run, so handles can
// still end while the process does.
constinit std::mutex rangeMutex;
constinit BlockRange furtherRanges[kRanges - 1]{};
constinit std::atomic<size_t> furtherCount{0};
// Blocks are carved from the newest range.
BlockRange* newest = nullptr;
size_t newestBytes = 0, openedBytes = 0, usedBytes = 0;
size_t reservedBytes = 0;

ControlBlock* oldestWaiting = nullptr;
ControlBlock* newestWaiting = nullptr;
size_t waitingBlocks = 0;

// What a limit of the process's address space leaves of it; just enough for a range when that cannot be found out.
size_t addressSpaceLeft() noexcept {
  rlimit limit{};
  if (getrlimit(RLIMIT_AS, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY) return SIZE_MAX;
  constexpr size_t kUnknown = kPartOfLimit * kLeastRangeBytes;
  const int file = open("/proc/self/statm", O_RDONLY | O_CLOEXEC);
  if (file < 0) return kUnknown;
  char text[64];  // begins with the number of mapped pages
  const ssize_t length = read(file, text, sizeof text);
  close(file);
  size_t pages = 0;
  if (length <= 0 || std::from_chars(text, text + length, pages).ec != std::errc()) return kUnknown;
  const size_t mapped = pages * static_cast<size_t>(sysconf(_SC_PAGESIZE));
  return limit.rlim_cur > mapped ? limit.rlim_cur - mapped : 0;
}

bool reserveRange() noexcept {
  const size_t count = furtherCount.load(std::memory_order_relaxed);
  const size_t wanted = std::min(std::max(reservedBytes, kFirstRangeBytes), kReservedBytes - reservedBytes);
  if (wanted == 0 || count == std::size(furtherRanges)) return false;
  for (size_t size = std::min(wanted, addressSpaceLeft() / kPartOfLimit); size >= kLeastRangeBytes; size /= 2) {
    size -= size % kLeastRangeBytes;
    void* begin = mmap(nullptr, size, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (begin == MAP_FAILED) continue;
    newest = reservedBytes == 0 ? &firstRange : &furtherRanges[count];
    newest->begin.store(reinterpret_cast<uintptr_t>(begin), std::memory_order_relaxed);
    if (newest != &firstRange) furtherCount.store(count + 1, std::memory_order_release);
    reservedBytes += size;
    newestBytes = size;
    openedBytes = usedBytes = 0;
    // Objects are reached from their blocks only, and the sanitizer does not search mappings by itself.
    if (__lsan_register_root_region != nullptr) __lsan_register_root_region(begin, size);
    return true;
  }
  return false;
}

ControlBlock* carveBlock() noexcept {
  if (usedBytes == newestBytes && !reserveRange()) return nullptr;
  const uintptr_t begin = newest->begin.load(std::memory_order_relaxed);
  if (usedBytes == openedBytes) {
    const size_t step = std::min(kStepBytes, newestBytes - openedBytes);
    if (mprotect(reinterpret_cast<void*>(begin + openedBytes), step, PROT_READ | PROT_WRITE) != 0) return nullptr;
    openedBytes += step;
  }
  auto* block = ::new (reinterpret_cast<void*>(begin + usedBytes)) ControlBlock{};
  usedBytes += sizeof(ControlBlock);
  newest->used.store(usedBytes, std::memory_order_release);
  return block;
}

}  // namespace

bool isInFurtherRange(uintptr_t address) noexcept {
  const size_t count = furtherCount.load(std::memory_order_acquire);
  return std::any_of(furtherRanges, furtherRanges + count,
                     [=](const BlockRange& range) { return range.holds(address); });
}

ControlBlock* takeBlock() noexcept {
  const std::lock_guard lock(rangeMutex);
  if (waitingBlocks <= kQuarantinedBlocks) return carveBlock();
  ControlBlock* block = oldestWaiting;
  oldestWaiting = block->next;
  --waitingBlocks;
  return block;
}

void retireBlock(ControlBlock& block) noexcept {
  const std::lock_guard lock(rangeMutex);
  block.next = nullptr;
  if (waitingBlocks == 0)
    oldestWaiting = &block;
  else
    newestWaiting->next = &block;
  newestWaiting = &block;
  ++waitingBlocks;
}

}  // namespace oxbase

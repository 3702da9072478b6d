#include "memory/FailingAllocator.h"

#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <new>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define OX_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define OX_SANITIZED 1
#endif
#endif

namespace memory {
namespace {

constinit thread_local bool armed = false;
constinit thread_local int64_t allocations = 0;
constinit thread_local int64_t failing = 0;
constinit thread_local bool failed = false;
[[maybe_unused]] constinit std::atomic<int64_t> outstanding{0};

bool isDue() noexcept {
  if (!armed || ++allocations != failing) return false;
  failed = true;
  return true;
}

}  // namespace

Shortage::Shortage(int64_t which) {
  allocations = 0;
  failing = which;
  failed = false;
  armed = true;
}
Shortage::~Shortage() { armed = false; }
bool Shortage::end() {
  armed = false;
  return failed;
}

Plenty::Plenty() : wasArmed_(armed) { armed = false; }
Plenty::~Plenty() { armed = wasArmed_; }

int64_t outstandingBlocks() { return outstanding; }

}  // namespace memory

#ifdef OX_SANITIZED

// The library for patterns keeps some blocks when memory runs out in its midst.
extern "C" [[gnu::visibility("default")]] const char* __lsan_default_suppressions() { return "leak:libre2\n"; }

void* operator new(std::size_t size) {
  void* const block = memory::isDue() ? nullptr : std::malloc(size == 0 ? 1 : size);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return memory::isDue() ? nullptr : std::malloc(size == 0 ? 1 : size);
}
void* operator new(std::size_t size, std::align_val_t alignment) {
  void* block = nullptr;
  const auto at = static_cast<std::size_t>(alignment);
  if (memory::isDue() || posix_memalign(&block, at < sizeof(void*) ? sizeof(void*) : at, size) != 0)
    throw std::bad_alloc();
  return block;
}
void operator delete(void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }
void operator delete(void* block, std::align_val_t) noexcept { std::free(block); }
void operator delete(void* block, std::size_t, std::align_val_t) noexcept { std::free(block); }

#else

// The C library's own functions stay reachable below the names that everybody calls.
extern "C" {

void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* block, size_t size);
void* __libc_memalign(size_t alignment, size_t size);
void __libc_free(void* block);

static void* taken(void* block) noexcept {
  if (block != nullptr) memory::outstanding.fetch_add(1, std::memory_order_relaxed);
  return block;
}
static void* refused() noexcept {
  errno = ENOMEM;
  return nullptr;
}

void* malloc(size_t size) { return memory::isDue() ? refused() : taken(__libc_malloc(size)); }
void* calloc(size_t count, size_t size) { return memory::isDue() ? refused() : taken(__libc_calloc(count, size)); }
void* realloc(void* block, size_t size) {
  if (memory::isDue()) return refused();
  return block == nullptr ? taken(__libc_realloc(block, size)) : __libc_realloc(block, size);
}
void* memalign(size_t alignment, size_t size) {
  return memory::isDue() ? refused() : taken(__libc_memalign(alignment, size));
}
void* aligned_alloc(size_t alignment, size_t size) { return memalign(alignment, size); }
int posix_memalign(void** block, size_t alignment, size_t size) {
  *block = memalign(alignment, size);
  return *block == nullptr ? ENOMEM : 0;
}
void free(void* block) {
  if (block == nullptr) return;
  memory::outstanding.fetch_sub(1, std::memory_order_relaxed);
  __libc_free(block);
}

void* mmap(void* address, size_t length, int protection, int flags, int file, off_t offset) noexcept {
  if (memory::isDue()) {
    errno = ENOMEM;
    return MAP_FAILED;
  }
  const long mapped = syscall(SYS_mmap, address, length, protection, flags, file, offset);
  return mapped == -1 ? MAP_FAILED : reinterpret_cast<void*>(mapped);
}

}  // extern "C"

#endif

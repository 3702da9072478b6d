// Counts the heap allocations of the whole program. It replaces operator new, so one source file of a program includes
// it, once.
#pragma once

#include <atomic>
#include <cstdlib>
#include <new>

inline std::atomic<long> allocations{0};
inline std::atomic<long> allocatedBytes{0};

// Not inlined: the compiler would take the pair for mismatched.
[[gnu::noinline]] void* operator new(size_t bytes) {
  allocations.fetch_add(1, std::memory_order_relaxed);
  allocatedBytes.fetch_add(static_cast<long>(bytes), std::memory_order_relaxed);
  if (void* memory = std::malloc(bytes)) return memory;
  throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete(void* memory) noexcept { std::free(memory); }
[[gnu::noinline]] void operator delete(void* memory, size_t) noexcept { std::free(memory); }

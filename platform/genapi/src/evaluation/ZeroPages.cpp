#include "evaluation/ZeroPages.h"

#include <sys/mman.h>

#include <algorithm>
#include <cstdlib>
#include <new>

namespace GENAPI_NAMESPACE {

namespace {

// Pages fresh from the system are zero and cost nothing until they are touched; a few come faster from the heap.
constexpr size_t kFewBytes = 32 << 10;

void* zeroed(size_t bytes) {
  void* const start = bytes <= kFewBytes
                          ? std::calloc(1, bytes)
                          : mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (start == nullptr || start == MAP_FAILED) throw std::bad_alloc();
  return start;
}

}  // namespace

ZeroPages::ZeroPages(size_t bytes) : bytes_(std::max<size_t>(bytes, 1)), start_(zeroed(bytes_)) {}

ZeroPages::~ZeroPages() {
  if (bytes_ <= kFewBytes)
    std::free(start_);
  else
    munmap(start_, bytes_);
}

}  // namespace GENAPI_NAMESPACE

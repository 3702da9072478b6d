#include "description/MemoryBlock.h"

#include <sys/mman.h>

#include <cstdint>
#include <cstring>
#include <new>

namespace GENAPI_NAMESPACE {
namespace {

constexpr size_t kLargePage = 2u << 20;
// Below this a large page would mostly stay empty.
constexpr size_t kLargeBlock = kLargePage / 4;

// Whole large pages, and one more so that they can start at a multiple of their size.
size_t mappingSize(size_t size) {
  return (size + kLargePage - 1) / kLargePage * kLargePage + kLargePage;
}

}  // namespace

MemoryBlock::MemoryBlock(size_t size) : size_(size) {
  if (size < kLargeBlock) {
    data_ = static_cast<char*>(::operator new(size));
    return;
  }
  if (size > SIZE_MAX - 2 * kLargePage) throw std::bad_alloc();
  void* const mapped =
      ::mmap(nullptr, mappingSize(size), PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (mapped == MAP_FAILED) throw std::bad_alloc();
  mapped_ = mapped;
  const uintptr_t address = reinterpret_cast<uintptr_t>(mapped);
  data_ = static_cast<char*>(mapped) + (kLargePage - address % kLargePage) % kLargePage;
  // Only a wish: without it the block is the same, just slower to fill.
  ::madvise(data_, mappingSize(size) - kLargePage, MADV_HUGEPAGE);
}

MemoryBlock::~MemoryBlock() {
  if (mapped_ != nullptr) {
    ::munmap(mapped_, mappingSize(size_));
  } else {
    ::operator delete(data_);
  }
}

HeldBytes HeldBytes::copyOf(std::string_view bytes) {
  HeldBytes held{MemoryBlock(roomFor(bytes.size())), bytes.size()};
  if (!bytes.empty()) std::memcpy(held.block.data(), bytes.data(), bytes.size());
  return held;
}

void* DescriptionMemory::do_allocate(size_t bytes, size_t alignment) {
  const size_t start = (used_ + alignment - 1) / alignment * alignment;
  if (start <= block_.size() && bytes <= block_.size() - start) {
    used_ = start + bytes;
    return block_.data() + start;
  }
  return std::pmr::new_delete_resource()->allocate(bytes, alignment);
}

void DescriptionMemory::do_deallocate(void* memory, size_t bytes, size_t alignment) {
  const uintptr_t address = reinterpret_cast<uintptr_t>(memory), first = reinterpret_cast<uintptr_t>(block_.data());
  if (address >= first && address - first < block_.size()) return;
  std::pmr::new_delete_resource()->deallocate(memory, bytes, alignment);
}

}  // namespace GENAPI_NAMESPACE

#include "description/MemoryBlock.h"

#include <sys/mman.h>

#include <cstdint>
#include <cstring>
#include <mutex>
#include <new>

namespace GENAPI_NAMESPACE {
namespace {

constexpr size_t kLargePage = 2u << 20;
// Below this a large page would mostly stay empty.
constexpr size_t kLargeBlock = kLargePage / 4;

// Whole large pages, and one more so that they can start at a multiple of their size.
size_t mappingSize(size_t size) { return (size + kLargePage - 1) / kLargePage * kLargePage + kLargePage; }

// The mapping released last, kept because a program that opens one camera after another fills the same pages again. The
// system may take them back when memory is short.
class SpareMapping {
 public:
  // Null if there is none of that size.
  void* take(size_t size) {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (mapped_ == nullptr || size_ != size) return nullptr;
    return std::exchange(mapped_, nullptr);
  }
  // What is not kept, the caller unmaps.
  bool keep(void* mapped, size_t size) {
    if (size > kLargestSpare || ::madvise(mapped, size, MADV_FREE) != 0) return false;
    const std::lock_guard<std::mutex> lock(mutex_);
    if (mapped_ != nullptr) ::munmap(mapped_, size_);
    mapped_ = mapped;
    size_ = size;
    return true;
  }

 private:
  static constexpr size_t kLargestSpare = 8 * kLargePage;
  std::mutex mutex_;
  void* mapped_ = nullptr;
  size_t size_ = 0;
};

// Never destroyed: descriptions may end while the process does.
SpareMapping& spare() {
  static SpareMapping& instance = *new SpareMapping;
  return instance;
}

}  // namespace

MemoryBlock::MemoryBlock(size_t size) : size_(size) {
  if (size < kLargeBlock) {
    data_ = static_cast<char*>(::operator new(size));
    return;
  }
  if (size > SIZE_MAX - 2 * kLargePage) throw std::bad_alloc();
  const size_t mappedSize = mappingSize(size);
  mapped_ = spare().take(mappedSize);
  const bool isFresh = mapped_ == nullptr;
  if (isFresh) {
    mapped_ = ::mmap(nullptr, mappedSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (mapped_ == MAP_FAILED) throw std::bad_alloc();
  }
  const uintptr_t address = reinterpret_cast<uintptr_t>(mapped_);
  data_ = static_cast<char*>(mapped_) + (kLargePage - address % kLargePage) % kLargePage;
  // Only a wish: without it the block is the same, just slower to fill.
  if (isFresh) ::madvise(data_, mappedSize - kLargePage, MADV_HUGEPAGE);
}

MemoryBlock::~MemoryBlock() {
  if (mapped_ == nullptr)
    ::operator delete(data_);
  else if (const size_t mappedSize = mappingSize(size_); !spare().keep(mapped_, mappedSize))
    ::munmap(mapped_, mappedSize);
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

// One piece of memory for a whole description. Large ones ask the system for large pages: filling a fresh block page by
// page would take longer than everything else that a load does.
#pragma once
#include <cstddef>
#include <memory_resource>
#include <string_view>
#include <utility>

#include "Base/GCTypes.h"

namespace GENAPI_NAMESPACE {

class MemoryBlock {
 public:
  MemoryBlock() = default;
  // Uninitialised; throws std::bad_alloc.
  explicit MemoryBlock(size_t size);
  ~MemoryBlock();
  MemoryBlock(MemoryBlock&& other) noexcept
      : data_(std::exchange(other.data_, nullptr)),
        size_(other.size_),
        mapped_(std::exchange(other.mapped_, nullptr)) {}
  MemoryBlock& operator=(MemoryBlock&& other) noexcept {
    std::swap(data_, other.data_);
    std::swap(size_, other.size_);
    std::swap(mapped_, other.mapped_);
    return *this;
  }

  char* data() const { return data_; }
  size_t size() const { return size_; }

 private:
  char* data_ = nullptr;
  size_t size_ = 0;
  void* mapped_ = nullptr;  // where the mapping begins, if it is one
};

// The bytes of a text at the beginning of a block that has room for the description made of it.
struct HeldBytes {
  MemoryBlock block;
  size_t size = 0;

  // What a description needs, its text included; what is not needed is never touched.
  static constexpr size_t roomFor(size_t textSize) { return 3 * textSize + 16384; }
  static HeldBytes copyOf(std::string_view bytes);
  std::string_view view() const { return {block.data(), size}; }
};

// Where the arrays of a description lie: in one block, and what does not fit any more elsewhere.
class DescriptionMemory final : public std::pmr::memory_resource {
 public:
  // Once, before anything is allocated: takes over a block whose beginning is in use.
  void provide(HeldBytes&& held) {
    block_ = std::move(held.block);
    used_ = held.size;
  }

 private:
  void* do_allocate(size_t bytes, size_t alignment) override;
  void do_deallocate(void* memory, size_t bytes, size_t alignment) override;
  bool do_is_equal(const std::pmr::memory_resource& other) const noexcept override { return this == &other; }

  MemoryBlock block_;
  size_t used_ = 0;
};

}  // namespace GENAPI_NAMESPACE

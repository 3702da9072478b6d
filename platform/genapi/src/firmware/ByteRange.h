// A part of an open file, read by position, so that several readers do not disturb each other.
#pragma once
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "Base/GCTypes.h"

namespace GENAPI_NAMESPACE {

class ByteRange {
 public:
  // The whole of a regular file. Throws FileNotFoundException (no such file), FileIOException (cannot be opened, is no
  // regular file).
  static ByteRange open(const std::string& path);

  // Throws FormatException when the part does not lie within this range.
  ByteRange part(uint64_t offset, uint64_t size) const;
  // Reads exactly that many bytes. Throws FormatException (outside the range), FileIOException (read error, the file
  // has become shorter).
  void read(uint64_t offset, void* buffer, size_t size) const;

  uint64_t offset() const { return offset_; }  // within the file
  uint64_t size() const { return size_; }
  const std::string& path() const { return *path_; }
  int descriptor() const { return descriptor_->number; }

 private:
  struct Descriptor {
    Descriptor() = default;
    ~Descriptor();
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int number = -1;
  };

  ByteRange(std::shared_ptr<const Descriptor> descriptor, std::shared_ptr<const std::string> path, uint64_t offset,
            uint64_t size)
      : descriptor_(std::move(descriptor)), path_(std::move(path)), offset_(offset), size_(size) {}

  std::shared_ptr<const Descriptor> descriptor_;  // closed with the last range
  std::shared_ptr<const std::string> path_;
  uint64_t offset_;
  uint64_t size_;
};

}  // namespace GENAPI_NAMESPACE

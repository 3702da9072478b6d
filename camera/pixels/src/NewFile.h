// A file that appears under its name only when it is complete.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "OxPixels/Result.h"

namespace ox::pixels {

/// Where encoders write to, one piece after the other.
class Output {
 public:
  virtual ~Output() = default;
  /// False when it failed. Never throws.
  virtual bool write(const void* bytes, std::size_t count) noexcept = 0;
};

/// Written beside its name, then renamed. Without publish() the destructor removes it.
class NewFile : public Output {
 public:
  NewFile(std::string path, bool overwrite);
  ~NewFile() override;
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;

  Result open() noexcept;
  bool write(const void* bytes, std::size_t count) noexcept override;
  /// For files that are not written in order. The next write() goes behind the last byte of this.
  bool writeAt(uint64_t offset, const void* bytes, std::size_t count) noexcept;
  int descriptor() const noexcept { return descriptor_; }
  uint64_t size() const noexcept { return size_; }

  /// What the system refused first, or Ok.
  Result failure() const noexcept;
  /// Gives the file its name.
  Result publish() noexcept;
  /// Takes a published file back.
  void remove() noexcept;

 private:
  Result refuse(int error, const char* what) const noexcept;
  Result rename() const noexcept;

  std::string path_, temporary_;
  bool overwrite_;
  int descriptor_ = -1;
  int error_ = 0;
  uint64_t position_ = 0, size_ = 0;
};

}  // namespace ox::pixels

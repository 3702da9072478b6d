// A device without behaviour: every address holds a byte, for descriptions whose camera is not at hand.
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

#include "OxSimulation/RegisterDevice.h"

namespace ox::simulation {

/// Sparse: pages come into being when they are written. What was never written reads as the fill. Safe to use from
/// several threads; the file is only touched by the constructor and save().
class MemoryDevice final : public RegisterDevice {
 public:
  enum class Fill {
    kZero,
    kPattern,  ///< a byte that depends on its address alone and is never 0: see patternByte()
  };

  explicit MemoryDevice(Fill fill = Fill::kZero);
  /// Starts with the image in `path`; a file that does not exist is an empty image. Throws std::runtime_error for a
  /// file that cannot be read or is no memory image.
  explicit MemoryDevice(std::string path, Fill fill = Fill::kZero);

  int read(void* buffer, int64_t address, int64_t length) override;
  int write(const void* buffer, int64_t address, int64_t length) override;
  int accessMode() override;

  /// Writes the image to the file of the constructor, or to `path`. The file is replaced as a whole: whatever fails,
  /// an older image survives. Throws std::runtime_error; std::logic_error without any path.
  void save();
  void save(const std::string& path) const;

  /// The byte that address holds under Fill::kPattern: 1 .. 255.
  static uint8_t patternByte(int64_t address) noexcept;

 private:
  using Page = std::vector<uint8_t>;
  void load();
  Page& page(int64_t number);

  const Fill fill_;
  const std::string path_;
  mutable std::mutex mutex_;
  std::unordered_map<int64_t, Page> pages_;
};

}  // namespace ox::simulation

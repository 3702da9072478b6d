// Reads samples of any packing from an image.
#pragma once

#include <cstddef>
#include <cstdint>

#include "OxPixels/Image.h"

namespace ox::pixels {

/// Reads the samples of an image that checkReadable() has passed. Cheap to make, refers to the image, and may be used
/// from several threads.
class SampleReader {
 public:
  explicit SampleReader(const ImageView& image) noexcept;

  const Format& format() const noexcept { return format_; }
  /// Bits that the samples read have at most; larger ones come from a camera that sends more than it says.
  uint8_t significantBits() const noexcept { return significantBits_; }

  /// Writes `count` samples of a row, from sample `first` on, with their significant bits as the low ones. Rows count
  /// through all planes, see Format::sampleRows().
  void read(uint64_t row, uint64_t first, std::size_t count, uint16_t* out) const noexcept;

  /// As read(), but samples above the significant bits become white.
  void readSaturated(uint64_t row, uint64_t first, std::size_t count, uint16_t* out) const noexcept;

  /// Where a sample lies, for samples of one byte.
  const uint8_t* byte(uint64_t row, uint64_t sample) const noexcept;

 private:
  Format format_;
  const uint8_t* data_;
  const uint8_t* end_;  // of the image, not of the memory
  uint64_t stride_;
  uint64_t samplesPerRow_;
  uint64_t planeBytes_;
  uint64_t rowsPerPlane_;  // all of them unless the planes start at whole bytes of their own
  uint8_t significantBits_;
  uint8_t shift_;  // to the right
  bool swapped_;
};

}  // namespace ox::pixels

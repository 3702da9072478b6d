// Colours of a Bayer mosaic.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "Colours.h"
#include "SampleReader.h"

namespace ox::pixels {

/// Makes colours of rows, going down: each line of the mosaic is read once, and three are kept. The image has at least
/// two rows and two columns.
class Demosaic {
 public:
  Demosaic(const SampleReader& reader, uint32_t width, uint32_t height) noexcept;

  /// False if there is no memory for the lines.
  explicit operator bool() const noexcept { return lines_ != nullptr; }

  /// Colours of `count` pixels of row `y` from the even column `left` on, in the bits of the samples.
  void row(uint32_t y, uint32_t left, std::size_t count, Colours& colours) noexcept;

 private:
  const uint16_t* line(int64_t y) noexcept;

  const SampleReader& reader_;
  uint32_t width_, height_;
  std::unique_ptr<uint16_t[]> lines_;  // each with a sample more on either side
  int64_t held_[3] = {-1, -1, -1};     // which lines
};

}  // namespace ox::pixels

// Where the samples of single pixels lie, whatever the layout.
#pragma once

#include <cstddef>
#include <cstdint>

#include "OxPixels/Statistics.h"
#include "SampleReader.h"

namespace ox::pixels {

/// The samples of the pixels of an image that checkReadable() has passed.
class PixelSamples {
 public:
  explicit PixelSamples(const ImageView& image) noexcept;

  const SampleReader& reader() const noexcept { return reader_; }
  std::size_t channelCount() const noexcept { return channelCount_; }
  /// Samples of a pixel: 1 in mosaics, which have several channels.
  std::size_t valueCount() const noexcept { return valueCount_; }
  char letter(std::size_t channel) const noexcept { return letters_[channel]; }

  /// The channel that value `index` of pixel (x, y) belongs to.
  std::size_t channelOf(std::size_t index, uint32_t x, uint32_t y) const noexcept {
    return isMosaic_ ? mosaic_[x % 2 + 2 * (y % 2)] : index;
  }
  /// Value `index` of `count` pixels of a row; at most kPiece of them, from a pixel on that starts a group.
  void read(std::size_t index, uint32_t x, uint32_t y, std::size_t count, uint16_t* values) const noexcept;

 private:
  SampleReader reader_;
  uint32_t height_;
  bool isMosaic_;
  std::size_t channelCount_ = 0, valueCount_ = 0;
  char letters_[kMostChannels] = {};
  uint8_t mosaic_[4] = {};
};

}  // namespace ox::pixels

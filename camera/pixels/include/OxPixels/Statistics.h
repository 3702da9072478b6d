// Numbers about the samples of an image, in the camera's own depth: what a picture on a screen no longer shows.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "OxPixels/Image.h"
#include "OxPixels/Result.h"

namespace ox::pixels {

/// Part of an image in pixels; what lies outside of the image is cut off.
struct Region {
  uint32_t x = 0, y = 0;
  uint32_t width = UINT32_MAX, height = UINT32_MAX;
};

constexpr std::size_t kMostChannels = 4;
constexpr std::size_t kBins = 256;

struct ChannelStatistics {
  char letter = 0;  ///< as in Format::order: 'Y', 'R', 'G', 'B', 'A', 'U', 'V'
  uint64_t count = 0;
  uint16_t minimum = 0, maximum = 0;
  double mean = 0;
  double deviation = 0;    ///< standard deviation, of the samples as a whole
  uint64_t saturated = 0;  ///< samples at the largest value of the significant bits, or above
  /// Samples by their high bits: of n significant bits, bin i counts the values with i in the upper 8. Of fewer than 8
  /// bits, each value has a bin.
  std::array<uint64_t, kBins> bins{};
};

struct Statistics {
  uint8_t channelCount = 0;
  uint8_t significantBits = 0;
  std::array<ChannelStatistics, kMostChannels> channels;  ///< in the order of their first sample
};

/// Statistics of each channel: of mosaics, of the pixels that measure a colour; of YUV, of luma and chroma as they
/// came. A region of pixels that share chroma counts it once for each of them. BadSize: the region is outside;
/// otherwise fails as unpack() does.
Result measure(const ImageView& image, const Region& region, Statistics& statistics) noexcept;

/// The samples of one pixel.
struct PixelValue {
  uint32_t x = 0, y = 0;
  uint8_t count = 0;
  std::array<char, kMostChannels> letters{};
  std::array<uint16_t, kMostChannels> values{};
};

/// The samples of pixel (x, y). Errors as measure().
Result pixelAt(const ImageView& image, uint32_t x, uint32_t y, PixelValue& pixel) noexcept;

/// The pixels on a line, ends included: one for each step along the longer side. `capacity`: of `pixels`; `count`:
/// those written. BadSize: an end is outside, or the line has more pixels than `pixels` holds; count says how many.
Result lineProfile(const ImageView& image, uint32_t fromX, uint32_t fromY, uint32_t toX, uint32_t toY,
                   PixelValue* pixels, std::size_t capacity, std::size_t& count) noexcept;

}  // namespace ox::pixels

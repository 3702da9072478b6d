// From luma and chroma to red, green, blue.
#pragma once

#include <cstddef>
#include <cstdint>

#include "Colours.h"
#include "SampleReader.h"

namespace ox::pixels {

class Yuv {
 public:
  /// Colours get the values of `valueBits`.
  Yuv(const SampleReader& reader, unsigned valueBits) noexcept;

  /// Colours of `count` pixels of row `y` from pixel `left` on, which starts a group; `count` is at most kPiece and
  /// ends with a group.
  void row(uint32_t height, uint32_t y, uint32_t left, std::size_t count, Colours& colours) const noexcept;

 private:
  struct Samples;
  void gather(uint32_t height, uint32_t y, uint32_t left, std::size_t count, Samples& samples) const noexcept;

  const SampleReader& reader_;
  int32_t lumaZero_, chromaZero_, white_;
  unsigned shift_;  // what the factors are multiplied by, in powers of two
  int32_t luma_, redV_, greenU_, greenV_, blueU_;
};

}  // namespace ox::pixels

// From luma and chroma to red, green, blue.
#pragma once

#include <cstddef>
#include <cstdint>

#include "Colours.h"
#include "SampleReader.h"

namespace ox::pixels {

/// Luma and chroma of each pixel of a piece.
struct YuvSamples {
  alignas(64) uint16_t y[kPiece];
  alignas(64) uint16_t u[kPiece];
  alignas(64) uint16_t v[kPiece];
};

/// Whole numbers of the formulas: factors times a power of two.
struct YuvFactors {
  int32_t lumaZero, chromaZero, white;
  int32_t shift;  // the power
  int32_t luma, redV, greenU, greenV, blueU;
};

class Yuv {
 public:
  /// Colours get the values of `valueBits`.
  Yuv(const SampleReader& reader, unsigned valueBits) noexcept;

  /// Colours of `count` pixels of row `y` from pixel `left` on, which starts a group; `count` is at most kPiece and
  /// ends with a group.
  void row(uint32_t height, uint32_t y, uint32_t left, std::size_t count, Colours& colours) const noexcept;

 private:
  void gather(uint32_t height, uint32_t y, uint32_t left, std::size_t count, YuvSamples& samples) const noexcept;

  const SampleReader& reader_;
  YuvFactors factors_{};
};

}  // namespace ox::pixels

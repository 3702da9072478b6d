#include "Demosaic.h"

#include <new>
#include <string_view>

#include "Vectors.h"

namespace ox::pixels {

namespace {

// All bits set at every other pixel, for choosing without a branch.
struct Mask {
  alignas(64) uint16_t bits[kPiece + 1];
};
constexpr Mask kEven = [] {
  Mask mask{};
  for (std::size_t i = 0; i <= kPiece; i += 2) mask.bits[i] = 0xffff;
  return mask;
}();

template <class Sum>
OX_INLINE uint16_t choose(uint16_t mask, Sum ifSet, Sum ifNot) noexcept {
  return static_cast<uint16_t>((ifSet & mask) | (ifNot & ~mask));
}

// The colours of a row of the mosaic. `own` is the colour beside green in this row, `other` that of the rows above and
// below; `isOwn` is set at pixels that measure `own`. Lines start at pixel -1. `Sum` holds four samples: the smaller it
// is, the more of them fit into a vector.
template <class Sum>
OX_INLINE void colour(const uint16_t* __restrict above, const uint16_t* __restrict line,
                      const uint16_t* __restrict below, const uint16_t* __restrict isOwn, std::size_t count,
                      uint16_t* __restrict own, uint16_t* __restrict green, uint16_t* __restrict other) noexcept {
  alignas(64) Sum vertical[kPiece + 2];
  for (std::size_t i = 0; i < count + 2; ++i) vertical[i] = static_cast<Sum>(above[i] + below[i]);
  for (std::size_t i = 0; i < count; ++i) {
    const Sum here = line[i + 1];
    const Sum sides = static_cast<Sum>(line[i] + line[i + 2]);
    const Sum ends = vertical[i + 1];
    const Sum cross = static_cast<Sum>(sides + ends + 2);
    const Sum corners = static_cast<Sum>(vertical[i] + vertical[i + 2] + 2);
    own[i] = choose<Sum>(isOwn[i], here, static_cast<Sum>(static_cast<Sum>(sides + 1) >> 1));
    green[i] = choose<Sum>(isOwn[i], static_cast<Sum>(cross >> 2), here);
    other[i] = choose<Sum>(isOwn[i], static_cast<Sum>(corners >> 2), static_cast<Sum>(static_cast<Sum>(ends + 1) >> 1));
  }
}

}  // namespace

// Names of their own, for Vectors.h.
OX_VECTORS void colourNarrow(const uint16_t* above, const uint16_t* line, const uint16_t* below, const uint16_t* isOwn,
                             std::size_t count, uint16_t* own, uint16_t* green, uint16_t* other) noexcept {
  colour<uint16_t>(above, line, below, isOwn, count, own, green, other);
}

OX_VECTORS void colourWide(const uint16_t* above, const uint16_t* line, const uint16_t* below, const uint16_t* isOwn,
                           std::size_t count, uint16_t* own, uint16_t* green, uint16_t* other) noexcept {
  colour<uint32_t>(above, line, below, isOwn, count, own, green, other);
}

Demosaic::Demosaic(const SampleReader& reader, uint32_t width, uint32_t height) noexcept
    : reader_(reader),
      width_(width),
      height_(height),
      lines_(new (std::nothrow) uint16_t[3 * (std::size_t{width} + 2)]) {}

// A line from pixel -1 on. Over the border lies the mirrored one, which has the colours that belong there.
const uint16_t* Demosaic::line(int64_t y) noexcept {
  if (y < 0) y = 1;
  if (y >= height_) y = int64_t{height_} - 2;
  const auto slot = static_cast<std::size_t>(y % 3);
  uint16_t* const samples = lines_.get() + slot * (std::size_t{width_} + 2);
  if (held_[slot] == y) return samples;
  held_[slot] = y;
  reader_.readSaturated(static_cast<uint64_t>(y), 0, width_, samples + 1);
  samples[0] = samples[2];
  samples[std::size_t{width_} + 1] = samples[width_ - 1];
  return samples;
}

void Demosaic::row(uint32_t y, uint32_t left, std::size_t count, Colours& colours) noexcept {
  const uint16_t* const above = line(int64_t{y} - 1);
  const uint16_t* const here = line(y);
  const uint16_t* const below = line(int64_t{y} + 1);
  const std::string_view order = reader_.format().order.substr(2 * (y % 2), 2);
  const bool red = order.find('R') != order.npos;
  const bool greenFirst = order[0] == 'G';
  uint16_t* const own = red ? colours.red : colours.blue;
  uint16_t* const other = red ? colours.blue : colours.red;
  const bool narrow = reader_.significantBits() <= 14;
  (narrow ? colourNarrow : colourWide)(above + left, here + left, below + left, kEven.bits + (greenFirst ? 1 : 0),
                                       count, own, colours.green, other);
}

}  // namespace ox::pixels

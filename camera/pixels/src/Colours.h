// Pieces of rows on the way to a picture.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "Scaling.h"

namespace ox::pixels {

/// Pixels that are made at a time, so that what lies between in and out stays on the stack and in the fastest cache. A
/// multiple of every group of pixels.
constexpr std::size_t kPiece = 1024;

/// Samples above the significant bits count as white.
inline void saturate(uint16_t* samples, std::size_t count, unsigned bits) noexcept {
  const auto white = static_cast<uint16_t>((1u << bits) - 1);
  for (std::size_t i = 0; i < count; ++i) samples[i] = std::min(samples[i], white);
}

/// Red, green and blue of a piece, each by itself: compilers make vectors of loops over these.
struct Colours {
  alignas(64) uint16_t red[kPiece];
  alignas(64) uint16_t green[kPiece];
  alignas(64) uint16_t blue[kPiece];
};

/// Writes red, green, blue of each pixel, 8 bits each. `colour(i)` is a pixel as blue * 65536 + green * 256 + red. In
/// whole words: where vectors have no shuffles of bytes, compilers store each byte by itself.
template <class Colour>
void writePixels(std::size_t count, uint8_t* __restrict out, Colour&& colour) noexcept {
  alignas(64) uint32_t pixels[kPiece];
  for (std::size_t i = 0; i < count; ++i) pixels[i] = colour(i);
  const auto two = [&](std::size_t i) {
    uint64_t both;
    std::memcpy(&both, pixels + i, sizeof both);
    return (both & 0xffffff) | (both >> 8 & 0xffffff000000);
  };
  std::size_t i = 0;
  for (; i + 8 <= count; i += 8, out += 24) {
    const uint64_t a = two(i), b = two(i + 2), c = two(i + 4), d = two(i + 6);
    const uint64_t first = a | b << 48, second = b >> 16 | c << 32, third = c >> 32 | d << 16;
    std::memcpy(out, &first, sizeof first);
    std::memcpy(out + 8, &second, sizeof second);
    std::memcpy(out + 16, &third, sizeof third);
  }
  for (; i < count; ++i, out += 3) std::memcpy(out, pixels + i, 3);
}

/// A row of a picture from some pixel on; `Sample` is uint8_t or uint16_t.
template <class Sample>
struct PictureRow {
  Sample* out;
  uint8_t channels;
};

template <class Sample>
void writeColours(const Colours& from, std::size_t count, const Scaling& scaling, PictureRow<Sample> row) noexcept {
  Sample* const __restrict out = row.out;
  scaling.with([&](auto scaled) {
    if constexpr (sizeof(Sample) == 1) {
      if (row.channels == 3) {
        return writePixels(count, out, [&](std::size_t i) {
          return static_cast<uint32_t>(scaled(from.red[i]) | scaled(from.green[i]) << 8 | scaled(from.blue[i]) << 16);
        });
      }
    }
    if (row.channels == 3) {
      for (std::size_t i = 0; i < count; ++i) {
        out[3 * i] = static_cast<Sample>(scaled(from.red[i]));
        out[3 * i + 1] = static_cast<Sample>(scaled(from.green[i]));
        out[3 * i + 2] = static_cast<Sample>(scaled(from.blue[i]));
      }
      return;
    }
    for (std::size_t i = 0; i < count; ++i) {  // weights of 65536 that add up to it
      const uint32_t red = scaled(from.red[i]), green = scaled(from.green[i]), blue = scaled(from.blue[i]);
      out[i] = static_cast<Sample>((19595 * red + 38470 * green + 7471 * blue + 32768) >> 16);
    }
  });
}

template <class Sample>
void writeGray(const uint16_t* values, std::size_t count, const Scaling& scaling, PictureRow<Sample> row) noexcept {
  Sample* const __restrict out = row.out;
  scaling.with([&](auto scaled) {
    if (row.channels == 3) {
      for (std::size_t i = 0; i < count; ++i) {
        out[3 * i] = out[3 * i + 1] = out[3 * i + 2] = static_cast<Sample>(scaled(values[i]));
      }
      return;
    }
    for (std::size_t i = 0; i < count; ++i) out[i] = static_cast<Sample>(scaled(values[i]));
  });
}

}  // namespace ox::pixels

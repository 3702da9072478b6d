// Pieces of rows on the way to a picture.
#pragma once

#include <cstddef>
#include <cstdint>

namespace ox::pixels {

/// Pixels that are made at a time, so that what lies between in and out stays on the stack and in the fastest cache. A
/// multiple of every group of pixels.
constexpr std::size_t kPiece = 1024;

/// Red, green and blue of a piece, each by itself: compilers make vectors of loops over these.
struct Colours {
  alignas(64) uint16_t red[kPiece];
  alignas(64) uint16_t green[kPiece];
  alignas(64) uint16_t blue[kPiece];
};

/// Takes pixels of `size` samples, 3 or 4, apart. The places are those of the colours in a pixel.
void takeApart(const uint16_t* samples, std::size_t size, std::size_t red, std::size_t green, std::size_t blue,
               std::size_t count, Colours& colours) noexcept;

/// Writes red, green, blue of each pixel.
void interleave(const Colours& colours, std::size_t count, uint8_t* out) noexcept;
void interleave(const Colours& colours, std::size_t count, uint16_t* out) noexcept;

/// Makes the gray of each pixel in place of its red.
void makeGray(Colours& colours, std::size_t count) noexcept;

/// Writes each value once.
void writeGray(const uint16_t* values, std::size_t count, uint8_t* out) noexcept;
void writeGray(const uint16_t* values, std::size_t count, uint16_t* out) noexcept;

/// Writes each value three times.
void writeGrayColours(const uint16_t* values, std::size_t count, uint8_t* out) noexcept;
void writeGrayColours(const uint16_t* values, std::size_t count, uint16_t* out) noexcept;

}  // namespace ox::pixels

#include "Colours.h"

#include <cstring>

#include "Vectors.h"

namespace ox::pixels {

namespace {

template <std::size_t Size>
OX_INLINE void takePixels(const uint16_t* __restrict samples, std::size_t at, std::size_t count,
                          uint16_t* __restrict colour) noexcept {
  for (std::size_t i = 0; i < count; ++i) colour[i] = samples[Size * i + at];
}

// Three bytes of each pixel, in whole words: where vectors have no shuffles of bytes, compilers would store each byte
// by itself. A pixel is blue * 65536 + green * 256 + red.
OX_INLINE void writeThrees(const uint32_t* pixels, std::size_t count, uint8_t* __restrict out) noexcept {
  const auto two = [pixels](std::size_t i) { return pixels[i] | uint64_t{pixels[i + 1]} << 24; };
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

}  // namespace

OX_VECTORS void takeApart(const uint16_t* samples, std::size_t size, std::size_t red, std::size_t green,
                          std::size_t blue, std::size_t count, Colours& colours) noexcept {
  if (size == 3) {
    takePixels<3>(samples, red, count, colours.red);
    takePixels<3>(samples, green, count, colours.green);
    takePixels<3>(samples, blue, count, colours.blue);
  } else {
    takePixels<4>(samples, red, count, colours.red);
    takePixels<4>(samples, green, count, colours.green);
    takePixels<4>(samples, blue, count, colours.blue);
  }
}

OX_VECTORS void interleave(const Colours& colours, std::size_t count, uint8_t* out) noexcept {
  alignas(64) uint32_t pixels[kPiece];
  for (std::size_t i = 0; i < count; ++i)
    pixels[i] = static_cast<uint32_t>(colours.red[i] | colours.green[i] << 8 | colours.blue[i] << 16);
  writeThrees(pixels, count, out);
}

OX_VECTORS void interleave(const Colours& colours, std::size_t count, uint16_t* out) noexcept {
  uint16_t* const __restrict to = out;
  for (std::size_t i = 0; i < count; ++i) {
    to[3 * i] = colours.red[i];
    to[3 * i + 1] = colours.green[i];
    to[3 * i + 2] = colours.blue[i];
  }
}

OX_VECTORS void makeGray(Colours& colours, std::size_t count) noexcept {
  for (std::size_t i = 0; i < count; ++i) {  // weights of 65536 that add up to it
    const uint32_t red = colours.red[i], green = colours.green[i], blue = colours.blue[i];
    colours.red[i] = static_cast<uint16_t>((19595 * red + 38470 * green + 7471 * blue + 32768) >> 16);
  }
}

OX_VECTORS void writeGray(const uint16_t* values, std::size_t count, uint8_t* out) noexcept {
  uint8_t* const __restrict to = out;
  for (std::size_t i = 0; i < count; ++i) to[i] = static_cast<uint8_t>(values[i]);
}

void writeGray(const uint16_t* values, std::size_t count, uint16_t* out) noexcept {
  std::memcpy(out, values, 2 * count);
}

OX_VECTORS void writeGrayColours(const uint16_t* values, std::size_t count, uint8_t* out) noexcept {
  alignas(64) uint32_t pixels[kPiece];
  for (std::size_t i = 0; i < count; ++i) pixels[i] = values[i] * uint32_t{0x10101};
  writeThrees(pixels, count, out);
}

OX_VECTORS void writeGrayColours(const uint16_t* values, std::size_t count, uint16_t* out) noexcept {
  uint16_t* const __restrict to = out;
  for (std::size_t i = 0; i < count; ++i) to[3 * i] = to[3 * i + 1] = to[3 * i + 2] = values[i];
}

}  // namespace ox::pixels

// Samples written bit by bit, as slowly and plainly as the standard describes them: what the tests compare with.
#pragma once

#include <cstdint>
#include <cstring>
#include <memory>
#include <random>
#include <vector>

#include "OxPixels/Image.h"

namespace ox::pixels {

/// Memory of exactly that many bytes, so that sanitizers see what goes beyond.
struct Memory {
  explicit Memory(std::size_t bytes) : size(bytes), data(new uint8_t[bytes]()) {}
  explicit Memory(const std::vector<uint8_t>& bytes) : Memory(bytes.size()) {
    if (size != 0) std::memcpy(data.get(), bytes.data(), size);
  }
  std::size_t size;
  std::unique_ptr<uint8_t[]> data;
};

inline ImageView view(const Memory& memory, uint32_t format, uint32_t width, uint32_t height, std::size_t stride = 0) {
  return {memory.data.get(), memory.size, format, width, height, stride};
}

inline ImageView view(const Memory& memory, const char* name, uint32_t width, uint32_t height, std::size_t stride = 0) {
  return view(memory, findFormat(name)->number, width, height, stride);
}

/// Writes samples of a format, row after row, at their place in an image.
class SampleWriter {
 public:
  SampleWriter(const Format& format, uint32_t width, uint32_t height, std::size_t stride)
      : format_(format),
        samples_(format.samplesPerRow(width)),
        stride_(stride),
        memory_(bytes(format, width, height, stride)) {}

  void put(uint64_t row, uint64_t sample, unsigned value) {
    uint64_t index = sample, start = 0;
    if (stride_ != 0)
      start = row * stride_;
    else
      index += row * samples_;
    for (unsigned bit = 0; bit < format_.significantBits; ++bit)
      if (value >> bit & 1)
        memory_.data[start + place(index, bit) / 8] |= static_cast<uint8_t>(1 << place(index, bit) % 8);
  }
  const Memory& memory() const { return memory_; }

 private:
  static std::size_t bytes(const Format& format, uint32_t width, uint32_t height, std::size_t stride) {
    uint64_t bytes = 0;
    return imageBytes(format.number, width, height, stride, 0, bytes) ? bytes : 0;
  }
  // The place of a bit, counted from the lowest bit of the first byte.
  uint64_t place(uint64_t index, unsigned bit) const {
    if (format_.packing == Packing::Word32) return index / 3 * 32 + index % 3 * 10 + bit;
    if (format_.packing != Packing::Pairs) return index * format_.sampleBits + bit;
    const unsigned low = format_.significantBits - 8u;  // low bits lie in the middle byte of three
    const uint64_t pair = index / 2 * 24;
    if (bit < low) return pair + (index % 2 == 0 ? 8 : 12) + bit;
    return pair + (index % 2 == 0 ? 0 : 16) + bit - low;
  }

  Format format_;
  uint64_t samples_;
  std::size_t stride_;
  Memory memory_;
};

inline unsigned randomValue(unsigned bits) {
  static std::mt19937 generator(7);
  return generator() & ((1u << bits) - 1);
}

}  // namespace ox::pixels

#include "SampleReader.h"

#include <bit>
#include <cstring>

#include "Vectors.h"

namespace ox::pixels {

static_assert(std::endian::native == std::endian::little, "samples are loaded in the machine's order");

namespace {

uint64_t load(const uint8_t* bytes, std::size_t count) noexcept {
  uint64_t word = 0;
  std::memcpy(&word, bytes, count);
  return word;
}

// Four samples of the low 4 * Bits bits of a word, each into 16 bits.
template <unsigned Bits>
uint64_t spread(uint64_t word) noexcept {
  constexpr uint64_t kMask = (uint64_t{1} << Bits) - 1;
  constexpr unsigned kStep = 16 - Bits;
  return (word & kMask) | (word & kMask << Bits) << kStep | (word & kMask << 2 * Bits) << 2 * kStep |
         (word & kMask << 3 * Bits) << 3 * kStep;
}

// 10, 12 or 14 bits without gaps. `bit` is even, so that four samples and what lies before them fit into a word.
template <unsigned Bits>
void readLsb(const uint8_t* data, const uint8_t* end, uint64_t bit, std::size_t count, uint16_t* out) noexcept {
  const uint8_t* from = data + bit / 8;
  const unsigned offset = bit % 8;
  for (; count >= 4 && end - from >= 8; count -= 4, out += 4, from += Bits / 2) {
    const uint64_t four = spread<Bits>(load(from, 8) >> offset);
    std::memcpy(out, &four, sizeof four);
  }
  for (unsigned at = offset; count > 0; --count, at += Bits) {
    const uint8_t* const first = from + at / 8;
    *out++ = static_cast<uint16_t>(load(first, (at % 8 + Bits + 7) / 8) >> at % 8 & ((1u << Bits) - 1));
  }
}

// 1, 2 or 4 bits, several in a byte.
void readSmall(const uint8_t* data, unsigned bits, uint64_t bit, std::size_t count, uint16_t* out) noexcept {
  const unsigned mask = (1u << bits) - 1;
  for (std::size_t i = 0; i < count; ++i, bit += bits) out[i] = static_cast<uint16_t>(data[bit / 8] >> bit % 8 & mask);
}

// Two samples in three bytes: high bits of the first, low bits of both, high bits of the second.
template <unsigned Bits>
void readPairs(const uint8_t* data, const uint8_t* end, uint64_t first, std::size_t count, uint16_t* out) noexcept {
  constexpr unsigned kLow = Bits - 8;
  constexpr unsigned kMask = (1u << kLow) - 1;
  const uint8_t* from = data + first / 2 * 3;
  if (first % 2 != 0 && count > 0) {
    *out++ = static_cast<uint16_t>(from[2] << kLow | (from[1] >> 4 & kMask));
    from += 3;
    --count;
  }
  constexpr uint64_t kHigh = 0xff;
  for (; count >= 4 && end - from >= 8; count -= 4, out += 4, from += 6) {
    const uint64_t word = load(from, 8);
    const uint64_t four = (word & kHigh) << kLow | (word >> 8 & kMask) |                         // first
                          (word & kHigh << 16) << kLow | (word & uint64_t{kMask} << 12) << 4 |   // second
                          (word & kHigh << 24) << (8 + kLow) | (word & uint64_t{kMask} << 32) |  //
                          (word & kHigh << 40) << (8 + kLow) | (word & uint64_t{kMask} << 36) << 12;
    std::memcpy(out, &four, sizeof four);
  }
  for (; count > 0; from += 3) {
    *out++ = static_cast<uint16_t>(from[0] << kLow | (from[1] & kMask));
    if (--count == 0) break;
    *out++ = static_cast<uint16_t>(from[2] << kLow | (from[1] >> 4 & kMask));
    --count;
  }
}

void readWords(const uint8_t* from, bool swapped, unsigned shift, std::size_t count, uint16_t* out) noexcept {
  std::memcpy(out, from, 2 * count);
  if (swapped)
    for (std::size_t i = 0; i < count; ++i) out[i] = static_cast<uint16_t>(out[i] << 8 | out[i] >> 8);
  if (shift != 0)
    for (std::size_t i = 0; i < count; ++i) out[i] = static_cast<uint16_t>(out[i] >> shift);
}

void readWord32(const uint8_t* row, uint64_t first, std::size_t count, uint16_t* out) noexcept {
  for (uint64_t sample = first; count > 0; ++sample, --count)
    *out++ = static_cast<uint16_t>(load(row + sample / 3 * 4, 4) >> 10 * (sample % 3) & 0x3ff);
}

// Each sample is stretched to 8 bits by repeating its high bits.
void readRgb565(const uint8_t* row, uint64_t first, std::size_t count, uint16_t* out) noexcept {
  for (uint64_t sample = first; count > 0; ++sample, --count) {
    const auto word = static_cast<unsigned>(load(row + sample / 3 * 2, 2));
    const unsigned five = (sample % 3 == 0 ? word : word >> 11) & 31;
    const unsigned six = word >> 5 & 63;
    *out++ = static_cast<uint16_t>(sample % 3 == 1 ? six << 2 | six >> 4 : five << 3 | five >> 2);
  }
}

}  // namespace

// A name of its own, for Vectors.h.
OX_VECTORS void limitSamples(uint16_t* samples, std::size_t count, uint16_t white) noexcept {
  for (std::size_t i = 0; i < count; ++i) samples[i] = samples[i] < white ? samples[i] : white;
}

SampleReader::SampleReader(const ImageView& image) noexcept
    : format_(describe(image.format)),
      data_(static_cast<const uint8_t*>(image.data)),
      stride_(image.stride),
      samplesPerRow_(format_.samplesPerRow(image.width)),
      rowsPerPlane_(format_.planes == Planes::Planar ? image.height : format_.sampleRows(image.height)),
      significantBits_(pixels::significantBits(image)),
      shift_(image.highAligned && format_.sampleBits == 16 ? static_cast<uint8_t>(16 - significantBits_) : 0),
      swapped_(image.bigEndian) {
  uint64_t bytes = 0;
  const bool known = static_cast<bool>(imageBytes(image.format, image.width, image.height, image.stride, 0, bytes));
  end_ = data_ + (known ? bytes : 0);
  planeBytes_ = stride_ != 0 ? stride_ * rowsPerPlane_ : bytes / (format_.sampleRows(image.height) / rowsPerPlane_);
}

const uint8_t* SampleReader::byte(uint64_t row, uint64_t sample) const noexcept {
  return data_ + row * (stride_ != 0 ? stride_ : samplesPerRow_) + sample;
}

void SampleReader::readSaturated(uint64_t row, uint64_t first, std::size_t count, uint16_t* out) const noexcept {
  read(row, first, count, out);
  const unsigned mostBits = format_.packing == Packing::Pairs ? format_.significantBits : format_.sampleBits - shift_;
  if (mostBits > significantBits_) limitSamples(out, count, static_cast<uint16_t>((1u << significantBits_) - 1));
}

void SampleReader::read(uint64_t row, uint64_t first, std::size_t count, uint16_t* out) const noexcept {
  const uint8_t* from = data_ + row / rowsPerPlane_ * planeBytes_;
  uint64_t sample = first;
  if (stride_ != 0)
    from += row % rowsPerPlane_ * stride_;
  else
    sample += row % rowsPerPlane_ * samplesPerRow_;
  switch (format_.packing) {
    case Packing::Bytes:
      if (format_.sampleBits == 16) return readWords(from + 2 * sample, swapped_, shift_, count, out);
      for (std::size_t i = 0; i < count; ++i) out[i] = from[sample + i];
      return;
    case Packing::Lsb:
      if (format_.sampleBits == 10) return readLsb<10>(from, end_, 10 * sample, count, out);
      if (format_.sampleBits == 12) return readLsb<12>(from, end_, 12 * sample, count, out);
      if (format_.sampleBits == 14) return readLsb<14>(from, end_, 14 * sample, count, out);
      return readSmall(from, format_.sampleBits, format_.sampleBits * sample, count, out);
    case Packing::Pairs:
      if (format_.significantBits == 10) return readPairs<10>(from, end_, sample, count, out);
      return readPairs<12>(from, end_, sample, count, out);
    case Packing::Word32: return readWord32(from, sample, count, out);
    case Packing::Rgb565: return readRgb565(from, sample, count, out);
    case Packing::Other: return;
  }
}

}  // namespace ox::pixels

// Pixel formats: the numbers of the GenICam Pixel Format Naming Convention (PFNC) and what each says about memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace ox::pixels {

/// What the samples of a format mean.
enum class Kind : uint8_t {
  Unknown,  ///< a number that the table lacks: only its bits per pixel are known
  Mono,     ///< one sample per pixel
  Bayer,    ///< one sample per pixel under a mosaic of 2 x 2 colours
  Rgb,      ///< red, green, blue, perhaps alpha, in any order
  Yuv,      ///< luma and chroma, chroma perhaps shared by pixels
  Data,     ///< anything else: depth, confidence, sparse colour filters; never made into a picture
};

/// How samples lie in memory.
enum class Packing : uint8_t {
  Bytes,   ///< each fills 1, 2, 4 or 8 whole bytes; its significant bits are the low ones
  Lsb,     ///< without gaps, first sample in the lowest bits (names with "p")
  Pairs,   ///< two of 10 or 12 bits in three bytes, high bits first (names with "Packed", from GigE Vision)
  Word32,  ///< three of 10 bits in four bytes, first sample in the lowest bits
  Rgb565,  ///< 5, 6 and 5 bits in two bytes, first sample in the lowest bits; read as 8 bits each
  Other,   ///< not known here
};

enum class Planes : uint8_t {
  Interleaved,
  Planar,   ///< one whole image per sample of the order
  Semi422,  ///< luma, then chroma pairs, each for two pixels of a row
  Semi420,  ///< luma, then chroma pairs, each for 2 x 2 pixels
};

enum class Numbers : uint8_t { Unsigned, Signed, Float };

/// From YUV to RGB. "Full": luma and chroma use all values. The others: luma from 16 to 235, chroma from 16 to 240,
/// of 256.
enum class Matrix : uint8_t { Bt601Full, Bt601, Bt709, Bt2020 };

/// Facts of one format. Sizes are in bits.
struct Format {
  uint32_t number = 0;
  std::string_view name;  ///< of the PFNC, ends with a zero byte; empty when unknown
  Kind kind = Kind::Unknown;
  /// One letter per sample in the order of memory: "Y", "RGB", "BGRA", "UYVY"; of Bayer formats the first row of
  /// 2 x 2 and then the second, "GRBG".
  std::string_view order;
  Packing packing = Packing::Other;
  uint8_t significantBits = 0;  ///< of one sample
  uint8_t bitsPerPixel = 0;     ///< over all samples; the bits 16 to 23 of the number
  uint8_t sampleBits = 0;       ///< that one sample takes in memory; 0: unknown
  uint8_t pixelsPerGroup = 1;   ///< pixels that `order` describes; widths are multiples of it
  Planes planes = Planes::Interleaved;
  Numbers numbers = Numbers::Unsigned;
  Matrix matrix = Matrix::Bt601Full;

  /// True if convert() makes a picture of it.
  bool isPicture() const noexcept;
  /// True if unpack() reads its samples: unsigned, at most 16 bits, packing known.
  bool isUnpackable() const noexcept;
  /// Samples in one row of an image, of one plane where there are planes.
  uint64_t samplesPerRow(uint64_t width) const noexcept;
  /// Rows of samples in an image: those of all planes, one plane below the other.
  uint64_t sampleRows(uint64_t height) const noexcept;
};

/// Facts of a number, whatever it is: one that the table lacks has an empty name and the bits per pixel it says itself.
Format describe(uint32_t number) noexcept;

/// Facts of a PFNC name or of one of the names that older cameras use for it ("YUV422Packed", "RGB8Packed"); null when
/// unknown. Cameras use some names for several numbers: where the number is known it decides.
const Format* findFormat(std::string_view name) noexcept;

/// Every format in the table, in the order of numbers.
std::span<const Format> allFormats() noexcept;

/// The colours of a Bayer mosaic seen from pixel (x, y) of it: "RGGB" from (1, 0) is "GRBG". With the size of a
/// mosaic less one it is the phase after turning it around. Empty unless `order` is one of the four phases.
std::string_view bayerOrderAt(std::string_view order, uint32_t x, uint32_t y) noexcept;

}  // namespace ox::pixels

// From what a camera sends to samples and pictures of 8 or 16 bits. All functions write into memory of the caller,
// allocate nothing, and may run on several threads for different rows of one image. In and out must not overlap.
#pragma once

#include <cstddef>
#include <cstdint>

#include "OxPixels/Image.h"
#include "OxPixels/Result.h"

namespace ox::pixels {

/// Where significant bits go in a sample of more bits.
enum class Align : uint8_t { Low, High };

/// Memory for samples, in the byte order of the machine.
struct SampleBuffer {
  void* data = nullptr;     ///< of 16-bit samples at an even address
  std::size_t size = 0;     ///< bytes
  std::size_t stride = 0;   ///< bytes from row to row, even for 16-bit samples; 0: no padding
  uint8_t sampleBits = 16;  ///< 8 or 16
  uint32_t firstRow = 0;    ///< row of the samples that `data` starts with
};

/// Writes every sample of an image as a number of its own, without looking at colours. Each row of the result has
/// Format::samplesPerRow() samples; where there are planes, the rows of all planes stand below each other and `rows`
/// counts through them; memory is needed from `firstRow` to the last of them. Bits that no sample of the format has are
/// handed on as they came. BadArgument: memory missing, at an odd address, sampleBits neither 8 nor 16, or 8 for
/// samples of more bits. BadSize: a stride shorter than a row, memory or image too short, rows that are not there.
/// Unsupported: as checkReadable().
Result unpack(const ImageView& image, const SampleBuffer& out, Align align = Align::Low, Rows rows = {}) noexcept;

/// Memory for a picture: rows of gray values, or of red, green, blue.
struct Picture {
  void* data = nullptr;    ///< of 16-bit samples at an even address
  std::size_t size = 0;    ///< bytes
  std::size_t stride = 0;  ///< bytes from row to row, even for 16-bit samples; 0: no padding
  uint8_t channels = 3;    ///< 1: gray, 3: red, green, blue
  uint8_t sampleBits = 8;  ///< 8 or 16
  /// White is 2^valueBits - 1. 0: all of sampleBits. With the significant bits of the image the values stay as they
  /// are.
  uint8_t valueBits = 0;
  uint32_t firstRow = 0;  ///< row of the image that `data` starts with, for a picture made in bands
};

/// Makes a picture. Values are scaled from the significant bits to valueBits: to fewer bits by leaving out the low
/// ones, to more by repeating the high ones, so that black stays black, white becomes white, and dropping the added
/// bits gives the value again. Values above the significant bits count as white.
///
/// Bayer: the mean of the nearest two or four samples of a colour, rounded half up; at the border those on the other
/// side stand in for the missing ones. It needs two rows and two columns.
/// YUV: the matrix that the format names, rounded to the nearest; pixels that share chroma get the same. Formats named
/// YUV or plain YCbCr: BT.601 over all values. Gray of colours: 0.299 R + 0.587 G + 0.114 B, rounded. Alpha is left
/// out. `rows` are rows of the picture. Errors as for unpack(); Unsupported also for formats that are no pictures.
Result convert(const ImageView& image, const Picture& out, Rows rows = {}) noexcept;

/// Bytes that a picture of that size takes without padding. BadSize: empty, or more than 2^48.
Result pictureBytes(uint32_t width, uint32_t height, uint8_t channels, uint8_t sampleBits, uint64_t& bytes) noexcept;

}  // namespace ox::pixels

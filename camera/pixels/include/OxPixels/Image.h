// An image in memory: where it lies, its format and geometry, and how many bytes that takes.
#pragma once

#include <cstddef>
#include <cstdint>

#include "OxPixels/Format.h"
#include "OxPixels/Result.h"

namespace ox::pixels {

/// Refers to an image; owns nothing. The bytes need no alignment.
struct ImageView {
  const void* data = nullptr;
  std::size_t size = 0;  ///< bytes from `data` that may be read; may be more than the image takes
  uint32_t format = 0;   ///< PFNC number
  uint32_t width = 0;    ///< pixels
  uint32_t height = 0;   ///< rows
  /// Bytes from the start of a row to the start of the next one. 0: each row follows the last sample of the one before,
  /// for packed formats even inside a byte. In formats with planes the rows of all planes are that far apart.
  std::size_t stride = 0;
  /// Bits of each sample that mean something. 0: as the format says. For a camera that sends 12 bits as Mono16.
  uint8_t significantBits = 0;
  bool bigEndian = false;    ///< samples of 16 bits have the high byte first
  bool highAligned = false;  ///< the significant bits of 16-bit samples are the high ones, not the low ones
};

/// A range of rows; what lies below the image is cut off.
struct Rows {
  uint32_t first = 0;
  uint32_t count = UINT32_MAX;
};

/// Bytes of an image of `width` times `height` pixels, by the bits per pixel of its number, known or not.
/// `stride` as in ImageView; the last row has no padding. `yPadding`: bytes after the image.
/// BadSize: zero width or height, a number without bits per pixel, a stride below a row, more than 2^48 bytes.
Result imageBytes(uint32_t format, uint32_t width, uint32_t height, std::size_t stride, std::size_t yPadding,
                  uint64_t& bytes) noexcept;

/// Finds the stride of an image that came with `xPadding` bytes after each row in `size` bytes. Without padding a row
/// of packed pixels that ends inside a byte leaves two choices: the next one starts at the next whole byte, or in that
/// very byte (stride 0). Which one is seen from `size`: the former if it is large enough for that.
/// Fails as imageBytes(), and with BadSize if `size` is too short for either.
Result findStride(uint32_t format, uint32_t width, uint32_t height, std::size_t xPadding, std::size_t size,
                  std::size_t& stride) noexcept;

/// Says whether all of an image can be read: sizes, stride, `size`, whole groups of pixels (4:2:2 has even widths).
/// Unsupported: unpack() does not read the format.
Result checkReadable(const ImageView& image) noexcept;

/// Significant bits of its samples: those of the view if it has any, else those of the format.
uint8_t significantBits(const ImageView& image) noexcept;

}  // namespace ox::pixels

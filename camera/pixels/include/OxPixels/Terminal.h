// Pictures for people: made smaller, and as text for a terminal.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "OxPixels/Result.h"

namespace ox::pixels {

/// A picture of 8 bits: red, green, blue of each pixel.
struct RgbView {
  const uint8_t* data = nullptr;
  std::size_t size = 0;    ///< bytes
  std::size_t stride = 0;  ///< bytes from row to row; 0: no padding
  uint32_t width = 0, height = 0;
};

/// Makes a picture smaller: each pixel of the result is the mean of those it covers, whole ones only.
/// `out` has 3 * width * height bytes. BadSize: empty, larger than the picture, or a picture or memory too short.
Result shrink(const RgbView& picture, uint32_t width, uint32_t height, uint8_t* out, std::size_t size) noexcept;

enum class TerminalColours : uint8_t {
  True,     ///< 24 bits
  Table256  ///< the nearest of a cube of 6 x 6 x 6 colours and 24 grays
};

/// A picture as text of at most `columns` x `rows` characters, sides in proportion and no larger than it is. A
/// character is two pixels: the upper is the colour of a half block, the lower that of the ground. Lines end with the
/// colours reset and a line feed. BadArgument: no columns or rows. BadSize: as shrink(). NoMemory.
Result terminalText(const RgbView& picture, uint32_t columns, uint32_t rows, TerminalColours colours,
                    std::string& text) noexcept;

}  // namespace ox::pixels

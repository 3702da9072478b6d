// A picture in bands of some rows, for encoders.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "OxPixels/Convert.h"
#include "OxPixels/Save.h"

namespace ox::pixels {

/// How an image becomes a picture in a file.
struct Shape {
  uint8_t channels;
  uint8_t sampleBits;
  uint8_t valueBits;

  std::size_t rowBytes(uint32_t width) const noexcept { return std::size_t{width} * channels * sampleBits / 8; }
};

Shape shapeOf(const ImageView& image, FileKind kind, const SaveOptions& options) noexcept;

/// Makes one band after the other, so that no encoder needs the whole picture.
class Bands {
 public:
  enum class Order : uint8_t { Machine, BigEndian };

  Bands(const ImageView& image, const Shape& shape, Order order);

  uint32_t rowsPerBand() const noexcept { return rowsPerBand_; }
  /// Makes the next band. After the last one, and after a failure, rows() is 0.
  Result next() noexcept;
  uint32_t rows() const noexcept { return rows_; }
  uint8_t* row(uint32_t index) noexcept { return bytes_.data() + index * rowBytes_; }
  std::size_t bytes() const noexcept { return rows_ * rowBytes_; }

 private:
  const ImageView& image_;
  Shape shape_;
  Order order_;
  std::size_t rowBytes_;
  uint32_t rowsPerBand_, top_ = 0, rows_ = 0;
  std::vector<uint8_t> bytes_;
};

}  // namespace ox::pixels

#include "Bands.h"

#include <algorithm>

namespace ox::pixels {

namespace {

constexpr std::size_t kBandBytes = 256 << 10;  // large for a system call, small for a cache
constexpr std::size_t kLeastRows = 16;         // a band of a mosaic also reads the rows above and below it

}  // namespace

Shape shapeOf(const ImageView& image, FileKind kind, const SaveOptions& options) noexcept {
  const uint8_t significant = significantBits(image);
  const bool gray = kind == FileKind::Pgm || (kind != FileKind::Ppm && describe(image.format).kind == Kind::Mono);
  const bool deep = significant > 8 && !options.eightBits && kind != FileKind::Jpeg;
  Shape shape{static_cast<uint8_t>(gray ? 1 : 3), static_cast<uint8_t>(deep ? 16 : 8), 0};
  const bool saysWhite = kind == FileKind::Pgm || kind == FileKind::Ppm || kind == FileKind::Pnm;
  shape.valueBits = deep && (saysWhite || options.keepValues) ? significant : shape.sampleBits;
  return shape;
}

Bands::Bands(const ImageView& image, const Shape& shape, Order order)
    : image_(image), shape_(shape), order_(order), rowBytes_(shape.rowBytes(image.width)) {
  const std::size_t rows = std::max(kLeastRows, kBandBytes / rowBytes_);
  rowsPerBand_ = static_cast<uint32_t>(std::min<std::size_t>(rows, image.height));
  bytes_.resize(rowsPerBand_ * rowBytes_);
}

Result Bands::next() noexcept {
  rows_ = 0;
  if (top_ == image_.height) return {};
  const uint32_t rows = std::min(rowsPerBand_, image_.height - top_);
  const Picture out{bytes_.data(), bytes_.size(), 0, shape_.channels, shape_.sampleBits, shape_.valueBits, top_};
  if (auto bad = convert(image_, out, {top_, rows}); !bad) return bad;
  top_ += rows;
  rows_ = rows;
  if (order_ == Order::BigEndian && shape_.sampleBits == 16)
    for (std::size_t i = 0; i + 1 < bytes(); i += 2) std::swap(bytes_[i], bytes_[i + 1]);
  return {};
}

}  // namespace ox::pixels

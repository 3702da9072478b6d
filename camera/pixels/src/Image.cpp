#include "OxPixels/Image.h"

#include <algorithm>

#include "Failure.h"

namespace ox::pixels {

namespace {

constexpr uint64_t kMostBytes = uint64_t{1} << 48;  // what 64-bit machines can address; bits still count in 64

bool product(uint64_t a, uint64_t b, uint64_t& result) noexcept {
  return !__builtin_mul_overflow(a, b, &result) && result <= kMostBytes;
}

// Bits of one row of one plane: at most 2^40.
uint64_t rowBits(const Format& format, uint64_t width) noexcept {
  return width * (format.planes == Planes::Interleaved ? format.bitsPerPixel : format.sampleBits);
}

uint64_t rowBytes(const Format& format, uint64_t width) noexcept { return (rowBits(format, width) + 7) / 8; }

Result checkGeometry(const Format& format, uint32_t width, uint32_t height) noexcept {
  if (width == 0 || height == 0) return failure(Code::BadSize, "an image of {} x {} pixels is empty", width, height);
  if (format.bitsPerPixel == 0)
    return failure(Code::BadSize, "pixel format 0x{:08X} does not say its bits per pixel", format.number);
  return {};
}

}  // namespace

Result imageBytes(uint32_t number, uint32_t width, uint32_t height, std::size_t stride, std::size_t yPadding,
                  uint64_t& bytes) noexcept {
  const Format format = describe(number);
  if (auto bad = checkGeometry(format, width, height); !bad) return bad;
  const uint64_t row = rowBytes(format, width);
  if (stride != 0 && stride < row)
    return failure(Code::BadSize, "a stride of {} bytes is less than a row of {}", stride, row);
  const uint64_t rows = format.sampleRows(height);
  uint64_t total = 0;
  bool fits = false;
  if (stride != 0) {
    fits = product(stride, rows - 1, total) && !__builtin_add_overflow(total, row, &total);
  } else if (format.planes == Planes::Planar) {  // each plane starts at a whole byte
    fits = product(rowBits(format, width), height, total) && product((total + 7) / 8, format.order.size(), total);
  } else if (product(rowBits(format, width), rows, total)) {
    total = (total + 7) / 8;
    fits = true;
  }
  if (!fits || __builtin_add_overflow(total, yPadding, &total) || total > kMostBytes)
    return failure(Code::BadSize, "an image of {} x {} pixels is larger than any memory", width, height);
  bytes = total;
  return {};
}

Result findStride(uint32_t number, uint32_t width, uint32_t height, std::size_t xPadding, std::size_t size,
                  std::size_t& stride) noexcept {
  const Format format = describe(number);
  uint64_t compact = 0;
  if (auto bad = imageBytes(number, width, height, 0, 0, compact); !bad) return bad;
  const uint64_t row = rowBytes(format, width);
  std::size_t padded = 0;
  uint64_t bytes = 0;
  if (__builtin_add_overflow(row, xPadding, &padded))
    return failure(Code::BadSize, "{} bytes after each row are larger than any memory", xPadding);
  const Result fits = imageBytes(number, width, height, padded, 0, bytes);
  if (fits && bytes <= size) {
    stride = padded;
  } else if (xPadding == 0 && compact <= size) {
    stride = 0;
  } else {
    return !fits ? fits
                 : failure(Code::BadSize, "an image of {} x {} pixels needs {} bytes, there are {}", width, height,
                           xPadding == 0 ? compact : bytes, size);
  }
  return {};
}

Result checkReadable(const ImageView& image) noexcept {
  const Format format = describe(image.format);
  uint64_t bytes = 0;
  if (auto bad = imageBytes(image.format, image.width, image.height, image.stride, 0, bytes); !bad) return bad;
  if (!format.isUnpackable()) {
    return failure(Code::Unsupported, "pixels of format {} (0x{:08X}) are only handed on as they are",
                   format.name.empty() ? "unknown" : format.name, image.format);
  }
  if (image.width % format.pixelsPerGroup != 0 || (format.planes == Planes::Semi420 && image.height % 2 != 0)) {
    return failure(Code::BadSize, "{} has no images of {} x {} pixels: its groups have {} pixels{}", format.name,
                   image.width, image.height, format.pixelsPerGroup,
                   format.planes == Planes::Semi420 ? " in two rows each" : "");
  }
  if (image.data == nullptr) return failure(Code::BadArgument, "the image has no memory");
  if (image.size < bytes) {
    return failure(Code::BadSize, "an image of {} x {} pixels of {} needs {} bytes, there are {}", image.width,
                   image.height, format.name, bytes, image.size);
  }
  if (image.significantBits > format.sampleBits) {
    return failure(Code::BadArgument, "{} significant bits do not fit into the {} of a sample of {}",
                   image.significantBits, format.sampleBits, format.name);
  }
  return {};
}

uint8_t significantBits(const ImageView& image) noexcept {
  return image.significantBits != 0 ? image.significantBits : describe(image.format).significantBits;
}

}  // namespace ox::pixels

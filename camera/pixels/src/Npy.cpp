#include <algorithm>
#include <array>

#include "Encoders.h"
#include "Failure.h"
#include "OxPixels/Convert.h"

namespace ox::pixels {

namespace {

constexpr std::size_t kBandBytes = 256 << 10;

// Samples that are copied as they are: those that fill whole bytes but that unpack() does not read.
bool isCopied(const Format& format) noexcept { return !format.isUnpackable() && format.packing == Packing::Bytes; }

// The type of an element in NumPy's letters: byte order, kind, bytes.
std::string elementType(const Format& format, bool bigEndian) {
  const unsigned bytes = isCopied(format) ? format.sampleBits / 8u : format.sampleBits > 8 ? 2u : 1u;
  const char kind = format.numbers == Numbers::Float ? 'f' : format.numbers == Numbers::Signed ? 'i' : 'u';
  return formatted("{}{}{}", bytes == 1 ? '|' : isCopied(format) && bigEndian ? '>' : '<', kind, bytes);
}

// Rows, columns, and samples of a pixel where each pixel has its own; planes come first.
std::string shapeText(const Format& format, const ImageView& image) {
  const uint64_t samples = format.samplesPerRow(image.width);
  if (format.planes == Planes::Planar) return formatted("({}, {}, {})", format.order.size(), image.height, image.width);
  if (format.planes == Planes::Interleaved && samples > image.width && samples % image.width == 0)
    return formatted("({}, {}, {})", image.height, image.width, samples / image.width);
  return formatted("({}, {})", format.sampleRows(image.height), samples);
}

// The header takes a multiple of 64 bytes, so that the elements are aligned where the file is mapped.
std::string header(const Format& format, const ImageView& image) {
  std::string text = formatted("{{'descr': '{}', 'fortran_order': False, 'shape': {}, }}",
                               elementType(format, image.bigEndian), shapeText(format, image));
  constexpr std::size_t kPrefix = 10;
  text.append(63 - (kPrefix + text.size()) % 64, ' ');
  text += '\n';
  std::string prefix("\x93NUMPY\x01\x00", 8);
  prefix += static_cast<char>(text.size() & 0xff);
  prefix += static_cast<char>(text.size() >> 8);
  return prefix + text;
}

Result copyRows(const ImageView& image, const Format& format, Output& output) {
  uint64_t bytes = 0;
  if (auto bad = imageBytes(image.format, image.width, image.height, image.stride, 0, bytes); !bad) return bad;
  if (image.data == nullptr || image.size < bytes) {
    return failure(Code::BadSize, "an image of {} x {} pixels of {} needs {} bytes, there are {}", image.width,
                   image.height, format.name, bytes, image.data == nullptr ? 0 : image.size);
  }
  const std::string start = header(format, image);
  if (!output.write(start.data(), start.size())) return {};
  const std::size_t row = format.samplesPerRow(image.width) * format.sampleBits / 8;
  const std::size_t stride = image.stride != 0 ? image.stride : row;
  for (uint64_t y = 0; y < format.sampleRows(image.height); ++y)
    if (!output.write(static_cast<const uint8_t*>(image.data) + y * stride, row)) return {};
  return {};
}

}  // namespace

bool isArray(const Format& format) noexcept { return format.isUnpackable() || isCopied(format); }

Result writeNpy(const ImageView& image, Output& output) {
  const Format format = describe(image.format);
  if (isCopied(format)) return copyRows(image, format, output);
  if (auto bad = checkReadable(image); !bad) return bad;
  const std::string start = header(format, image);
  if (!output.write(start.data(), start.size())) return {};
  const uint8_t bits = format.sampleBits > 8 ? 16 : 8;
  const std::size_t row = format.samplesPerRow(image.width) * bits / 8;
  const uint64_t height = format.sampleRows(image.height);
  const auto rows = static_cast<uint32_t>(std::min<uint64_t>(height, std::max<uint64_t>(1, kBandBytes / row)));
  std::vector<uint8_t> band(rows * row);
  for (uint64_t y = 0; y < height; y += rows) {
    const auto count = static_cast<uint32_t>(std::min<uint64_t>(rows, height - y));
    const SampleBuffer out{band.data(), band.size(), 0, bits, static_cast<uint32_t>(y)};
    if (auto bad = unpack(image, out, Align::Low, {static_cast<uint32_t>(y), count}); !bad) return bad;
    if (!output.write(band.data(), count * row)) return {};
  }
  return {};
}

}  // namespace ox::pixels

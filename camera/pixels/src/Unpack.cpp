#include <algorithm>
#include <cstring>

#include "Colours.h"
#include "OutputMemory.h"
#include "OxPixels/Convert.h"
#include "SampleReader.h"

namespace ox::pixels {

namespace {

void unpackRow(const SampleReader& reader, uint64_t row, uint64_t samples, unsigned left, uint16_t* out) noexcept {
  reader.read(row, 0, samples, out);
  if (left == 0) return;
  for (uint64_t i = 0; i < samples; ++i) out[i] = static_cast<uint16_t>(out[i] << left);
}

void unpackRow(const SampleReader& reader, uint64_t row, uint64_t samples, unsigned left, uint8_t* out) noexcept {
  if (reader.format().packing == Packing::Bytes && left == 0) {
    std::memcpy(out, reader.byte(row, 0), samples);
    return;
  }
  uint16_t piece[kPiece];
  for (uint64_t first = 0; first < samples; first += kPiece) {
    const auto count = static_cast<std::size_t>(std::min<uint64_t>(kPiece, samples - first));
    reader.read(row, first, count, piece);
    for (std::size_t i = 0; i < count; ++i) out[first + i] = static_cast<uint8_t>(piece[i] << left);
  }
}

}  // namespace

Result unpack(const ImageView& image, const SampleBuffer& out, Align align, Rows rows) noexcept {
  if (auto bad = checkReadable(image); !bad) return bad;
  const SampleReader reader(image);
  const uint64_t samples = reader.format().samplesPerRow(image.width);
  const uint64_t height = reader.format().sampleRows(image.height);
  OutputMemory memory{out.data, out.size, out.stride, out.sampleBits};
  uint64_t end = 0;
  if (auto bad = memory.check(samples, height, out.firstRow, rows, end); !bad) return bad;
  if (out.sampleBits == 8 && reader.format().sampleBits > 8)
    return failure(Code::BadArgument, "samples of {} need 16 bits", reader.format().name);
  const unsigned left = align == Align::High ? out.sampleBits - reader.significantBits() : 0;
  for (uint64_t y = rows.first; y < end; ++y)
    if (out.sampleBits == 8)
      unpackRow(reader, y, samples, left, memory.row<uint8_t>(y - out.firstRow));
    else
      unpackRow(reader, y, samples, left, memory.row<uint16_t>(y - out.firstRow));
  return {};
}

}  // namespace ox::pixels

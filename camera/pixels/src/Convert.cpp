#include "OxPixels/Convert.h"

#include <algorithm>
#include <cstring>

#include "Colours.h"
#include "Demosaic.h"
#include "OutputMemory.h"
#include "SampleReader.h"
#include "Scaling.h"
#include "Yuv.h"

namespace ox::pixels {

namespace {

struct Job {
  const ImageView& image;
  SampleReader reader;
  OutputMemory memory;
  uint8_t channels;
  unsigned valueBits;
  uint32_t top, end;  // rows to make
  uint32_t firstRow;  // of the memory

  template <class Sample>
  Sample* row(uint32_t y, uint32_t left) const noexcept {
    return memory.row<Sample>(y - firstRow) + uint64_t{left} * channels;
  }
};

// Calls `work(left, count)` for each piece of a row.
template <class Work>
void pieces(uint32_t width, Work&& work) noexcept {
  for (uint32_t left = 0; left < width; left += kPiece) {
    work(left, static_cast<std::size_t>(std::min<uint32_t>(kPiece, width - left)));
    if (width - left <= kPiece) break;  // the sum may not fit into 32 bits
  }
}

template <class Sample>
void writePiece(const Job& job, Colours& colours, std::size_t count, uint32_t y, uint32_t left) noexcept {
  if (job.channels == 3) return interleave(colours, count, job.row<Sample>(y, left));
  makeGray(colours, count);
  writeGray(colours.red, count, job.row<Sample>(y, left));
}

void scale(Colours& colours, std::size_t count, const Scaling& scaling) noexcept {
  for (uint16_t* const each : {colours.red, colours.green, colours.blue}) scaling.apply(each, count);
}

template <class Sample>
Result convertMono(const Job& job) noexcept {
  const Scaling scaling(job.reader.significantBits(), job.valueBits);
  for (uint32_t y = job.top; y < job.end; ++y) {
    pieces(job.image.width, [&](uint32_t left, std::size_t count) {
      alignas(64) uint16_t samples[kPiece];
      job.reader.readSaturated(y, left, count, samples);
      scaling.apply(samples, count);
      Sample* const out = job.row<Sample>(y, left);
      job.channels == 3 ? writeGrayColours(samples, count, out) : writeGray(samples, count, out);
    });
  }
  return {};
}

template <class Sample>
Result convertBayer(const Job& job) noexcept {
  const Scaling scaling(job.reader.significantBits(), job.valueBits);
  Demosaic demosaic(job.reader, job.image.width, job.image.height);
  if (!demosaic) return failure(Code::NoMemory, "not enough memory for three lines of {} pixels", job.image.width);
  Colours colours;
  for (uint32_t y = job.top; y < job.end; ++y) {
    pieces(job.image.width, [&](uint32_t left, std::size_t count) {
      demosaic.row(y, left, count, colours);
      scale(colours, count, scaling);
      writePiece<Sample>(job, colours, count, y, left);
    });
  }
  return {};
}

void gatherColours(const Job& job, uint32_t y, uint32_t left, std::size_t count, Colours& colours) noexcept {
  const Format& format = job.reader.format();
  if (format.planes == Planes::Planar) {
    for (uint64_t plane = 0; plane < 3; ++plane) {
      const char letter = format.order[plane];
      uint16_t* const colour = letter == 'R' ? colours.red : letter == 'G' ? colours.green : colours.blue;
      job.reader.readSaturated(plane * job.image.height + y, left, count, colour);
    }
  } else {
    const std::size_t size = format.order.size();
    alignas(64) uint16_t samples[4 * kPiece];
    job.reader.readSaturated(y, uint64_t{left} * size, count * size, samples);
    takeApart(samples, size, format.order.find('R'), format.order.find('G'), format.order.find('B'), count, colours);
  }
}

template <class Sample>
Result convertRgb(const Job& job) noexcept {
  const Scaling scaling(job.reader.significantBits(), job.valueBits);
  Colours colours;
  for (uint32_t y = job.top; y < job.end; ++y) {
    pieces(job.image.width, [&](uint32_t left, std::size_t count) {
      gatherColours(job, y, left, count, colours);
      scale(colours, count, scaling);
      writePiece<Sample>(job, colours, count, y, left);
    });
  }
  return {};
}

template <class Sample>
Result convertYuv(const Job& job) noexcept {
  const Yuv yuv(job.reader, job.valueBits);
  Colours colours;
  for (uint32_t y = job.top; y < job.end; ++y) {
    pieces(job.image.width, [&](uint32_t left, std::size_t count) {
      yuv.row(job.image.height, y, left, count, colours);
      writePiece<Sample>(job, colours, count, y, left);
    });
  }
  return {};
}

// A picture that is in memory already as it shall be.
bool isSame(const Job& job) noexcept {
  const Format& format = job.reader.format();
  return job.memory.sampleBits == 8 && format.sampleBits == 8 && format.packing == Packing::Bytes &&
         job.reader.significantBits() == 8 && job.valueBits == 8 && format.planes == Planes::Interleaved &&
         ((format.kind == Kind::Mono && job.channels == 1) || (format.order == "RGB" && job.channels == 3));
}

template <class Sample>
Result convertRows(const Job& job) noexcept {
  if (isSame(job)) {
    for (uint32_t y = job.top; y < job.end; ++y)
      std::memcpy(job.row<uint8_t>(y, 0), job.reader.byte(y, 0), std::size_t{job.image.width} * job.channels);
    return {};
  }
  switch (job.reader.format().kind) {
    case Kind::Mono: return convertMono<Sample>(job);
    case Kind::Bayer: return convertBayer<Sample>(job);
    case Kind::Rgb: return convertRgb<Sample>(job);
    case Kind::Yuv: return convertYuv<Sample>(job);
    case Kind::Data:
    case Kind::Unknown: break;
  }
  return failure(Code::Unsupported, "{} is no format of pictures", job.reader.format().name);
}

}  // namespace

Result convert(const ImageView& image, const Picture& out, Rows rows) noexcept {
  if (auto bad = checkReadable(image); !bad) return bad;
  const Format format = describe(image.format);
  if (out.channels != 1 && out.channels != 3)
    return failure(Code::BadArgument, "pictures have 1 or 3 channels, not {}", out.channels);
  if (format.kind == Kind::Bayer && (image.width < 2 || image.height < 2))
    return failure(Code::BadSize, "a mosaic of {} x {} pixels lacks colours", image.width, image.height);
  OutputMemory memory{out.data, out.size, out.stride, out.sampleBits};
  uint64_t end = 0;
  if (auto bad = memory.check(uint64_t{image.width} * out.channels, image.height, out.firstRow, rows, end); !bad)
    return bad;
  if (out.valueBits > out.sampleBits)
    return failure(Code::BadArgument, "values of {} bits do not fit into samples of {}", out.valueBits, out.sampleBits);
  const unsigned valueBits = out.valueBits != 0 ? out.valueBits : out.sampleBits;
  const Job job{image,      SampleReader(image),        memory,      out.channels, valueBits,
                rows.first, static_cast<uint32_t>(end), out.firstRow};
  return out.sampleBits == 8 ? convertRows<uint8_t>(job) : convertRows<uint16_t>(job);
}

Result pictureBytes(uint32_t width, uint32_t height, uint8_t channels, uint8_t sampleBits, uint64_t& bytes) noexcept {
  if (width == 0 || height == 0) return failure(Code::BadSize, "a picture of {} x {} pixels is empty", width, height);
  if ((channels != 1 && channels != 3) || (sampleBits != 8 && sampleBits != 16)) {
    return failure(Code::BadArgument, "pictures have 1 or 3 channels of 8 or 16 bits, not {} of {}", channels,
                   sampleBits);
  }
  const uint64_t row = uint64_t{width} * channels * sampleBits / 8;
  if (row > (uint64_t{1} << 48) / height)
    return failure(Code::BadSize, "a picture of {} x {} pixels is larger than any memory", width, height);
  bytes = row * height;
  return {};
}

}  // namespace ox::pixels

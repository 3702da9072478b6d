#include "Yuv.h"

#include <algorithm>
#include <cmath>

namespace ox::pixels {

// Luma and chroma of each pixel of a piece.
struct Yuv::Samples {
  alignas(64) uint16_t y[kPiece];
  alignas(64) uint16_t u[kPiece];
  alignas(64) uint16_t v[kPiece];
};

namespace {

struct Weights {
  double red, blue;  // of luma; green has the rest
};

Weights weightsOf(Matrix matrix) noexcept {
  switch (matrix) {
    case Matrix::Bt709:
      return {0.2126, 0.0722};
    case Matrix::Bt2020:
      return {0.2627, 0.0593};
    case Matrix::Bt601Full:
    case Matrix::Bt601:
      break;
  }
  return {0.299, 0.114};
}

// Takes groups apart: `Pixels` pixels in `Size` samples that share chroma. `order` has a letter for each sample.
template <std::size_t Pixels, std::size_t Size>
void takeApart(const uint16_t* __restrict from, std::string_view order, std::size_t count, uint16_t* __restrict y,
               uint16_t* __restrict u, uint16_t* __restrict v) noexcept {
  std::size_t lumas[Pixels] = {};
  for (std::size_t i = 0, pixel = 0; i < Size && pixel < Pixels; ++i) {
    if (order[i] == 'Y') lumas[pixel++] = i;
  }
  const std::size_t atU = order.find('U'), atV = order.find('V');
  for (std::size_t group = 0; group < count / Pixels; ++group) {
    for (std::size_t pixel = 0; pixel < Pixels; ++pixel) {
      y[Pixels * group + pixel] = from[Size * group + lumas[pixel]];
      u[Pixels * group + pixel] = from[Size * group + atU];
      v[Pixels * group + pixel] = from[Size * group + atV];
    }
  }
}

}  // namespace

Yuv::Yuv(const SampleReader& reader, unsigned valueBits) noexcept : reader_(reader) {
  const Matrix matrix = reader.format().matrix;
  const unsigned bits = reader.significantBits();
  const bool full = matrix == Matrix::Bt601Full;
  const double steps = std::ldexp(1.0, static_cast<int>(bits) - 8);  // of one step of 8 bits
  const double lumaRange = full ? 256 * steps - 1 : 219 * steps;
  const double chromaRange = full ? 256 * steps - 1 : 224 * steps;
  const auto [red, blue] = weightsOf(matrix);
  const double green = 1 - red - blue;
  white_ = (1 << valueBits) - 1;
  lumaZero_ = full ? 0 : static_cast<int32_t>(16 * steps);
  chromaZero_ = 1 << (bits - 1);
  shift_ = 29 - valueBits;  // the largest sums are below four times white
  const double one = std::ldexp(white_, static_cast<int>(shift_));
  const auto factor = [&](double value, double range) {
    return static_cast<int32_t>(std::lround(value * one / range));
  };
  luma_ = factor(1, lumaRange);
  redV_ = factor(2 * (1 - red), chromaRange);
  blueU_ = factor(2 * (1 - blue), chromaRange);
  greenU_ = factor(2 * (1 - blue) * blue / green, chromaRange);
  greenV_ = factor(2 * (1 - red) * red / green, chromaRange);
}

void Yuv::gather(uint32_t height, uint32_t y, uint32_t left, std::size_t count, Samples& samples) const noexcept {
  const Format& format = reader_.format();
  alignas(64) uint16_t raw[3 * kPiece];
  if (format.planes != Planes::Interleaved) {
    const uint32_t chromaRow = height + (format.planes == Planes::Semi420 ? y / 2 : y);
    reader_.read(y, left, count, samples.y);
    reader_.read(chromaRow, left, count, raw);
    const bool uFirst = format.order == "YUV";
    for (std::size_t i = 0; i < count; i += 2) {
      samples.u[i] = samples.u[i + 1] = raw[i + (uFirst ? 0 : 1)];
      samples.v[i] = samples.v[i + 1] = raw[i + (uFirst ? 1 : 0)];
    }
  } else {
    const std::size_t size = format.order.size();
    reader_.read(y, uint64_t{left} / format.pixelsPerGroup * size, count / format.pixelsPerGroup * size, raw);
    const auto apart = size == 3 ? takeApart<1, 3> : size == 4 ? takeApart<2, 4> : takeApart<4, 6>;
    apart(raw, format.order, count, samples.y, samples.u, samples.v);
  }
  for (uint16_t* const each : {samples.y, samples.u, samples.v}) saturate(each, count, reader_.significantBits());
}

void Yuv::row(uint32_t height, uint32_t y, uint32_t left, std::size_t count, Colours& colours) const noexcept {
  Samples samples;
  gather(height, y, left, count, samples);
  const int32_t half = 1 << (shift_ - 1), shift = static_cast<int32_t>(shift_), white = white_;
  const int32_t lumaZero = lumaZero_, chromaZero = chromaZero_;
  const int32_t luma = luma_, redV = redV_, greenU = greenU_, greenV = greenV_, blueU = blueU_;
  for (std::size_t i = 0; i < count; ++i) {
    const int32_t gray = luma * (samples.y[i] - lumaZero) + half;
    const int32_t u = samples.u[i] - chromaZero, v = samples.v[i] - chromaZero;
    colours.red[i] = static_cast<uint16_t>(std::clamp((gray + redV * v) >> shift, 0, white));
    colours.green[i] = static_cast<uint16_t>(std::clamp((gray - greenU * u - greenV * v) >> shift, 0, white));
    colours.blue[i] = static_cast<uint16_t>(std::clamp((gray + blueU * u) >> shift, 0, white));
  }
}

}  // namespace ox::pixels

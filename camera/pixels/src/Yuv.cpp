#include "Yuv.h"

#include <cmath>

#include "Vectors.h"

namespace ox::pixels {

namespace {

struct Weights {
  double red, blue;  // of luma; green has the rest
};

Weights weightsOf(Matrix matrix) noexcept {
  switch (matrix) {
    case Matrix::Bt709: return {0.2126, 0.0722};
    case Matrix::Bt2020: return {0.2627, 0.0593};
    case Matrix::Bt601Full:
    case Matrix::Bt601: break;
  }
  return {0.299, 0.114};
}

// Takes groups apart, by the places of their samples: pixels that share chroma, each with a luma of its own.
template <std::size_t U, std::size_t V, std::size_t... Y>
OX_INLINE void takeGroups(const uint16_t* __restrict raw, std::size_t count, YuvSamples& to) noexcept {
  constexpr std::size_t kPixels = sizeof...(Y), kSize = kPixels + 2;
  constexpr std::size_t kLumas[] = {Y...};
  for (std::size_t group = 0; group < count / kPixels; ++group) {
    for (std::size_t pixel = 0; pixel < kPixels; ++pixel) {
      to.y[kPixels * group + pixel] = raw[kSize * group + kLumas[pixel]];
      to.u[kPixels * group + pixel] = raw[kSize * group + U];
      to.v[kPixels * group + pixel] = raw[kSize * group + V];
    }
  }
}

}  // namespace

// A name of its own, for Vectors.h.
OX_VECTORS void takeApart(const uint16_t* raw, std::string_view order, std::size_t count, YuvSamples& to) noexcept {
  if (order == "UYV") return takeGroups<0, 2, 1>(raw, count, to);
  if (order == "YUV") return takeGroups<1, 2, 0>(raw, count, to);
  if (order == "UYVY") return takeGroups<0, 2, 1, 3>(raw, count, to);
  if (order == "YUYV") return takeGroups<1, 3, 0, 2>(raw, count, to);
  if (order == "UYYVYY") return takeGroups<0, 3, 1, 2, 4, 5>(raw, count, to);
  takeGroups<2, 5, 0, 1, 3, 4>(raw, count, to);  // YYUYYV
}

Yuv::Yuv(const SampleReader& reader, unsigned valueBits) noexcept : reader_(reader) {
  const Matrix matrix = reader.format().matrix;
  const unsigned bits = reader.significantBits();
  const bool full = matrix == Matrix::Bt601Full;
  const double steps = std::ldexp(1.0, static_cast<int>(bits) - 8);  // of one step of 8 bits
  const double lumaRange = full ? 256 * steps - 1 : 219 * steps;
  const double chromaRange = full ? 256 * steps - 1 : 224 * steps;
  const auto [red, blue] = weightsOf(matrix);
  const double green = 1 - red - blue;
  factors_.white = (1 << valueBits) - 1;
  factors_.lumaZero = full ? 0 : static_cast<int32_t>(16 * steps);
  factors_.chromaZero = 1 << (bits - 1);
  factors_.shift = 29 - static_cast<int32_t>(valueBits);  // the largest sums are below four times white
  const double one = std::ldexp(factors_.white, factors_.shift);
  const auto factor = [&](double value, double range) {
    return static_cast<int32_t>(std::lround(value * one / range));
  };
  factors_.luma = factor(1, lumaRange);
  factors_.redV = factor(2 * (1 - red), chromaRange);
  factors_.blueU = factor(2 * (1 - blue), chromaRange);
  factors_.greenU = factor(2 * (1 - blue) * blue / green, chromaRange);
  factors_.greenV = factor(2 * (1 - red) * red / green, chromaRange);
}

void Yuv::gather(uint32_t height, uint32_t y, uint32_t left, std::size_t count, YuvSamples& samples) const noexcept {
  const Format& format = reader_.format();
  alignas(64) uint16_t raw[3 * kPiece];
  if (format.planes != Planes::Interleaved) {
    const uint32_t chromaRow = height + (format.planes == Planes::Semi420 ? y / 2 : y);
    reader_.readSaturated(y, left, count, samples.y);
    reader_.readSaturated(chromaRow, left, count, raw);
    const bool uFirst = format.order == "YUV";
    for (std::size_t i = 0; i < count; i += 2) {
      samples.u[i] = samples.u[i + 1] = raw[i + (uFirst ? 0 : 1)];
      samples.v[i] = samples.v[i + 1] = raw[i + (uFirst ? 1 : 0)];
    }
  } else {
    const std::size_t size = format.order.size();
    reader_.readSaturated(y, uint64_t{left} / format.pixelsPerGroup * size, count / format.pixelsPerGroup * size, raw);
    takeApart(raw, format.order, count, samples);
  }
}

OX_VECTORS void mix(const YuvSamples& samples, const YuvFactors& factors, std::size_t count,
                    Colours& colours) noexcept {
  const auto [lumaZero, chromaZero, white, shift, luma, redV, greenU, greenV, blueU] = factors;
  const int32_t half = 1 << (shift - 1);
  for (std::size_t i = 0; i < count; ++i) {
    const int32_t gray = luma * (samples.y[i] - lumaZero) + half;
    const int32_t u = samples.u[i] - chromaZero, v = samples.v[i] - chromaZero;
    const int32_t red = (gray + redV * v) >> shift, green = (gray - greenU * u - greenV * v) >> shift,
                  blue = (gray + blueU * u) >> shift;
    colours.red[i] = static_cast<uint16_t>(red < 0 ? 0 : red > white ? white : red);
    colours.green[i] = static_cast<uint16_t>(green < 0 ? 0 : green > white ? white : green);
    colours.blue[i] = static_cast<uint16_t>(blue < 0 ? 0 : blue > white ? white : blue);
  }
}

void Yuv::row(uint32_t height, uint32_t y, uint32_t left, std::size_t count, Colours& colours) const noexcept {
  YuvSamples samples;
  gather(height, y, left, count, samples);
  mix(samples, factors_, count, colours);
}

}  // namespace ox::pixels

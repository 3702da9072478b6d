#include "OxPixels/Statistics.h"

#include <algorithm>
#include <cmath>

#include "Colours.h"
#include "Failure.h"
#include "PixelSamples.h"

namespace ox::pixels {

namespace {

// Sums stay whole numbers: 2^48 samples of 16 bits fit, and their squares fit for 2^32 of them.
struct Sums {
  uint64_t values = 0, squares = 0;
};

void add(ChannelStatistics& channel, Sums& sums, uint16_t value, unsigned shift, unsigned white) noexcept {
  channel.minimum = std::min(channel.minimum, value);
  channel.maximum = std::max(channel.maximum, value);
  channel.saturated += value >= white ? 1 : 0;
  ++channel.count;
  ++channel.bins[std::min<std::size_t>(value >> shift, kBins - 1)];
  sums.values += value;
  sums.squares += uint64_t{value} * value;
}

void finish(ChannelStatistics& channel, const Sums& sums) noexcept {
  if (channel.count == 0) {
    channel.minimum = 0;
    return;
  }
  const double count = static_cast<double>(channel.count);
  channel.mean = static_cast<double>(sums.values) / count;
  const double square = static_cast<double>(sums.squares) / count;
  channel.deviation = std::sqrt(std::max(0.0, square - channel.mean * channel.mean));
}

}  // namespace

Result measure(const ImageView& image, const Region& region, Statistics& statistics) noexcept {
  if (auto bad = checkReadable(image); !bad) return bad;
  if (region.x >= image.width || region.y >= image.height || region.width == 0 || region.height == 0) {
    return failure(Code::BadSize, "the region is outside of the image of {} x {} pixels", image.width, image.height);
  }
  const PixelSamples samples(image);
  statistics = {};
  statistics.channelCount = static_cast<uint8_t>(samples.channelCount());
  statistics.significantBits = samples.reader().significantBits();
  const unsigned shift = statistics.significantBits > 8 ? statistics.significantBits - 8u : 0;
  const unsigned white = (1u << statistics.significantBits) - 1;
  Sums sums[kMostChannels];
  for (std::size_t i = 0; i < samples.channelCount(); ++i) {
    statistics.channels[i].letter = samples.letter(i);
    statistics.channels[i].minimum = UINT16_MAX;
  }
  const auto right = static_cast<uint32_t>(std::min<uint64_t>(image.width, uint64_t{region.x} + region.width));
  const auto bottom = static_cast<uint32_t>(std::min<uint64_t>(image.height, uint64_t{region.y} + region.height));
  const uint32_t group = samples.reader().format().pixelsPerGroup;
  uint16_t values[kPiece];
  for (uint32_t y = region.y; y < bottom; ++y) {
    for (uint64_t left = region.x / group * group; left < right; left += kPiece) {
      const auto from = static_cast<uint32_t>(left);
      const auto count = static_cast<std::size_t>(std::min<uint64_t>(kPiece, right - left));
      for (std::size_t index = 0; index < samples.valueCount(); ++index) {
        samples.read(index, from, y, count, values);
        for (std::size_t i = from < region.x ? region.x - from : 0; i < count; ++i) {
          const std::size_t channel = samples.channelOf(index, from + static_cast<uint32_t>(i), y);
          add(statistics.channels[channel], sums[channel], values[i], shift, white);
        }
      }
    }
  }
  for (std::size_t i = 0; i < samples.channelCount(); ++i) finish(statistics.channels[i], sums[i]);
  return {};
}

Result pixelAt(const ImageView& image, uint32_t x, uint32_t y, PixelValue& pixel) noexcept {
  std::size_t count = 0;
  return lineProfile(image, x, y, x, y, &pixel, 1, count);
}

Result lineProfile(const ImageView& image, uint32_t fromX, uint32_t fromY, uint32_t toX, uint32_t toY,
                   PixelValue* pixels, std::size_t capacity, std::size_t& count) noexcept {
  count = 0;
  if (auto bad = checkReadable(image); !bad) return bad;
  if (std::max(fromX, toX) >= image.width || std::max(fromY, toY) >= image.height) {
    return failure(Code::BadSize, "({}, {}) to ({}, {}) is outside of the image of {} x {} pixels", fromX, fromY, toX,
                   toY, image.width, image.height);
  }
  const int64_t acrossX = int64_t{toX} - fromX, acrossY = int64_t{toY} - fromY;
  const int64_t steps = std::max(std::abs(acrossX), std::abs(acrossY));
  count = static_cast<std::size_t>(steps) + 1;
  if (count > capacity) return failure(Code::BadSize, "the line has {} pixels, there is room for {}", count, capacity);
  if (pixels == nullptr) return failure(Code::BadArgument, "there is no memory for the pixels");
  const PixelSamples samples(image);
  const uint32_t group = samples.reader().format().pixelsPerGroup;
  const auto along = [&](uint32_t from, int64_t across, int64_t step) {  // the nearest pixel
    return static_cast<uint32_t>(
        from + (steps == 0 ? 0 : std::llround(static_cast<double>(across * step) / static_cast<double>(steps))));
  };
  for (int64_t step = 0; step <= steps; ++step) {
    PixelValue& pixel = pixels[step];
    pixel = {};
    pixel.x = along(fromX, acrossX, step);
    pixel.y = along(fromY, acrossY, step);
    pixel.count = static_cast<uint8_t>(samples.valueCount());
    const uint32_t first = pixel.x / group * group;
    for (std::size_t index = 0; index < samples.valueCount(); ++index) {
      uint16_t values[4];  // of a group
      samples.read(index, first, pixel.y, group, values);
      pixel.values[index] = values[pixel.x - first];
      pixel.letters[index] = samples.letter(samples.channelOf(index, pixel.x, pixel.y));
    }
  }
  return {};
}

}  // namespace ox::pixels

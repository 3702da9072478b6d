#include "OxPixels/Statistics.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <new>

#include "Colours.h"
#include "Failure.h"
#include "PixelSamples.h"

namespace ox::pixels {

namespace {

// How often each value occurs in a channel: everything else follows from that.
void finish(ChannelStatistics& channel, const uint64_t* counts, std::size_t size, unsigned bits) noexcept {
  const unsigned shift = bits > 8 ? bits - 8 : 0;
  const std::size_t white = (std::size_t{1} << bits) - 1;
  double sum = 0;
  for (std::size_t value = 0; value < size; ++value) {
    if (counts[value] == 0) continue;
    if (channel.count == 0) channel.minimum = static_cast<uint16_t>(value);
    channel.maximum = static_cast<uint16_t>(value);
    channel.count += counts[value];
    channel.bins[std::min(value >> shift, kBins - 1)] += counts[value];
    if (value >= white) channel.saturated += counts[value];
    sum += static_cast<double>(value) * static_cast<double>(counts[value]);
  }
  if (channel.count == 0) return;
  channel.mean = sum / static_cast<double>(channel.count);
  double squares = 0;
  for (std::size_t value = channel.minimum; value <= channel.maximum; ++value) {
    const double distance = static_cast<double>(value) - channel.mean;
    squares += distance * distance * static_cast<double>(counts[value]);
  }
  channel.deviation = std::sqrt(squares / static_cast<double>(channel.count));
}

}  // namespace

Result measure(const ImageView& image, const Region& region, Statistics& statistics) noexcept {
  if (auto bad = checkReadable(image); !bad) return bad;
  if (region.x >= image.width || region.y >= image.height || region.width == 0 || region.height == 0)
    return failure(Code::BadSize, "the region is outside of the image of {} x {} pixels", image.width, image.height);
  const PixelSamples samples(image);
  statistics = {};
  statistics.channelCount = static_cast<uint8_t>(samples.channelCount());
  statistics.significantBits = samples.reader().significantBits();
  const std::size_t size = std::size_t{1} << samples.reader().format().sampleBits;
  const std::unique_ptr<uint64_t[]> counts(new (std::nothrow) uint64_t[size * samples.channelCount()]());
  if (!counts) return failure(Code::NoMemory, "not enough memory to count {} values", size);
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
        uint64_t* const even = counts.get() + samples.channelOf(index, 0, y) * size;
        uint64_t* const odd = counts.get() + samples.channelOf(index, 1, y) * size;
        for (std::size_t i = from < region.x ? region.x - from : 0; i < count; ++i)
          ++((from + i) % 2 == 0 ? even : odd)[values[i]];
      }
    }
  }
  for (std::size_t i = 0; i < samples.channelCount(); ++i) {
    statistics.channels[i].letter = samples.letter(i);
    finish(statistics.channels[i], counts.get() + i * size, size, statistics.significantBits);
  }
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

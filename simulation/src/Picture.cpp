#include "Picture.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <new>
#include <vector>

#include "EventQueue.h"
#include "OxSimulation/ChunkLayout.h"

namespace ox::simulation {

namespace {

constexpr uint64_t kMaxImageBytes = 1 << 30;  // a loaded state may claim any size
constexpr uint64_t kChunkTagBytes = 8;
enum Pattern : uint64_t { kGrey, kHorizontalRamp, kVerticalRamp, kMovingRamp, kFrameNumber };

uint64_t rowBytes(uint64_t width, uint32_t pixelFormat) {
  const uint64_t bitsPerPixel = pixelFormat >> 16 & 0xff;
  return (width * bitsPerPixel + 7) / 8;
}

std::vector<uint8_t> big(uint64_t value, int count) {
  std::vector<uint8_t> bytes(static_cast<std::size_t>(count));
  for (int i = count - 1; i >= 0; --i, value >>= 8) bytes[static_cast<std::size_t>(i)] = static_cast<uint8_t>(value);
  return bytes;
}

// Deep formats get the pattern byte by byte: a ramp is a ramp in any of them.
void draw(std::span<uint8_t> image, uint64_t rowLength, const PictureFacts& facts) {
  const auto fill = [&](auto value) {
    for (uint64_t y = 0; y < facts.height; ++y)
      for (uint64_t x = 0; x < rowLength; ++x) image[y * rowLength + x] = static_cast<uint8_t>(value(x, y));
  };
  switch (facts.testPattern) {
    case kHorizontalRamp: return fill([](uint64_t x, uint64_t) { return x; });
    case kVerticalRamp: return fill([](uint64_t, uint64_t y) { return y; });
    case kMovingRamp: return fill([&](uint64_t x, uint64_t y) { return x + y + facts.frameId; });
    case kFrameNumber: std::ranges::fill(image, static_cast<uint8_t>(facts.frameId)); return;
    default: std::ranges::fill(image, uint8_t{0x80}); return;
  }
}

struct Chunk {
  ChunkId id;
  std::vector<uint8_t> bytes;
};

// In the order of ChunkSelector, behind the image.
std::vector<Chunk> chunksBehindImage(const PictureFacts& facts) {
  std::vector<uint8_t> gain = big(std::bit_cast<uint32_t>(facts.gainDb), 4);
  std::ranges::reverse(gain);  // the description reads this one little-endian
  std::vector<uint8_t> counters = big(facts.counters[0] << 32 | (facts.counters[1] & 0xffffffff), 8);
  std::vector<uint8_t> label(32, 0);
  std::memcpy(label.data(), facts.streamLabel.data(), std::min(label.size(), facts.streamLabel.size()));
  return {{kChunkTimestamp, big(facts.timestampNs, 8)},
          {kChunkFrameCounter, big(facts.frameId, 8)},
          {kChunkExposureTime, big(std::bit_cast<uint64_t>(facts.exposureUs), 8)},
          {kChunkGain, std::move(gain)},
          {kChunkLineStatusAll, big(facts.lines, 4)},
          {kChunkCounterValue, std::move(counters)},
          {kChunkPixelFormat, big(facts.pixelFormat, 4)},
          {kChunkStreamLabel, std::move(label)},
          {kChunkSize, big(uint64_t{facts.width} << 32 | facts.height, 8)}};
}

}  // namespace

PictureFacts pictureFacts(const RegisterBank& r, int64_t nowNs, int64_t exposureNs) {
  PictureFacts facts;
  const int64_t begin = std::max<int64_t>(0, nowNs - exposureNs);
  facts.frameId = r.integer(reg("FrameCounter"));
  // A camera that has its registers from an earlier run is older than this run's clock.
  const uint64_t now = cameraTime(r, nowNs);
  facts.timestampNs = now - std::min(now, static_cast<uint64_t>(exposureNs));
  facts.exposureUs = static_cast<double>(r.integer(reg("ExposureTimeRaw"))) * 1e6 /
                     static_cast<double>(r.integer(reg("ExposureClock")));
  facts.gainDb = static_cast<float>(20 * std::log10(static_cast<double>(r.integer(reg("GainRaw"))) / 256));
  facts.lines = lineLevels(r, begin);
  for (int32_t i = 0; i < 2; ++i) facts.counters[static_cast<std::size_t>(i)] = r.integer(reg("CounterValue"), i);
  facts.width = static_cast<uint32_t>(r.integer(reg("Width")));
  facts.height = static_cast<uint32_t>(r.integer(reg("Height")));
  facts.pixelFormat = static_cast<uint32_t>(r.integer(reg("PixelFormat")));
  facts.testPattern = r.integer(reg("TestPattern"));
  facts.streamLabel = r.text(reg("StreamLabel"));
  facts.chunkMode = r.integer(reg("ChunkModeActive")) != 0;
  for (int32_t i = 0; i < r.elementCount(reg("ChunkEnable")); ++i)
    facts.chunks[static_cast<std::size_t>(i)] = r.integer(reg("ChunkEnable"), i) != 0;
  return facts;
}

Frame develop(const PictureFacts& facts) {
  Frame frame;
  frame.data.resize(developInto(facts, {}, frame));
  developInto(facts, frame.data, frame);
  return frame;
}

uint64_t developInto(const PictureFacts& facts, std::span<uint8_t> memory, Frame& frame) {
  const uint64_t rowLength = rowBytes(facts.width, facts.pixelFormat);
  if (rowLength != 0 && facts.height > kMaxImageBytes / rowLength) throw std::bad_alloc();
  frame.imageBytes = rowLength * facts.height;
  frame.frameId = facts.frameId;
  frame.timestampNs = facts.timestampNs;
  frame.width = facts.width;
  frame.height = facts.height;
  frame.pixelFormat = facts.pixelFormat;
  std::vector<uint8_t> tail;  // after the image
  if (facts.chunkMode) {
    const std::vector<uint8_t> padding((4 - frame.imageBytes % 4) % 4);
    tail = padding;
    for (const uint64_t number : {uint64_t{kChunkImage}, frame.imageBytes + padding.size()}) {
      const std::vector<uint8_t> bytes = big(number, 4);
      tail.insert(tail.end(), bytes.begin(), bytes.end());
    }
    std::size_t place = 1;
    for (const Chunk& chunk : chunksBehindImage(facts))
      if (facts.chunks[place++]) appendChunk(tail, chunk.id, chunk.bytes);
  }
  const uint64_t total = frame.imageBytes + tail.size();
  if (memory.size() < total) return total;
  draw(memory.first(frame.imageBytes), rowLength, facts);
  std::ranges::copy(tail, memory.subspan(frame.imageBytes).begin());
  return total;
}

uint64_t payloadBytes(const RegisterBank& r) {
  const PictureFacts facts = pictureFacts(r, 0, 0);
  const uint64_t image = rowBytes(facts.width, facts.pixelFormat) * facts.height;
  if (!facts.chunkMode) return image;
  uint64_t total = (image + 3) / 4 * 4 + kChunkTagBytes;
  std::size_t place = 1;
  for (const Chunk& chunk : chunksBehindImage(facts))
    if (facts.chunks[place++]) total += chunk.bytes.size() + kChunkTagBytes;
  return total;
}

}  // namespace ox::simulation

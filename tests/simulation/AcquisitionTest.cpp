// Pictures, their chunks, and the messages that go with them.
#include <cstring>

#include "CameraBench.h"
#include "OxSimulation/ChunkLayout.h"

using namespace ox::simulation;

namespace {

constexpr uint64_t kOn = 1;
// Places of EventSelector and TriggerSelector.
enum { kNotifyStart, kNotifyEnd, kNotifyTrigger, kNotifyRising, kNotifyFalling, kNotifyAlarm, kNotifyTest };

std::vector<std::string> fetchIds(CameraBench& bench) {
  std::vector<std::string> ids;
  CameraEvent event;
  while (bench->nextEvent(event)) ids.push_back(event.idText());
  return ids;
}

}  // namespace

TEST(Acquisition, GivesAsManyPicturesAsTheModeSays) {
  using Case = std::tuple<uint64_t, uint64_t, int>;
  for (const auto& [mode, count, expected] : {Case{1, 10, 1}, Case{2, 3, 3}, Case{0, 1, 20}}) {
    CameraBench bench;
    bench.set("AcquisitionModeReg", mode);
    bench.set("AcquisitionFrameCountReg", count);
    EXPECT_TRUE(bench->acquireFrame().data.empty()) << "not started";
    bench.set("AcquisitionStartReg", 1);
    int pictures = 0;
    while (pictures < 20 && !bench->acquireFrame().data.empty()) ++pictures;
    EXPECT_EQ(pictures, expected) << mode;
    EXPECT_EQ(bench.get("TLParamsLockedReg"), mode == 0) << mode;
  }
}

TEST(Acquisition, TakesPicturesAsTimePasses) {
  CameraBench bench;
  bench.set("CounterEventSourceReg", 1);  // counter 0 counts pictures
  bench.set("AcquisitionStartReg", 1);
  bench.wait(1000);  // at 25 pictures per second
  EXPECT_EQ(bench.get("CounterStatusReg"), 1u);
  EXPECT_EQ(bench->acquireFrame().frameId, 10u) << "16 of 25 were kept";
  bench.wait(24 * 3600 * 1000LL);  // nobody made an access for a day
  const Frame late = bench->acquireFrame();
  EXPECT_EQ(late.frameId, 25u + 24 * 3600 * 25 - 15);
}

TEST(Pictures, FollowFormatAndPattern) {
  using Case = std::pair<uint64_t, std::size_t>;
  for (const auto& [format, bytes] : {Case{0x01080001, 64 * 4}, {0x010C0006, 96 * 4}, {0x01100005, 128 * 4}}) {
    CameraBench bench;
    bench.set("WidthReg", 64);
    bench.set("HeightReg", 4);
    bench.set("PixelFormatReg", format);
    bench.set("TestPatternReg", 1);
    EXPECT_EQ(bench.get("PayloadSizeReg"), bytes);
    bench.set("AcquisitionStartReg", 1);
    const Frame frame = bench->acquireFrame();
    ASSERT_EQ(frame.data.size(), bytes);
    EXPECT_EQ(frame.data[bytes / 4 + 5], 5) << "a ramp in each row";
  }
}

TEST(Chunks, HoldWhatIsEnabledAndTheRightValues) {
  CameraBench bench;
  bench.set("WidthReg", 17);  // the image needs padding
  bench.set("HeightReg", 3);
  bench.set("ChunkModeActiveReg", kOn);
  for (int64_t chunk : {1, 2, 3, 4, 5, 6, 7, 8, 9}) bench.set("ChunkEnableReg", kOn, chunk);
  bench.set("ChunkEnableReg", 0, 5);
  bench.set("GainRawReg", 512);
  bench.wait(1500);
  bench.set("AcquisitionStartReg", 1);
  const uint64_t promised = bench.get("PayloadSizeReg");
  const Frame frame = bench->acquireFrame();
  EXPECT_EQ(frame.data.size(), promised);
  EXPECT_EQ(frame.imageBytes, 51u);

  const ChunkLayout layout(frame.data);
  EXPECT_TRUE(layout.complete());
  std::vector<uint32_t> ids;
  std::map<uint32_t, std::vector<uint8_t>> chunks;
  for (const ChunkEntry& chunk : layout) {
    ids.push_back(chunk.id);
    chunks[chunk.id].assign(frame.data.begin() + chunk.offset, frame.data.begin() + chunk.offset + chunk.length);
  }
  EXPECT_EQ(ids,
            (std::vector<uint32_t>{kChunkSize, kChunkStreamLabel, kChunkPixelFormat, kChunkCounterValue, kChunkGain,
                                   kChunkExposureTime, kChunkFrameCounter, kChunkTimestamp, kChunkImage}));
  EXPECT_EQ(chunks[kChunkImage].size(), 52u);
  EXPECT_EQ(CameraBench::number(chunks[kChunkTimestamp]), 1'490'000'000u) << "begin of an exposure of 10 ms";
  EXPECT_EQ(CameraBench::number(chunks[kChunkFrameCounter]), 1u);
  EXPECT_EQ(std::bit_cast<double>(CameraBench::number(chunks[kChunkExposureTime])), 10000.0);
  EXPECT_FLOAT_EQ(std::bit_cast<float>(static_cast<uint32_t>(CameraBench::number(chunks[kChunkGain], true))), 6.0206f);
  EXPECT_EQ(CameraBench::number(chunks[kChunkPixelFormat]), 0x01080001u);
  EXPECT_EQ(CameraBench::number(chunks[kChunkSize]), 17ull << 32 | 3);
  EXPECT_STREQ(reinterpret_cast<const char*>(chunks[kChunkStreamLabel].data()), "simulated stream");
}

TEST(ChunkLayout, StopsAtALayoutThatDoesNotFit) {
  std::vector<uint8_t> good;
  const std::vector<uint8_t> data = {1, 2, 3, 4, 5};
  appendChunk(good, 0x11, data);
  appendChunk(good, 0x22, {});
  std::vector<uint8_t> cutFront(good.begin() + 1, good.end());
  std::vector<uint8_t> wrongLength = good;
  wrongLength[wrongLength.size() - 1] = 0xFF;
  using Bytes = std::vector<uint8_t>;
  const std::tuple<const char*, Bytes, bool, std::ptrdiff_t> cases[] = {
      {"good", good, true, 2},
      {"empty", {}, true, 0},
      {"front cut off", cutFront, false, 1},
      {"length too large", wrongLength, false, 0},
      {"shorter than a tag", {1, 2, 3}, false, 0},
      {"only a huge length", Bytes(8, 0xFF), false, 0}};
  for (const auto& [what, buffer, complete, chunks] : cases) {
    const ChunkLayout layout(buffer);
    EXPECT_EQ(layout.complete(), complete) << what;
    EXPECT_EQ(std::distance(layout.begin(), layout.end()), chunks) << what;
  }
  EXPECT_EQ(*++ChunkLayout(good).begin(), (ChunkEntry{0x11, 0, 8}));
}

TEST(Events, AreSentWhenSwitchedOnAndCarryTimeFrameAndLines) {
  CameraBench bench;
  bench.set("TestEventGenerateReg", 1);
  EXPECT_EQ(fetchIds(bench), std::vector<std::string>{});
  bench.set("EventNotificationReg", kOn, kNotifyStart);
  bench.set("EventNotificationReg", kOn, kNotifyEnd);
  bench.wait(1200);
  bench.set("AcquisitionStartReg", 1);
  bench->acquireFrame();
  CameraEvent event;
  ASSERT_TRUE(bench->nextEvent(event));
  EXPECT_EQ(event.id, kEventExposureStart);
  EXPECT_EQ(event.timestampNs, 1'190'000'000u);
  EXPECT_EQ(event.frameId, 1u);
  ASSERT_EQ(event.payload.size(), 20u);
  EXPECT_EQ(CameraBench::number({event.payload.begin(), event.payload.begin() + 8}), 1'190'000'000u);
  EXPECT_EQ(CameraBench::number({event.payload.begin() + 8, event.payload.begin() + 16}), 1u);
  EXPECT_EQ(CameraBench::number({event.payload.begin() + 16, event.payload.end()}), 1u);
  ASSERT_TRUE(bench->nextEvent(event));
  EXPECT_EQ(event.id, kEventExposureEnd);
  EXPECT_EQ(event.timestampNs, 1'200'000'000u);
  bench.set("AcquisitionStopReg", 1);
  for (int64_t each : {kNotifyRising, kNotifyFalling, kNotifyTest}) bench.set("EventNotificationReg", kOn, each);
  bench.wait(2000);
  bench.set("TestEventGenerateReg", 1);
  EXPECT_EQ(fetchIds(bench), (std::vector<std::string>{"9011", "9010", "9040"}));
}

// Pictures, and the layout of their chunks.
#include "CameraBench.h"
#include "OxSimulation/ChunkLayout.h"

using namespace ox::simulation;

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

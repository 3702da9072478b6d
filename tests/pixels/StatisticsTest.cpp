#include "OxPixels/Statistics.h"

#include <gtest/gtest.h>

#include <locale>
#include <sstream>
#include <string>
#include <vector>

#include "OxPixels/Terminal.h"
#include "Samples.h"

namespace ox::pixels {

using Bytes = std::vector<uint8_t>;

// Channels by letter with minimum, maximum, mean and count: each layout has its own way to its samples.
TEST(Statistics, MeasureEachChannelOfEachLayout) {
  struct Case {
    const char* format;
    uint32_t width, height;
    Bytes bytes;
    Region region;
    const char* expected;
  };
  for (const Case& each : std::initializer_list<Case>{
           // clang-format off
           {"Mono8", 4, 2, {9, 1, 2, 9, 9, 3, 255, 9}, {1, 0, 2, 9}, "Y 1-255 65.25 x4 saturated;"},
           {"BayerGR8", 3, 2, {1, 20, 3, 50, 5, 60}, {}, "G 1-5 3 x3;R 20-20 20 x1;B 50-60 55 x2;"},
           {"BayerGR8", 3, 2, {1, 20, 3, 50, 5, 60}, {1, 1, 1, 1}, "G 5-5 5 x1;R 0-0 0 x0;B 0-0 0 x0;"},
           {"BGR8", 2, 1, {1, 2, 3, 5, 4, 255}, {}, "B 1-5 3 x2;G 2-4 3 x2;R 3-255 129 x2 saturated;"},
           {"RGB8_Planar", 2, 1, {1, 2, 3, 5, 4, 255}, {1}, "R 2-2 2 x1;G 5-5 5 x1;B 255-255 255 x1 saturated;"},
           {"YUV422_8_UYVY", 2, 1, {7, 1, 9, 3}, {}, "U 7-7 7 x2;Y 1-3 2 x2;V 9-9 9 x2;"},
           {"YUV422_8", 4, 1, {1, 7, 3, 9, 5, 11, 7, 13}, {3}, "Y 7-7 7 x1;U 11-11 11 x1;V 13-13 13 x1;"},
           {"YCbCr411_8", 4, 1, {1, 2, 7, 3, 4, 9}, {1, 0, 2}, "Y 2-3 2.5 x2;U 7-7 7 x2;V 9-9 9 x2;"},
           {"YCbCr420_8_YY_CrCb_Semiplanar", 2, 2, {1, 2, 3, 4, 9, 7}, {1}, "Y 2-4 3 x2;V 9-9 9 x2;U 7-7 7 x2;"}}) {
    // clang-format on
    SCOPED_TRACE(each.format);
    const Memory memory(each.bytes);
    Statistics statistics;
    const Result result = measure(view(memory, each.format, each.width, each.height), each.region, statistics);
    ASSERT_STREQ(result.text, "");
    std::ostringstream text;
    text.imbue(std::locale::classic());
    for (std::size_t i = 0; i < statistics.channelCount; ++i) {
      const ChannelStatistics& channel = statistics.channels[i];
      text << channel.letter << ' ' << channel.minimum << '-' << channel.maximum << ' ' << channel.mean << " x"
           << channel.count << (channel.saturated != 0 ? " saturated;" : ";");
    }
    EXPECT_EQ(text.str(), each.expected);
  }
}

TEST(Statistics, BinsDeviationAndSaturationFollowTheSignificantBits) {
  SampleWriter writer(*findFormat("Mono12p"), 3000, 1, 0);  // more than two pieces
  for (uint32_t x = 0; x < 3000; ++x) writer.put(0, x, x < 1000 ? 0x0f : x < 2000 ? 0x10 : 0xfff);
  Statistics statistics;
  ASSERT_TRUE(measure(view(writer.memory(), "Mono12p", 3000, 1), {}, statistics));
  const ChannelStatistics& channel = statistics.channels[0];
  EXPECT_EQ(channel.bins[0], 1000u);
  EXPECT_EQ(channel.bins[1], 1000u);
  EXPECT_EQ(channel.bins[255], 1000u);
  EXPECT_EQ(channel.saturated, 1000u);
  EXPECT_NEAR(channel.mean, (15 + 16 + 4095) / 3.0, 1e-9);
  EXPECT_NEAR(channel.deviation, 1923.094, 0.001);
}

TEST(Statistics, PixelsAndLinesComeInTheDepthOfTheCamera) {
  SampleWriter writer(*findFormat("BayerRG12p"), 4, 3, 0);
  for (uint32_t i = 0; i < 12; ++i) writer.put(i / 4, i % 4, 1000 + i);
  const ImageView image = view(writer.memory(), "BayerRG12p", 4, 3);
  PixelValue pixels[4];
  std::size_t count = 0;
  ASSERT_TRUE(lineProfile(image, 3, 2, 0, 1, pixels, 4, count));
  ASSERT_EQ(count, 4u);
  std::string text;
  for (const PixelValue& pixel : pixels) {
    text += std::to_string(pixel.x) + "," + std::to_string(pixel.y) + pixel.letters[0] +
            std::to_string(pixel.values[0]) + " ";
  }
  EXPECT_EQ(text, "3,2G1011 2,2R1010 1,1B1005 0,1G1004 ");
  EXPECT_EQ(lineProfile(image, 0, 0, 3, 0, pixels, 3, count).code, Code::BadSize);
  EXPECT_EQ(count, 4u);
  EXPECT_STREQ(pixelAt(image, 4, 0, pixels[0]).text, "(4, 0) to (4, 0) is outside of the image of 4 x 3 pixels");
  Statistics statistics;
  EXPECT_EQ(measure(image, {4, 0}, statistics).code, Code::BadSize);

  const Memory yuv(Bytes{7, 1, 9, 3, 8, 5, 10, 6});
  ASSERT_TRUE(pixelAt(view(yuv, "YUV422_8_UYVY", 4, 1), 3, 0, pixels[0]));
  EXPECT_EQ(pixels[0].values, (std::array<uint16_t, 4>{8, 6, 10, 0}));
  EXPECT_EQ(std::string(pixels[0].letters.data(), pixels[0].count), "UYV");
}

TEST(Terminal, PicturesBecomeHalfBlocks) {
  const Bytes four{255, 0, 0,   255, 0, 0,  //
                   0,   0, 255, 8,   8, 8};
  const RgbView picture{four.data(), four.size(), 0, 2, 2};
  std::string text;
  ASSERT_TRUE(terminalText(picture, 80, 24, TerminalColours::True, text));
  EXPECT_EQ(text, "\x1b[38;2;255;0;0m\x1b[48;2;0;0;255m\u2580\x1b[48;2;8;8;8m\u2580\x1b[0m\n");
  ASSERT_TRUE(terminalText(picture, 80, 24, TerminalColours::Table256, text));
  EXPECT_EQ(text, "\x1b[38;5;196m\x1b[48;5;21m\u2580\x1b[48;5;232m\u2580\x1b[0m\n");
  ASSERT_TRUE(terminalText(picture, 1, 1, TerminalColours::True, text));  // one column: 1 x 1 pixels
  EXPECT_EQ(text, "\x1b[38;2;130;2;66m\u2580\x1b[0m\n");
  EXPECT_EQ(terminalText(picture, 0, 1, TerminalColours::True, text).code, Code::BadArgument);
  EXPECT_EQ(terminalText({four.data(), 11, 0, 2, 2}, 1, 1, TerminalColours::True, text).code, Code::BadSize);
}

}  // namespace ox::pixels

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "OxPixels/Convert.h"
#include "Samples.h"

namespace ox::pixels {

using Bytes = std::vector<uint8_t>;
using Values = std::vector<uint16_t>;

// Rows by hand, from the standard's figures of each packing.
TEST(Unpack, ReadsEachPackingWithOddCountsAndRowsThatEndInsideAByte) {
  struct Case {
    const char* format;
    uint32_t width, height;
    std::size_t stride;
    Bytes bytes;
    Values values;
  };
  const Values kSix{0x123, 0x456, 0x789, 0xabc, 0xdef, 1};
  // clang-format off
  for (const Case& each : std::initializer_list<Case>{
           {"Mono8", 3, 1, 0, {1, 2, 255}, {1, 2, 255}},
           {"Mono10", 2, 1, 0, {0xff, 0x03, 0x01, 0x02}, {0x3ff, 0x201}},
           {"Mono1p", 5, 2, 0, {0b01100101, 0b10}, {1, 0, 1, 0, 0, 1, 1, 0, 0, 1}},
           {"Mono1p", 5, 2, 1, {0b11100101, 0b10010}, {1, 0, 1, 0, 0, 0, 1, 0, 0, 1}},
           {"Mono2p", 3, 1, 0, {0b00110110}, {2, 1, 3}},
           {"Mono4p", 3, 1, 0, {0x21, 0xf3}, {1, 2, 3}},
           // 0x3ff, 0x000, 0x155, 0x2aa, 0x001 from the lowest bit on
           {"Mono10p", 5, 1, 0, {0xff, 0x03, 0x50, 0x95, 0xaa, 0x01, 0x00}, {0x3ff, 0, 0x155, 0x2aa, 1}},
           // The second row starts with bits 6 and 7 of the fourth byte.
           {"Mono10p", 3, 2, 0, {0x01, 0x08, 0x30, 0x00, 0x01, 0x05, 0x18, 0x00}, {1, 2, 3, 4, 5, 6}},
           {"Mono10p", 3, 2, 4, {0x01, 0x08, 0x30, 0xc0, 0x04, 0x14, 0x60, 0x00}, {1, 2, 3, 4, 5, 6}},
           {"Mono12p", 3, 2, 0, {0x23, 0x61, 0x45, 0x89, 0xc7, 0xab, 0xef, 0x1d, 0x00}, kSix},
           {"Mono12p", 3, 2, 5, {0x23, 0x61, 0x45, 0x89, 0xf7, 0xbc, 0xfa, 0xde, 0x01, 0x00}, kSix},
           {"Mono14p", 3, 1, 0, {0xff, 0xbf, 0x00, 0x10, 0x00, 0x02}, {0x3fff, 0x0002, 0x2001}},
           {"Mono12Packed", 3, 2, 0, {0x12, 0x63, 0x45, 0x78, 0xc9, 0xab, 0xde, 0x1f, 0x00}, kSix},
           {"Mono12Packed", 3, 2, 5, {0x12, 0x63, 0x45, 0x78, 0xf9, 0xab, 0xfc, 0xde, 0x00, 0x01}, kSix},
           {"Mono10Packed", 3, 1, 0, {0xff, 0x13, 0x80, 0x40, 0x02}, {0x3ff, 0x201, 0x102}},
           {"RGB10p32", 1, 2, 0, {0x01, 0x08, 0x30, 0xc0, 0xff, 0x03, 0xf0, 0x3f}, {1, 2, 3, 0x3ff, 0, 0x3ff}},
           {"RGB565p", 1, 2, 0, {0x1f, 0x00, 0xe0, 0xff}, {255, 0, 0, 0, 255, 255}}}) {
    // clang-format on
    SCOPED_TRACE(testing::Message() << each.format << " with a stride of " << each.stride);
    const Memory memory(each.bytes);
    Values values(each.values.size());
    const Result result =
        unpack(view(memory, each.format, each.width, each.height, each.stride), {values.data(), 2 * values.size()});
    EXPECT_STREQ(result.text, "");
    EXPECT_EQ(values, each.values);
  }
}

// Long rows take other paths than short ones. Memory is exactly as long as the image.
TEST(Unpack, AgreesWithReadingBitByBitForEveryFormatWidthAndStart) {
  for (const Format& format : allFormats()) {
    if (!format.isUnpackable() || format.packing == Packing::Rgb565) continue;
    SCOPED_TRACE(format.name);
    for (uint32_t width = format.pixelsPerGroup; width < 28; width += format.pixelsPerGroup) {
      for (const std::size_t padding : {SIZE_MAX, std::size_t{0}, std::size_t{3}}) {
        const bool planes = format.planes != Planes::Interleaved;
        const std::size_t row = (std::size_t{width} * (planes ? format.sampleBits : format.bitsPerPixel) + 7) / 8;
        const std::size_t stride = padding == SIZE_MAX ? 0 : row + padding;
        if (stride == 0 && planes && format.sampleBits % 8 != 0) continue;  // planes start at whole bytes
        constexpr uint32_t kHeight = 4;
        SampleWriter writer(format, width, kHeight, stride);
        const uint64_t samples = format.samplesPerRow(width), rows = format.sampleRows(kHeight);
        Values expected;
        for (uint64_t y = 0; y < rows; ++y) {
          for (uint64_t x = 0; x < samples; ++x) {
            expected.push_back(static_cast<uint16_t>(randomValue(format.significantBits)));
            writer.put(y, x, expected.back());
          }
        }
        Values values(expected.size());
        ASSERT_TRUE(
            unpack(view(writer.memory(), format.number, width, kHeight, stride), {values.data(), 2 * values.size()}));
        ASSERT_EQ(values, expected) << width << " pixels, stride " << stride;
      }
    }
  }
}

TEST(Unpack, PutsSignificantBitsLowOrHighInSamplesOfEitherSize) {
  const Memory memory(Bytes{0x01, 0x0f, 0x23, 0x01});
  struct Case {
    const char* format;
    uint8_t significantBits;
    bool bigEndian, highAligned;
    Align align;
    Values values;
  };
  for (const Case& each : std::initializer_list<Case>{{"Mono16", 0, false, false, Align::Low, {0x0f01, 0x0123}},
                                                      {"Mono16", 0, true, false, Align::Low, {0x010f, 0x2301}},
                                                      {"Mono16", 12, false, false, Align::High, {0xf010, 0x1230}},
                                                      {"Mono16", 12, true, true, Align::Low, {0x0010, 0x0230}},
                                                      {"Mono12", 0, false, false, Align::High, {0xf010, 0x1230}},
                                                      {"Mono12", 0, false, true, Align::Low, {0x00f0, 0x0012}}}) {
    ImageView image = view(memory, each.format, 2, 1);
    image.significantBits = each.significantBits;
    image.bigEndian = each.bigEndian;
    image.highAligned = each.highAligned;
    Values values(2);
    EXPECT_TRUE(unpack(image, {values.data(), 4}, each.align));
    EXPECT_EQ(values, each.values) << each.format << " " << int{each.significantBits} << each.bigEndian
                                   << each.highAligned;
  }
  Bytes eight(4);
  EXPECT_TRUE(unpack(view(memory, "Mono4p", 4, 1), {eight.data(), 4, 0, 8}));
  EXPECT_EQ(eight, (Bytes{1, 0, 15, 0}));
  EXPECT_TRUE(unpack(view(memory, "Mono4p", 4, 1), {eight.data(), 4, 0, 8}, Align::High));
  EXPECT_EQ(eight, (Bytes{16, 0, 240, 0}));
  EXPECT_TRUE(unpack(view(memory, "Mono8", 2, 2), {eight.data(), 4, 0, 8}, Align::Low, {1, 1}));
  EXPECT_EQ(eight, (Bytes{16, 0, 0x23, 0x01}));
}

}  // namespace ox::pixels

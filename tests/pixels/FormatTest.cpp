#include "OxPixels/Format.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <map>
#include <pugixml.hpp>
#include <regex>
#include <set>
#include <string>

#include "OxPixels/Image.h"

namespace ox::pixels {

// A name of the PFNC says bits, packing and planes itself, a number its bits per pixel: a slip in a row of the table
// contradicts one of them.
TEST(Format, EveryRowAgreesWithItsNameAndItsNumber) {
  const std::regex kBits(
      "^(?:YCbCr(?:601|709|2020)?(?:_?4(?:11|22|20))?_?|YUV(?:411|422)?_?|SCF1|Coord3D_)?\\D*(\\d+)(p?)");
  for (const Format& format : allFormats()) {
    SCOPED_TRACE(format.name);
    const std::string name(format.name);
    EXPECT_EQ(describe(format.number).name, name);
    ASSERT_EQ(findFormat(name), &format);
    if (format.sampleBits == 0) continue;
    EXPECT_EQ(format.bitsPerPixel, format.number >> 16 & 0xff);
    EXPECT_EQ(format.number >> 24,
              format.order == "Y" || format.order.size() == 1 || format.kind == Kind::Bayer ? 1u : 2u);
    EXPECT_EQ(name.find("Packed") != name.npos, format.packing == Packing::Pairs);
    std::smatch bits;
    ASSERT_TRUE(std::regex_search(name, bits, kBits));
    if (format.packing == Packing::Rgb565) continue;
    EXPECT_EQ(std::stoi(bits[1]), format.significantBits);
    EXPECT_EQ(bits[2] == "p", format.packing == Packing::Lsb || format.packing == Packing::Word32);
    const std::size_t samples = format.kind == Kind::Bayer ? 1 : format.order.size();
    if (format.planes == Planes::Interleaved && format.packing != Packing::Word32) {
      EXPECT_EQ(format.sampleBits * samples, std::size_t{format.bitsPerPixel} * format.pixelsPerGroup);
    }
    EXPECT_GE(format.sampleBits, format.significantBits);
  }
}

// What cameras in the field call their numbers. Three of their names are at odds with the standard.
TEST(Format, RealCamerasUseTheSameNumbers) {
  const char* const folder = std::getenv("OXGENAPI_DESCRIPTIONS");
  if (folder == nullptr) GTEST_SKIP() << "set OXGENAPI_DESCRIPTIONS to a folder of camera descriptions";
  const std::map<std::string, uint32_t> odd{
      {"YCbCr411_8_CbYYCrYY", 0x020C001E}, {"YCbCr422_8_CbYCrY", 0x0210001F}, {"YCbCr8_CbYCr", 0x02180020}};
  std::set<std::string> names;
  for (const auto& file : std::filesystem::directory_iterator(folder)) {
    pugi::xml_document document;
    if (!document.load_file(file.path().c_str())) continue;
    for (const auto& found : document.select_nodes("//Enumeration[@Name='PixelFormat']/EnumEntry")) {
      const std::string name = found.node().attribute("Name").value(), text = found.node().child_value("Value");
      const auto number = static_cast<uint32_t>(std::strtoull(text.c_str(), nullptr, 0));
      if (number < 0x01000000) continue;  // a number space of other links
      names.insert(name);
      const auto exception = odd.find(name);
      if (exception != odd.end() && exception->second == number) continue;
      const Format* const format = findFormat(name);
      ASSERT_NE(format, nullptr) << name;
      EXPECT_EQ(format->number, number) << name << " in " << file.path();
    }
  }
  EXPECT_GT(names.size(), 40u);
}

TEST(Format, UnknownNumbersStillSayTheirBitsAndOlderNamesAreKnown) {
  const Format custom = describe(0x81230042);
  EXPECT_EQ(custom.kind, Kind::Unknown);
  EXPECT_EQ(custom.bitsPerPixel, 0x23);
  EXPECT_TRUE(custom.name.empty());
  EXPECT_FALSE(custom.isUnpackable());
  EXPECT_EQ(findFormat("YUV422Packed")->name, "YUV422_8_UYVY");
  EXPECT_EQ(findFormat("BGRA8Packed")->name, "BGRa8");
  EXPECT_EQ(findFormat("Mono8x"), nullptr);
  EXPECT_EQ(findFormat(""), nullptr);
}

TEST(Image, BytesAndStridesFollowFromBitsPerPixel) {
  constexpr uint32_t kMono8 = 0x01080001, kMono12p = 0x010C0047, kMono1p = 0x01010037, kRgb8 = 0x02180014,
                     kPlanar = 0x02180021, kSemi420 = 0x020C0112, kUnknown = 0x01110999, kNoBits = 0x00000103;
  struct Case {
    uint32_t format, width, height;
    std::size_t stride, yPadding;
    uint64_t bytes;  // 0: refused
    const char* text;
  };
  for (const Case& each :
       std::initializer_list<Case>{{kMono8, 5, 3, 0, 0, 15, ""},
                                   {kMono8, 5, 3, 8, 4, 8 * 2 + 5 + 4, ""},
                                   {kMono12p, 5, 3, 0, 0, 23, ""},  // 180 bits
                                   {kMono12p, 5, 3, 8, 0, 24, ""},  // rows of 7.5 bytes
                                   {kMono12p, 5, 3, 7, 0, 0, "a stride of 7 bytes is less than a row of 8"},
                                   {kMono1p, 9, 2, 0, 0, 3, ""},
                                   {kRgb8, 3, 2, 0, 0, 18, ""},
                                   {kPlanar, 3, 2, 4, 0, 4 * 5 + 3, ""},
                                   {kSemi420, 4, 4, 0, 0, 24, ""},
                                   {kUnknown, 3, 3, 0, 0, 20, ""},  // 153 bits
                                   {kNoBits, 3, 3, 0, 0, 0, "pixel format 0x00000103 does not say its bits per pixel"},
                                   {kMono8, 0, 3, 0, 0, 0, "an image of 0 x 3 pixels is empty"},
                                   {kRgb8, UINT32_MAX, UINT32_MAX, 0, 0, 0, "larger than any memory"},
                                   {kMono8, 1, UINT32_MAX, SIZE_MAX / 2, 0, 0, "larger than any memory"},
                                   {kMono8, 1, 1, 0, SIZE_MAX, 0, "larger than any memory"}}) {
    SCOPED_TRACE(testing::Message() << std::hex << each.format << " " << each.width << " " << each.stride);
    uint64_t bytes = 0;
    const Result result = imageBytes(each.format, each.width, each.height, each.stride, each.yPadding, bytes);
    EXPECT_EQ(bytes, each.bytes);
    EXPECT_EQ(result.code, each.bytes != 0 ? Code::Ok : Code::BadSize);
    EXPECT_NE(std::string(result.text).find(each.text), std::string::npos) << result.text;
  }

  std::size_t stride = 99;
  EXPECT_TRUE(findStride(kMono12p, 5, 3, 0, 23, stride));  // too short for whole bytes per row
  EXPECT_EQ(stride, 0u);
  EXPECT_TRUE(findStride(kMono12p, 5, 3, 0, 24, stride));
  EXPECT_EQ(stride, 8u);
  EXPECT_TRUE(findStride(kMono12p, 5, 3, 3, 64, stride));
  EXPECT_EQ(stride, 11u);
  EXPECT_STREQ(findStride(kMono12p, 5, 3, 0, 22, stride).text, "an image of 5 x 3 pixels needs 23 bytes, there are 22");
  EXPECT_STREQ(findStride(kMono12p, 5, 3, 3, 29, stride).text, "an image of 5 x 3 pixels needs 30 bytes, there are 29");
  EXPECT_EQ(findStride(kMono8, 1, 2, SIZE_MAX, 64, stride).code, Code::BadSize);
}

}  // namespace ox::pixels

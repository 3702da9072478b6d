#include "OxPixels/Convert.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "Samples.h"

namespace ox::pixels {

namespace {

using Bytes = std::vector<uint8_t>;
using Values = std::vector<uint16_t>;

// A picture of 16 bits whose values stay as they are.
Values picture(const ImageView& image, uint8_t channels, unsigned valueBits = 0) {
  Values values(std::size_t{image.width} * image.height * channels);
  const auto bits = static_cast<uint8_t>(valueBits != 0 ? valueBits : significantBits(image));
  const Result result = convert(image, {values.data(), 2 * values.size(), 0, channels, 16, bits});
  EXPECT_STREQ(result.text, "");
  return values;
}

Bytes picture8(const ImageView& image, uint8_t channels) {
  Bytes values(std::size_t{image.width} * image.height * channels);
  const Result result = convert(image, {values.data(), values.size(), 0, channels, 8});
  EXPECT_STREQ(result.text, "");
  return values;
}

}  // namespace

// Black stays black, white becomes white, values that were repeated shift back to themselves.
TEST(Convert, ScalesBySignificantBits) {
  struct Case {
    const char* format;
    uint8_t significantBits;
    unsigned value, eight, sixteen;
  };
  for (const Case& each :
       std::initializer_list<Case>{{"Mono1p", 0, 1, 255, 65535},
                                   {"Mono2p", 0, 2, 170, 43690},
                                   {"Mono4p", 0, 7, 119, 30583},
                                   {"Mono8", 0, 0x81, 0x81, 0x8181},
                                   {"Mono8", 7, 0x7f, 255, 65535},
                                   {"Mono8", 3, 2, 73, 18724},
                                   {"Mono10", 0, 0x3ff, 255, 65535},
                                   {"Mono10", 0, 0x201, 128, 32864},
                                   {"Mono12p", 0, 0x800, 128, 32776},
                                   {"Mono14", 0, 0x3fff, 255, 65535},
                                   {"Mono16", 0, 0x80ff, 128, 0x80ff},
                                   {"Mono16", 12, 0xfff, 255, 65535},
                                   {"Mono12", 0, 0, 0, 0},
                                   {"Mono10", 0, 0x7ff, 255, 65535}}) {  // the last one has a bit too many
    const Format format = *findFormat(each.format);
    Memory memory(Bytes{static_cast<uint8_t>(each.value), static_cast<uint8_t>(each.value >> 8)});
    ImageView image = view(memory, each.format, 1, 1);
    image.significantBits = each.significantBits;
    EXPECT_EQ(picture8(image, 1), Bytes{static_cast<uint8_t>(each.eight)}) << each.format << each.value;
    EXPECT_EQ(picture(image, 3, 16), Values(3, static_cast<uint16_t>(each.sixteen))) << each.format << each.value;
    EXPECT_EQ(picture(image, 1)[0], std::min(each.value, (1u << significantBits(image)) - 1))
        << each.format << each.value;
    EXPECT_GE(each.sixteen, each.eight << 8) << format.name;
  }
}

// The means by hand: at the border the samples on the other side count twice.
TEST(Convert, BayerTakesTheMeanOfNeighbours) {
  const Memory memory(Bytes{10, 21, 30,                     // R G R
                            40, 50, 61,                     // G B G
                            71, 80, 90});                   // R G R
  const Bytes expected{10, 31, 50, 20, 21, 50, 30, 41, 50,  //
                       41, 40, 50, 50, 51, 50, 60, 61, 50,  //
                       71, 60, 50, 81, 80, 50, 90, 71, 50};
  EXPECT_EQ(picture8(view(memory, "BayerRG8", 3, 3), 3), expected);
}

// A mosaic of one colour is a picture of one colour. A mosaic that is turned around and has the phase that follows
// gives the picture turned around, at any size of pieces.
TEST(Convert, BayerOfEveryPhaseAndDepthKeepsColoursAndSymmetry) {
  for (const Format& format : allFormats()) {
    if (format.kind != Kind::Bayer) continue;
    SCOPED_TRACE(format.name);
    const unsigned white = (1u << format.significantBits) - 1;
    const uint16_t colour[3] = {static_cast<uint16_t>(white), static_cast<uint16_t>(white / 2), 1};
    const auto letter = [](std::string_view order, uint32_t x, uint32_t y) { return order[x % 2 + 2 * (y % 2)]; };
    for (const auto& [width, height] : {std::pair{2u, 2u}, {5u, 3u}, {1024u, 2u}, {1025u, 3u}, {2051u, 2u}}) {
      SampleWriter flat(format, width, height, 0), straight(format, width, height, 0);
      std::vector<unsigned> random(std::size_t{width} * height);
      for (uint32_t y = 0; y < height; ++y) {
        for (uint32_t x = 0; x < width; ++x) {
          flat.put(y, x, colour[std::string_view("RGB").find(letter(format.order, x, y))]);
          straight.put(y, x, random[y * width + x] = randomValue(format.significantBits));
        }
      }
      const Values one = picture(view(flat.memory(), format.number, width, height), 3);
      for (std::size_t i = 0; i < one.size(); ++i) ASSERT_EQ(one[i], colour[i % 3]) << i << " of " << width;

      const std::string_view turnedOrder = bayerOrderAt(format.order, width - 1, height - 1);
      const auto turnedFormat = std::ranges::find_if(allFormats(), [&](const Format& each) {
        return each.kind == Kind::Bayer && each.order == turnedOrder && each.packing == format.packing &&
               each.significantBits == format.significantBits;
      });
      SampleWriter turned(*turnedFormat, width, height, 0);
      for (std::size_t i = 0; i < random.size(); ++i)
        turned.put((random.size() - 1 - i) / width, (random.size() - 1 - i) % width, random[i]);
      const Values before = picture(view(straight.memory(), format.number, width, height), 3);
      const Values after = picture(view(turned.memory(), turnedFormat->number, width, height), 3);
      for (std::size_t i = 0; i < before.size(); ++i)
        ASSERT_EQ(before[i], after[after.size() - 3 - i / 3 * 3 + i % 3]) << i << " of " << width;
    }
  }
}

// The inner part of a mosaic is coloured as it is in the whole, from an odd offset on, too.
TEST(Convert, BayerFromAnOddOffset) {
  Memory memory(12 * 8);
  for (std::size_t i = 0; i < memory.size; ++i) memory.data[i] = static_cast<uint8_t>(randomValue(8));
  const Bytes whole = picture8(view(memory, "BayerGB8", 12, 8), 3);
  ASSERT_EQ(bayerOrderAt("GBRG", 3, 2), "BGGR");
  const ImageView part{
      memory.data.get() + 2 * 12 + 3, memory.size - 2 * 12 - 3, findFormat("BayerBG8")->number, 7, 5, 12};
  const Bytes inner = picture8(part, 3);
  for (std::size_t y = 1; y < 4; ++y) {
    for (std::size_t x = 1; x < 6; ++x)
      for (std::size_t c = 0; c < 3; ++c) EXPECT_EQ(inner[(y * 7 + x) * 3 + c], whole[((y + 2) * 12 + x + 3) * 3 + c]);
  }
}

TEST(Convert, ColoursComeInEveryOrder) {
  struct Case {
    const char* format;
    uint32_t width;
    Bytes bytes;
  };
  const Bytes expected{1, 2, 3, 251, 252, 253};
  for (const Case& each :
       // clang-format off
       std::initializer_list<Case>{{"RGB8", 2, {1, 2, 3, 251, 252, 253}},
                                   {"BGR8", 2, {3, 2, 1, 253, 252, 251}},
                                   {"RGBa8", 2, {1, 2, 3, 77, 251, 252, 253, 77}},
                                   {"BGRa8", 2, {3, 2, 1, 77, 253, 252, 251, 77}},
                                   {"RGB8_Planar", 2, {1, 251, 2, 252, 3, 253}},
                                   // The first pixel is 4, 8, 12 and the second 1004, 1008, 1012 of 1023.
                                   {"RGB10", 2, {4, 0, 8, 0, 12, 0, 0xec, 3, 0xf0, 3, 0xf4, 3}},
                                   {"BGR10p", 2, {0x0c, 0x20, 0x40, 0x00, 0xfd, 0xf0, 0xb3, 0x0f}},
                                   {"RGB10_Planar", 2, {4, 0, 0xec, 3, 8, 0, 0xf0, 3, 12, 0, 0xf4, 3}}}) {
    // clang-format on
    const Memory memory(each.bytes);
    EXPECT_EQ(picture8(view(memory, each.format, each.width, 1), 3), expected) << each.format;
  }
  // Weights of gray: green counts most; white stays white.
  const Memory memory(Bytes{255, 0, 0, 0, 255, 0, 0, 0, 255, 255, 255, 255});
  EXPECT_EQ(picture8(view(memory, "RGB8", 4, 1), 1), (Bytes{76, 150, 29, 255}));
  EXPECT_EQ(picture8(view(memory, "BGR8", 4, 1), 1), (Bytes{29, 150, 76, 255}));
}

// Where luma (1 to 4: of which pixel) and chroma lie in each order of bytes, by hand.
TEST(Convert, YuvComesInEveryOrder) {
  struct Case {
    const char* format;
    const char* order;  // samples of two rows in planes, else of one group
    uint32_t width, height;
  };
  const auto value = [](char letter) -> uint8_t {
    return letter == 'u' ? 90 : letter == 'v' ? 170 : 40 * (letter - '0');
  };
  // clang-format off
  for (const Case& each : std::initializer_list<Case>{
           {"YUV8_UYV", "u1v", 1, 1}, {"YCbCr8", "1uv", 1, 1}, {"YCbCr8_CbYCr", "u1v", 1, 1},
           {"YUV422_8", "1u2v", 2, 1}, {"YUV422_8_UYVY", "u1v2", 2, 1},
           {"YCbCr422_8", "1u2v", 2, 1}, {"YCbCr422_8_CbYCrY", "u1v2", 2, 1},
           {"YUV411_8_UYYVYY", "u12v34", 4, 1}, {"YCbCr411_8_CbYYCrYY", "u12v34", 4, 1}, {"YCbCr411_8", "12u34v", 4, 1},
           {"YCbCr422_8_YY_CbCr_Semiplanar", "1234uvuv", 2, 2}, {"YCbCr422_8_YY_CrCb_Semiplanar", "1234vuvu", 2, 2},
           {"YCbCr420_8_YY_CbCr_Semiplanar", "1234uv", 2, 2}, {"YCbCr420_8_YY_CrCb_Semiplanar", "1234vu", 2, 2}}) {
    // clang-format on
    Bytes bytes;
    for (const char letter : std::string(each.order)) bytes.push_back(value(letter));
    const Memory memory(bytes);
    // R = Y + 1.402 * 42, G = Y + 0.344136 * 38 - 0.714136 * 42, B = Y - 1.772 * 38
    Bytes expected;
    for (int pixel = 1; pixel <= static_cast<int>(each.width * each.height); ++pixel)
      for (const double part : {58.884, -16.917, -67.336})
        expected.push_back(static_cast<uint8_t>(std::clamp(std::round(40 * pixel + part), 0.0, 255.0)));
    EXPECT_EQ(picture8(view(memory, each.format, each.width, each.height), 3), expected) << each.format;
  }
}

// Deeper samples and other matrices have the order of their relatives of 8 bits; the colours are those of the formulas.
TEST(Convert, YuvOfEveryDepthAndMatrixIsRoundedToTheNearest) {
  for (const Format& format : allFormats()) {
    if (format.kind != Kind::Yuv || format.planes != Planes::Interleaved) continue;
    SCOPED_TRACE(format.name);
    const std::string name(format.name);
    const bool is411 = name.find("411") != name.npos, is422 = name.find("422") != name.npos;
    EXPECT_EQ(format.order, is411 ? (name == "YCbCr411_8" ? "YYUYYV" : "UYYVYY")
                            : is422 && (name.ends_with("CbYCrY") || name.ends_with("UYVY")) ? "UYVY"
                            : is422                                                         ? "YUYV"
                            : name == "YCbCr8"                                              ? "YUV"
                                                                                            : "UYV");
    const bool of709 = name.starts_with("YCbCr709"), of2020 = name.starts_with("YCbCr2020");
    const bool full = !of709 && !of2020 && !name.starts_with("YCbCr601");
    const double kr = of709 ? 0.2126 : of2020 ? 0.2627 : 0.299, kb = of709 ? 0.0722 : of2020 ? 0.0593 : 0.114;
    const unsigned bits = format.significantBits;
    const double top = std::pow(2, bits) - 1, unit = std::pow(2, bits - 8.0);

    constexpr uint32_t kWidth = 1028;  // more than a piece
    SampleWriter writer(format, kWidth, 1, 0);
    std::vector<double> y(kWidth), u(kWidth), v(kWidth);
    for (uint32_t group = 0; group < kWidth / format.pixelsPerGroup; ++group) {
      uint32_t pixel = group * format.pixelsPerGroup;
      for (std::size_t i = 0; i < format.order.size(); ++i) {
        const unsigned value = randomValue(bits);
        writer.put(0, group * format.order.size() + i, value);
        if (format.order[i] == 'Y')
          y[pixel++] = value;
        else
          for (uint32_t shared = 0; shared < format.pixelsPerGroup; ++shared)
            (format.order[i] == 'U' ? u : v)[group * format.pixelsPerGroup + shared] = value;
      }
    }
    const ImageView image = view(writer.memory(), format.number, kWidth, 1);
    const Bytes eight = picture8(image, 3);
    const Values deep = picture(image, 3, 16);
    for (uint32_t i = 0; i < kWidth; ++i) {
      const double luma = full ? y[i] / top : (y[i] - 16 * unit) / (219 * unit);
      const double range = full ? top : 224 * unit, middle = std::pow(2, bits - 1.0);
      const double cb = (u[i] - middle) / range, cr = (v[i] - middle) / range;
      const double red = luma + 2 * (1 - kr) * cr, blue = luma + 2 * (1 - kb) * cb;
      const double green = (luma - kr * red - kb * blue) / (1 - kr - kb);
      const double colours[3] = {red, green, blue};
      for (int c = 0; c < 3; ++c) {
        const double exact = std::clamp(colours[c], 0.0, 1.0);
        ASSERT_NEAR(eight[3 * i + c], 255 * exact, 0.501);
        ASSERT_NEAR(deep[3 * i + c], 65535 * exact, 1.3);
      }
    }
  }
}

TEST(Convert, RowsMadeOnSeveralThreadsAreTheWholePicture) {
  constexpr uint32_t kWidth = 1500, kHeight = 37;
  for (const char* name : {"BayerGR12p", "Mono10Packed", "YCbCr420_8_YY_CbCr_Semiplanar", "BGR8"}) {
    const uint32_t height = kHeight + (std::string_view(name).starts_with("YCbCr420") ? 1 : 0);
    const Format format = *findFormat(name);
    SampleWriter writer(format, kWidth, height, 0);
    for (uint64_t y = 0; y < format.sampleRows(height); ++y)
      for (uint64_t x = 0; x < format.samplesPerRow(kWidth); ++x) writer.put(y, x, randomValue(format.significantBits));
    const ImageView image = view(writer.memory(), format.number, kWidth, height);
    const std::size_t stride = 3 * kWidth + 5;
    Bytes parts(stride * height, 0xee);
    {
      std::vector<std::jthread> threads;
      for (uint32_t first = 0; first < height; first += 11) {
        threads.emplace_back([&, first] {
          // The second band has memory of its own, which starts with its first row.
          const std::size_t skipped = first == 11 ? first * stride : 0;
          const Picture out{parts.data() + skipped, parts.size() - skipped, stride, 3, 8, 0, skipped != 0 ? first : 0};
          EXPECT_TRUE(convert(image, out, {first, 11}));
        });
      }
    }
    const Bytes whole = picture8(image, 3);
    for (uint32_t y = 0; y < height; ++y) {
      EXPECT_TRUE(
          std::equal(whole.data() + y * 3 * kWidth, whole.data() + (y + 1) * 3 * kWidth, parts.data() + y * stride));
      EXPECT_EQ(Bytes(parts.data() + y * stride + 3 * kWidth, parts.data() + (y + 1) * stride), Bytes(5, 0xee)) << name;
    }
  }
}

// Nothing is read or written where a request cannot be met; the text says why.
TEST(Convert, RefusesWhatCannotBeReadOrWritten) {
  const Memory memory(64);
  const ImageView good = view(memory, "Mono8", 8, 8);
  struct Case {
    std::function<void(ImageView&, Picture&, Rows&)> change;
    const char* text;
    Code code = Code::BadSize;
  };
  alignas(2) uint8_t memoryOut[1024];
  constexpr Code kBad = Code::BadArgument, kUnsupported = Code::Unsupported;
  // clang-format off
  const Case cases[] = {
      {[](auto& image, auto&, auto&) { image.width = 0; }, "an image of 0 x 8 pixels is empty"},
      {[](auto& image, auto&, auto&) { image.size = 63; }, "8 x 8 pixels of Mono8 needs 64 bytes, there are 63"},
      {[](auto& image, auto&, auto&) { image.stride = 7; }, "a stride of 7 bytes is less than a row of 8"},
      {[](auto& image, auto&, auto&) { image.stride = SIZE_MAX; }, "larger than any memory"},
      {[](auto& image, auto&, auto&) { image.data = nullptr; }, "the image has no memory", kBad},
      {[](auto& image, auto&, auto&) { image.significantBits = 9; }, "9 significant bits", kBad},
      {[&](auto& image, auto&, auto&) { image = view(memory, "YUV422_8", 7, 1); }, "its groups have 2 pixels"},
      {[&](auto& image, auto&, auto&) { image = view(memory, "YCbCr420_8_YY_CbCr_Semiplanar", 8, 3); }, "in two rows each"},
      {[&](auto& image, auto&, auto&) { image = view(memory, "BayerRG8", 1, 8); }, "a mosaic of 1 x 8 pixels lacks colours"},
      {[&](auto& image, auto&, auto&) { image = view(memory, "Coord3D_A8", 8, 8); }, "Coord3D_A8 is no format of pictures", kUnsupported},
      {[&](auto& image, auto&, auto&) { image = view(memory, "RGB10V1Packed", 2, 8); }, "format RGB10V1Packed (0x0220001C)", kUnsupported},
      {[](auto& image, auto&, auto&) { image.format = 0x01080FFF; }, "format unknown (0x01080FFF)", kUnsupported},
      {[](auto&, auto&, auto& rows) { rows.first = 8; }, "from row 8 on are not among 0 to 7"},
      {[](auto&, auto&, auto& rows) { rows.count = 0; }, "0 rows from row 0 on"},
      {[](auto&, auto& out, auto& rows) { rows.first = 1, out.firstRow = 2; }, "from row 1 on are not among 2 to 7"},
      {[](auto&, auto& out, auto&) { out.size = 63; }, "8 rows of 8 bytes do not fit into 63 bytes"},
      {[](auto&, auto& out, auto&) { out.stride = 7; }, "a stride of 7 bytes is less than a row of 8"},
      {[](auto&, auto& out, auto&) { out.stride = SIZE_MAX; }, "do not fit"},
      {[](auto&, auto& out, auto&) { out.channels = 3; }, "8 rows of 24 bytes do not fit into 64 bytes"},
      {[](auto&, auto& out, auto&) { out.channels = 2; }, "1 or 3 channels, not 2", kBad},
      {[](auto&, auto& out, auto&) { out.sampleBits = 12; }, "samples of 12 bits cannot be made", kBad},
      {[](auto&, auto& out, auto&) { out.valueBits = 9; }, "values of 9 bits do not fit", kBad},
      {[](auto&, auto& out, auto&) { out.data = nullptr; }, "no memory for the result", kBad},
      {[&](auto&, auto& to, auto&) { to = {memoryOut + 1, 900, 0, 1, 16}; }, "an even address", kBad},
      {[&](auto&, auto& to, auto&) { to = {memoryOut, 900, 17, 1, 16}; }, "an even stride", kBad}};
  // clang-format on
  for (const Case& each : cases) {
    std::fill(std::begin(memoryOut), std::end(memoryOut), uint8_t{0xee});
    ImageView image = good;
    Picture picture{memoryOut, 64, 0, 1, 8};
    Rows rows;
    each.change(image, picture, rows);
    const Result result = convert(image, picture, rows);
    EXPECT_EQ(result.code, each.code) << result.text;
    EXPECT_NE(std::string(result.text).find(each.text), std::string::npos) << result.text << "\n" << each.text;
    EXPECT_TRUE(std::ranges::all_of(memoryOut, [](uint8_t byte) { return byte == 0xee; })) << each.text;
  }
  EXPECT_EQ(unpack(view(memory, "Mono12p", 8, 1), {memoryOut, 64, 0, 8}).code, Code::BadArgument);
  EXPECT_EQ(unpack(view(memory, "Mono8s", 8, 1), {memoryOut, 64, 0, 8}).code, Code::Unsupported);
  EXPECT_EQ(unpack(good, {memoryOut, 64, 0, 8}, Align::Low, {8, 1}).code, Code::BadSize);
}

}  // namespace ox::pixels

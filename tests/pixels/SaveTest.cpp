#include "OxPixels/Save.h"

#include <gtest/gtest.h>
#include <png.h>
#include <sys/resource.h>
#include <tiffio.h>
#include <turbojpeg.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "OxPixels/Convert.h"
#include "Samples.h"

namespace ox::pixels {

namespace {

using Bytes = std::vector<uint8_t>;

// What another reader finds in a file.
struct Content {
  uint32_t width = 0, height = 0, channels = 0, bits = 0, significant = 0;
  std::vector<uint16_t> values;
};

Content readPng(const std::string& path) {
  Content content;
  png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png_create_info_struct(png);
  std::FILE* const file = std::fopen(path.c_str(), "rb");
  png_init_io(png, file);
  png_read_png(png, info, PNG_TRANSFORM_SWAP_ENDIAN, nullptr);
  content = {png_get_image_width(png, info),
             png_get_image_height(png, info),
             png_get_channels(png, info),
             png_get_bit_depth(png, info),
             0,
             {}};
  png_color_8p significant = nullptr;
  if (png_get_sBIT(png, info, &significant) != 0) content.significant = significant->gray;
  for (uint32_t y = 0; y < content.height; ++y) {
    const png_bytep row = png_get_rows(png, info)[y];
    for (uint32_t i = 0; i < content.width * content.channels; ++i)
      content.values.push_back(content.bits == 8 ? row[i] : static_cast<uint16_t>(row[2 * i] | row[2 * i + 1] << 8));
  }
  std::fclose(file);
  png_destroy_read_struct(&png, &info, nullptr);
  return content;
}

Content readTiff(const std::string& path) {
  Content content;
  TIFF* const tiff = TIFFOpen(path.c_str(), "r");
  uint16_t channels = 0, bits = 0, compression = 0;
  TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &content.width);
  TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &content.height);
  TIFFGetField(tiff, TIFFTAG_SAMPLESPERPIXEL, &channels);
  TIFFGetField(tiff, TIFFTAG_BITSPERSAMPLE, &bits);
  TIFFGetField(tiff, TIFFTAG_COMPRESSION, &compression);
  EXPECT_EQ(compression, COMPRESSION_NONE);
  content.channels = channels;
  content.bits = bits;
  Bytes row(static_cast<std::size_t>(TIFFScanlineSize(tiff)));
  for (uint32_t y = 0; y < content.height; ++y) {
    TIFFReadScanline(tiff, row.data(), y);
    for (std::size_t i = 0; i < row.size(); i += bits / 8u)
      content.values.push_back(bits == 8 ? row[i] : static_cast<uint16_t>(row[i] | row[i + 1] << 8));
  }
  TIFFClose(tiff);
  return content;
}

Bytes readFile(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

Content readPnm(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  Content content;
  std::string magic;
  unsigned white = 0;
  stream >> magic >> content.width >> content.height >> white;
  stream.get();
  content.channels = magic == "P6" ? 3 : magic == "P5" ? 1 : 0;
  content.bits = white > 255 ? 16 : 8;
  while (white >> content.significant != 0) ++content.significant;
  for (int byte = stream.get(); byte >= 0; byte = stream.get())
    content.values.push_back(static_cast<uint16_t>(content.bits == 8 ? byte : byte << 8 | stream.get()));
  return content;
}

class Save : public testing::Test {
 protected:
  Save() : folder_(std::filesystem::temp_directory_path() / ("pixels-" + std::to_string(getpid()))) {
    std::filesystem::create_directory(folder_);
  }
  ~Save() override { std::filesystem::remove_all(folder_); }

  std::string at(const std::string& name) const { return folder_ / name; }
  std::size_t fileCount() const {
    return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(folder_), {}));
  }
  // An image of random samples, with padded rows where the packing allows.
  SampleWriter random(const char* name, uint32_t width, uint32_t height, std::size_t stride = 0) const {
    const Format format = *findFormat(name);
    SampleWriter writer(format, width, height, stride);
    for (uint64_t y = 0; y < format.sampleRows(height); ++y)
      for (uint64_t x = 0; x < format.samplesPerRow(width); ++x) writer.put(y, x, randomValue(format.significantBits));
    return writer;
  }

  std::filesystem::path folder_;
  Saved saved_;
};

}  // namespace

// Other readers find the picture that convert() makes: size, depth, every value.
TEST_F(Save, PicturesAreReadBackByOtherReaders) {
  struct Case {
    const char* file;
    const char* format;
    SaveOptions options;
    uint32_t channels, bits, valueBits, significant;
  };
  SaveOptions keep, eight, stored;
  keep.keepValues = true;
  eight.eightBits = true;
  stored.pngLevel = 0;
  int number = 0;
  for (const Case& each : std::initializer_list<Case>{{"a.png", "Mono8", {}, 1, 8, 8, 0},
                                                      {"a.png", "Mono12p", {}, 1, 16, 16, 12},
                                                      {"a.png", "BayerGR10", keep, 3, 16, 10, 0},
                                                      {"a.PNG", "BGR8", stored, 3, 8, 8, 0},
                                                      {"a.png", "Mono4p", {}, 1, 8, 8, 4},
                                                      {"a.tif", "Mono16", {}, 1, 16, 16, 0},
                                                      {"a.tiff", "BayerRG12Packed", {}, 3, 16, 16, 0},
                                                      {"a.tiff", "BayerRG12Packed", eight, 3, 8, 8, 0},
                                                      {"a.pgm", "Mono10p", {}, 1, 16, 10, 10},
                                                      {"a.pgm", "RGB8", {}, 1, 8, 8, 8},
                                                      {"a.ppm", "Mono12", {}, 3, 16, 12, 12},
                                                      {"a.pnm", "YCbCr422_8", {}, 3, 8, 8, 8}}) {
    SCOPED_TRACE(testing::Message() << each.file << " of " << each.format);
    // Several bands, the last one cut.
    const uint32_t width = 202, height = 701;
    const auto writer = random(each.format, width, height, 2048);
    const ImageView image = view(writer.memory(), each.format, width, height, 2048);
    const std::string path = at(std::to_string(++number) + each.file);
    const Result result = save(image, path.c_str(), each.options, saved_);
    ASSERT_STREQ(result.text, "");
    EXPECT_EQ(saved_.path, path);
    EXPECT_EQ(saved_.bytes, std::filesystem::file_size(path));
    const Content content = saved_.kind == FileKind::Png    ? readPng(path)
                            : saved_.kind == FileKind::Tiff ? readTiff(path)
                                                            : readPnm(path);
    EXPECT_EQ(content.width, width);
    EXPECT_EQ(content.height, height);
    EXPECT_EQ(content.channels, each.channels);
    EXPECT_EQ(content.bits, each.bits);
    EXPECT_EQ(content.significant, each.significant);
    std::vector<uint16_t> expected(std::size_t{width} * height * each.channels);
    ASSERT_TRUE(convert(image, {expected.data(), 2 * expected.size(), 0, static_cast<uint8_t>(each.channels), 16,
                                static_cast<uint8_t>(each.valueBits)}));
    EXPECT_TRUE(content.values == expected);
  }
}

TEST_F(Save, JpegAndPngInMemoryLookLikeTheImage) {
  SampleWriter writer(*findFormat("BayerBG12p"), 64, 48, 0);  // orange
  for (uint32_t y = 0; y < 48; ++y)
    for (uint32_t x = 0; x < 64; ++x) writer.put(y, x, (x + y) % 2 != 0 ? 2000 : y % 2 != 0 ? 4000 : 400);
  const ImageView image = view(writer.memory(), "BayerBG12p", 64, 48);
  Bytes file;
  ASSERT_TRUE(encode(image, FileKind::Jpeg, {}, file));
  const tjhandle decoder = tjInitDecompress();
  Bytes pixels(64 * 48 * 3);
  ASSERT_EQ(tjDecompress2(decoder, file.data(), file.size(), pixels.data(), 64, 0, 48, TJPF_RGB, 0), 0);
  tjDestroy(decoder);
  for (std::size_t i = 0; i < pixels.size(); i += 3) {
    ASSERT_NEAR(pixels[i], 250, 4);
    ASSERT_NEAR(pixels[i + 1], 125, 4);
    ASSERT_NEAR(pixels[i + 2], 25, 4);
  }
  ASSERT_TRUE(save(image, at("a.jpg").c_str(), {}, saved_));
  EXPECT_EQ(readFile(at("a.jpg")), file);
  ASSERT_TRUE(encode(image, FileKind::Png, {}, file));
  ASSERT_TRUE(save(image, at("a.png").c_str(), {}, saved_));
  EXPECT_EQ(readFile(at("a.png")), file);
  EXPECT_EQ(encode(image, FileKind::Tiff, {}, file).code, Code::BadArgument);
}

// The header NumPy reads, and the samples behind it: of any packing, without padding, in the type of the format.
TEST_F(Save, ArraysHaveTheTypeAndShapeOfTheSamples) {
  struct Case {
    const char* format;
    uint32_t width, height;
    std::size_t stride;
    Bytes bytes;
    const char* header;
    Bytes elements;
  };
  for (const Case& each : std::initializer_list<Case>{
           // clang-format off
           {"Mono8", 2, 2, 3, {1, 2, 99, 3, 4}, "'|u1' (2, 2)", {1, 2, 3, 4}},
           {"Mono12p", 2, 1, 0, {0x23, 0x61, 0x45}, "'<u2' (1, 2)", {0x23, 1, 0x56, 4}},
           {"RGB8", 1, 2, 0, {1, 2, 3, 4, 5, 6}, "'|u1' (2, 1, 3)", {1, 2, 3, 4, 5, 6}},
           {"RGB8_Planar", 2, 1, 0, {1, 2, 3, 4, 5, 6}, "'|u1' (3, 1, 2)", {1, 2, 3, 4, 5, 6}},
           {"YUV422_8", 2, 1, 0, {1, 2, 3, 4}, "'|u1' (1, 2, 2)", {1, 2, 3, 4}},
           {"YUV411_8_UYYVYY", 4, 1, 0, {1, 2, 3, 4, 5, 6}, "'|u1' (1, 6)", {1, 2, 3, 4, 5, 6}},
           {"Mono8s", 2, 1, 0, {0xff, 1}, "'|i1' (1, 2)", {0xff, 1}},
           {"Coord3D_C32f", 1, 2, 5, {1, 2, 3, 4, 99, 5, 6, 7, 8}, "'<f4' (2, 1)", {1, 2, 3, 4, 5, 6, 7, 8}}}) {
    // clang-format on
    SCOPED_TRACE(each.format);
    const Memory memory(each.bytes);
    SaveOptions options;
    options.overwrite = true;
    const Result result =
        save(view(memory, each.format, each.width, each.height, each.stride), at("a.npy").c_str(), options, saved_);
    ASSERT_STREQ(result.text, "");
    const Bytes file = readFile(at("a.npy"));
    ASSERT_GE(file.size(), 64u);
    EXPECT_EQ(std::string(file.begin(), file.begin() + 8), std::string("\x93NUMPY\x01\x00", 8));
    const std::size_t start = 10 + file[8] + 256u * file[9];
    EXPECT_EQ(start % 64, 0u);
    const std::string header(file.begin() + 10, file.begin() + static_cast<long>(start));
    const std::string type(each.header, 5), shape(each.header + 6);
    EXPECT_TRUE(header.starts_with("{'descr': " + type + ", 'fortran_order': False, 'shape': " + shape + ", }"))
        << header;
    EXPECT_EQ(header.back(), '\n');
    EXPECT_EQ(Bytes(file.begin() + static_cast<long>(start), file.end()), each.elements);
  }
}

// What is no picture, and what nobody knows, is kept whole with a description that leads back to the same image.
TEST_F(Save, RawKeepsEverythingAndSaysWhatItIs) {
  struct Case {
    uint32_t format;
    const char* file;
    const char* saved;
    std::size_t stride;
  };
  for (const Case& each :
       std::initializer_list<Case>{{findFormat("BayerRG12p")->number, "a.raw", "a.raw", 0},
                                   {findFormat("BayerRG12p")->number, "b.raw", "b.raw", 11},
                                   {findFormat("RGB8_Planar")->number, "c.raw", "c.raw", 9},
                                   {findFormat("RGB10V1Packed")->number, "d.png", "d.png.raw", 0},
                                   {0x81230042, "e.npy", "e.npy.raw", 0},
                                   {findFormat("Coord3D_ABC32f")->number, "f.tif", "f.tif.raw", 0}}) {
    SCOPED_TRACE(each.file);
    uint64_t bytes = 0;
    ASSERT_TRUE(imageBytes(each.format, 5, 3, each.stride, 0, bytes));
    Memory memory(bytes);
    for (std::size_t i = 0; i < memory.size; ++i) memory.data[i] = static_cast<uint8_t>(i);
    ImageView image = view(memory, each.format, 5, 3, each.stride);
    image.bigEndian = true;
    SaveOptions options;
    options.members = R"({"camera": "GV01", "width": 7})";
    const Result result = save(image, at(each.file).c_str(), options, saved_);
    ASSERT_STREQ(result.text, "");
    EXPECT_EQ(saved_.kind, FileKind::Raw);
    EXPECT_EQ(saved_.path, at(each.saved));
    const auto json = nlohmann::json::parse(readFile(at(each.saved) + ".json"));
    EXPECT_EQ(json["camera"], "GV01");
    EXPECT_EQ(json["width"], 5);
    EXPECT_EQ(json["format"], describe(each.format).name);

    StoredImage stored;
    ASSERT_STREQ(loadRaw(saved_.path.c_str(), stored).text, "");
    EXPECT_EQ(stored.image.format, each.format);
    EXPECT_TRUE(stored.image.bigEndian);
    EXPECT_TRUE(each.stride != 0 || stored.bytes == Bytes(memory.data.get(), memory.data.get() + memory.size));
    if (describe(each.format).isPicture()) {
      Bytes before(45), after(45);
      EXPECT_TRUE(convert(image, {before.data(), before.size()}));
      EXPECT_TRUE(convert(stored.image, {after.data(), after.size()}));
      EXPECT_EQ(before, after);
    }
  }
  const Memory part(Bytes{1, 2, 3});  // an image that did not arrive whole
  ASSERT_TRUE(save(view(part, "Mono8", 2, 2), at("part.raw").c_str(), {}, saved_));
  EXPECT_EQ(readFile(at("part.raw")), (Bytes{1, 2, 3}));
  StoredImage stored;
  EXPECT_EQ(loadRaw(at("part.raw").c_str(), stored).code, Code::BadFile);
  for (const char* text : {"", "[]", "{}", R"({"number": "0x01080001", "width": -1})", R"({"number": "0x01080001x"})",
                           R"({"number": "0x01080001", "width": 4294967296, "height": 1})"}) {
    std::ofstream(at("part.raw.json")) << text;
    EXPECT_EQ(loadRaw(at("part.raw").c_str(), stored).code, Code::BadFile) << text;
  }
  EXPECT_EQ(loadRaw(at("none.raw").c_str(), stored).code, Code::Io);
  EXPECT_EQ(loadRaw(folder_.c_str(), stored).code, Code::Io);
}

TEST_F(Save, NothingIsReplacedUnaskedAndFailuresSayWhy) {
  const auto writer = random("Mono8", 64, 64);
  const ImageView image = view(writer.memory(), "Mono8", 64, 64);
  const auto code = [&](const std::string& path, const SaveOptions& options = {}) {
    const Result result = save(image, path.c_str(), options, saved_);
    EXPECT_NE(result.text[0] == '\0', result.code != Code::Ok);
    return result.code;
  };
  std::ofstream(at("a.png")) << "mine";
  std::ofstream(at("b.raw.json")) << "mine";
  EXPECT_EQ(code(at("a.png")), Code::Exists);
  EXPECT_EQ(code(at("b.raw")), Code::Exists);
  EXPECT_EQ(readFile(at("a.png")), (Bytes{'m', 'i', 'n', 'e'}));
  SaveOptions options;
  options.overwrite = true;
  EXPECT_EQ(code(at("a.png"), options), Code::Ok);
  EXPECT_EQ(readPng(at("a.png")).width, 64u);
  EXPECT_EQ(code(at("missing/a.png")), Code::Io);
  EXPECT_EQ(code("/dev/full.png/x.png"), Code::Io);
  std::filesystem::create_directory(at("folder.png"));
  EXPECT_EQ(code(at("folder.png"), options), Code::Io);
  EXPECT_EQ(code(at("a")), Code::BadArgument);
  EXPECT_EQ(code(at("png")), Code::BadArgument);
  EXPECT_EQ(code(at("a.bmp")), Code::BadArgument);
  options.pngLevel = 10;
  EXPECT_EQ(code(at("c.png"), options), Code::BadArgument);
  options.pngLevel = 1;
  options.members = "[1]";
  EXPECT_EQ(code(at("c.raw"), options), Code::BadArgument);
  EXPECT_EQ(save(view(writer.memory(), "Mono8", 65, 64), at("c.tif").c_str(), {}, saved_).code, Code::BadSize);
  EXPECT_EQ(fileCount(), 3u) << "a.png, b.raw.json, folder.png";
}

// A limit on the size of files stands in for a full disk. No kind of file leaves a part of itself.
TEST_F(Save, AFullDiskIsAnErrorAndLeavesNoFile) {
  const auto writer = random("Mono16", 640, 480);
  const ImageView image = view(writer.memory(), "Mono16", 640, 480);
  const auto before = std::signal(SIGXFSZ, SIG_IGN);
  rlimit limit{};
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &limit), 0);
  for (const rlim_t most : {rlim_t{0}, rlim_t{1000}, rlim_t{60'000}}) {
    for (const char* name : {"a.png", "a.tif", "a.pgm", "a.npy", "a.jpg", "a.raw"}) {
      const rlimit small{most, limit.rlim_max};
      ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
      const Result result = save(image, at(name).c_str(), {}, saved_);
      ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
      EXPECT_EQ(result.code, Code::Io) << name << most;
      EXPECT_EQ(std::string(result.text), "File too large: cannot write " + at(name));
      EXPECT_EQ(fileCount(), 0u) << name;
    }
  }
  std::signal(SIGXFSZ, before);
}

}  // namespace ox::pixels

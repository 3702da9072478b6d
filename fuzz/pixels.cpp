// Images of any format, size, stride and bytes, most of them too short for what they say. The first bytes are the
// geometry, the rest is the image. Whatever is read or written lies in memory of exactly the size that is named, and a
// picture made in bands is the picture made at once.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "OxPixels/Convert.h"
#include "OxPixels/Save.h"
#include "OxPixels/Statistics.h"
#include "OxPixels/Terminal.h"

using namespace ox::pixels;

namespace {

struct Input {
  const uint8_t* data;
  size_t size;

  template <class Number>
  Number take() {
    Number number{};
    const size_t count = std::min(size, sizeof number);
    if (count != 0) std::memcpy(&number, data, count);
    data += count;
    size -= count;
    return number;
  }
};

void require(bool holds) {
  if (!holds) std::abort();
}

// A refusal has a sentence, success has none.
bool well(const Result& result) {
  require((result.text[0] == '\0') == static_cast<bool>(result));
  return static_cast<bool>(result);
}

constexpr uint64_t kMostBytes = 1 << 22;

void makePicture(const ImageView& image, uint8_t channels, uint8_t sampleBits, uint8_t valueBits, uint32_t cut) {
  uint64_t bytes = 0;
  if (!well(pictureBytes(image.width, image.height, channels, sampleBits, bytes)) || bytes > kMostBytes) return;
  const std::unique_ptr<uint8_t[]> whole(new uint8_t[bytes]);
  if (!well(convert(image, {whole.get(), bytes, 0, channels, sampleBits, valueBits}))) return;
  cut %= image.height;
  const uint64_t row = bytes / image.height;
  const std::unique_ptr<uint8_t[]> lower(new uint8_t[bytes - cut * row]);
  require(well(convert(image, {lower.get(), bytes - cut * row, 0, channels, sampleBits, valueBits, cut}, {cut})));
  require(std::memcmp(lower.get(), whole.get() + cut * row, bytes - cut * row) == 0);
  if (channels != 3 || sampleBits != 8) return;
  std::string text;
  require(well(
      terminalText({whole.get(), bytes, 0, image.width, image.height}, 1 + cut % 90, 24, TerminalColours::True, text)));
}

void takeSamples(const ImageView& image, uint8_t sampleBits, Align align) {
  const Format format = describe(image.format);
  const uint64_t row = format.samplesPerRow(image.width) * sampleBits / 8, rows = format.sampleRows(image.height);
  if (row == 0 || rows > kMostBytes / row) return;
  const std::unique_ptr<uint8_t[]> samples(new uint8_t[row * rows]);
  well(unpack(image, {samples.get(), row * rows, 0, sampleBits}, align));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Input input{data, size};
  const auto flags = input.take<uint8_t>();
  const auto choice = input.take<uint32_t>();
  ImageView image;
  image.format = (flags & 1) != 0 ? choice : allFormats()[choice % allFormats().size()].number;
  image.width = (flags & 2) != 0 ? input.take<uint32_t>() : input.take<uint8_t>() * (flags & 4 ? 17u : 1u);
  image.height = (flags & 2) != 0 ? input.take<uint32_t>() : input.take<uint8_t>();
  image.stride = (flags & 8) != 0 ? input.take<size_t>() : input.take<uint8_t>();
  image.significantBits = (flags & 16) != 0 ? input.take<uint8_t>() % 18 : 0;
  image.bigEndian = (flags & 32) != 0;
  image.highAligned = (flags & 64) != 0;
  const auto bits = input.take<uint8_t>();
  const auto cut = input.take<uint16_t>();
  const Region region{input.take<uint8_t>(), input.take<uint8_t>(), input.take<uint8_t>()};
  const bool jpeg = (flags & 128) != 0;

  // What is missing of the image comes from repeating the input, unless it is too much: short images are refused early.
  uint64_t bytes = 0;
  const bool sized = well(imageBytes(image.format, image.width, image.height, image.stride, 0, bytes));
  image.size = sized && bytes < kMostBytes && (bits & 64) == 0 ? bytes : input.size;
  const std::unique_ptr<uint8_t[]> memory(new uint8_t[image.size]);
  for (size_t i = 0; i < image.size; ++i) memory[i] = input.size != 0 ? input.data[i % input.size] : 0;
  image.data = memory.get();

  size_t stride = 0;
  if (well(findStride(image.format, image.width, image.height, image.stride % 64, image.size, stride)))
    require(well(imageBytes(image.format, image.width, image.height, stride, 0, bytes)) && bytes <= image.size);
  const uint8_t channels = (bits & 1) != 0 ? 3 : 1, sampleBits = (bits & 2) != 0 ? 16 : 8;
  makePicture(image, channels, sampleBits, (bits & 4) != 0 ? bits >> 3 & 31 : 0, cut);
  takeSamples(image, sampleBits, (bits & 8) != 0 ? Align::High : Align::Low);
  Statistics statistics;
  if (uint64_t{image.width} * image.height < kMostBytes && well(measure(image, region, statistics))) {
    PixelValue pixel;
    require(well(pixelAt(image, region.x, region.y, pixel)));
    PixelValue line[300];
    size_t count = 0;
    well(lineProfile(image, region.x, region.y, cut % image.width, cut % image.height, line, 300, count));
  }
  std::vector<uint8_t> file;
  SaveOptions options;
  options.pngLevel = 0;
  if (image.size < 1 << 16 && image.width < 1000)
    well(encode(image, jpeg ? FileKind::Jpeg : FileKind::Png, options, file));
  return 0;
}

// Pixels of 12 megapixels (4000 x 3000): samples and pictures beside a memcpy of the result, and what files take.
//
// The floor of a row is a memcpy of as many bytes as the work writes, measured in the same run. The pictures saved are
// a soft scene with the noise of a sensor: a file's size depends on little else than noise.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "OxPixels/Convert.h"
#include "OxPixels/Save.h"
#include "OxPixels/Statistics.h"

namespace {

using namespace ox::pixels;

constexpr uint32_t kWidth = 4000, kHeight = 3000;
constexpr uint64_t kPixels = uint64_t{kWidth} * kHeight;

// Memory that has been touched, so that no page is given out while the time runs.
std::vector<uint8_t>& memory(std::size_t which, uint64_t bytes) {
  static std::vector<uint8_t> buffers[2];
  if (buffers[which].size() < bytes) buffers[which].assign(bytes, 1);
  return buffers[which];
}

double processorSeconds() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

double median(std::vector<double>& values) {
  const auto middle = values.begin() + static_cast<long>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

// An image whose bytes are noise, in memory that the result does not share.
ImageView noise(const char* name) {
  static const std::vector<uint8_t> bytes = [] {
    std::vector<uint8_t> filled(kPixels * 4);
    std::mt19937_64 generator(1);
    for (std::size_t i = 0; i < filled.size(); i += 8) {
      const uint64_t word = generator();
      std::memcpy(filled.data() + i, &word, 8);
    }
    return filled;
  }();
  return {bytes.data(), bytes.size(), findFormat(name)->number, kWidth, kHeight};
}

// Runs `work` and a memcpy of `bytes` in turn, so that what else the machine does meets both. Processor time.
template <class Work>
void besideCopy(benchmark::State& state, uint64_t bytes, Work&& work) {
  auto &from = memory(0, bytes), &to = memory(1, bytes);
  std::vector<double> times, copies;
  for (auto _ : state) {
    const double start = processorSeconds();
    const Result result = work();
    const double done = processorSeconds();
    std::memcpy(to.data(), from.data(), bytes);
    benchmark::ClobberMemory();
    times.push_back(1000 * (done - start));
    copies.push_back(1000 * (processorSeconds() - done));
    if (!result) return state.SkipWithError(result.text);
  }
  state.counters["figure"] = median(times);
  state.counters["floor"] = median(copies);
  state.SetLabel("ms");
}

void unpackSamples(benchmark::State& state, const char* name) {
  const ImageView image = noise(name);
  auto& out = memory(1, 2 * kPixels);
  besideCopy(state, 2 * kPixels, [&] { return unpack(image, {out.data(), out.size()}); });
}

void makePicture(benchmark::State& state, const char* name, uint8_t channels, uint8_t bits) {
  const ImageView image = noise(name);
  const uint64_t bytes = kPixels * channels * bits / 8;
  auto& out = memory(1, bytes);
  besideCopy(state, bytes, [&] { return convert(image, {out.data(), out.size(), 0, channels, bits}); });
}

void measureSamples(benchmark::State& state, const char* name) {
  const ImageView image = noise(name);
  Statistics statistics;
  besideCopy(state, kPixels, [&] { return measure(image, {}, statistics); });
}

// A scene of 12 bits in the mosaic or in gray: soft shades, noise of about five steps.
ImageView scene(const char* name) {
  static const std::vector<uint16_t> samples = [] {
    std::vector<uint16_t> made(kPixels);
    std::mt19937 generator(1);
    for (uint32_t y = 0; y < kHeight; ++y) {
      for (uint32_t x = 0; x < kWidth; ++x) {
        const double shade = 2000 + 1500 * std::sin(x / 300.0) * std::cos(y / 200.0);
        made[uint64_t{y} * kWidth + x] = static_cast<uint16_t>(shade + generator() % 16);
      }
    }
    return made;
  }();
  static std::vector<uint8_t> eight;
  if (std::string(name).ends_with("12"))
    return {samples.data(), 2 * kPixels, findFormat(name)->number, kWidth, kHeight};
  if (eight.empty())
    for (const uint16_t sample : samples) eight.push_back(static_cast<uint8_t>(sample >> 4));
  return {eight.data(), kPixels, findFormat(name)->number, kWidth, kHeight};
}

// Megabytes of pixels per second of processor time, from the image to the file system's cache.
void saveFile(benchmark::State& state, const char* format, const char* ending, int level) {
  const std::string path = (std::filesystem::temp_directory_path() / "bench-pixels").string() + ending;
  const ImageView image = scene(format);
  SaveOptions options;
  options.overwrite = true;
  options.pngLevel = level;
  const bool colour =
      describe(image.format).kind == Kind::Bayer && fileKind(path) != FileKind::Raw && fileKind(path) != FileKind::Npy;
  const bool deep = significantBits(image) > 8 && fileKind(path) != FileKind::Jpeg;
  const double bytes = static_cast<double>(kPixels * (colour ? 3 : 1) * (deep ? 2 : 1));
  std::vector<double> times;
  Saved saved;
  for (auto _ : state) {
    const double start = processorSeconds();
    const Result result = save(image, path.c_str(), options, saved);
    times.push_back(processorSeconds() - start);
    if (!result) return state.SkipWithError(result.text);
  }
  std::filesystem::remove(path);
  std::filesystem::remove(path + ".json");
  state.counters["figure"] = bytes / 1e6 / median(times);
  state.counters["percent"] = 100.0 * static_cast<double>(saved.bytes) / bytes;
  state.SetLabel("MB/s");
}

[[maybe_unused]] const bool registered = [] {
  const auto add = [](const std::string& name, auto run) {
    benchmark::RegisterBenchmark(name.c_str(), run)->Unit(benchmark::kMillisecond);
  };
  for (const char* name : {"Mono10p", "Mono12p", "Mono12Packed", "Mono14p", "Mono12"})
    add(std::string("12 MP ") + name + " to samples", [name](auto& state) { unpackSamples(state, name); });
  for (const char* name : {"BayerRG8", "BayerRG10", "BayerRG12p", "BayerRG12Packed", "Mono8", "Mono12p", "BGR8",
                           "YUV422_8", "YCbCr411_8", "RGB10p"})
    add(std::string("12 MP ") + name + " to RGB 8", [name](auto& state) { makePicture(state, name, 3, 8); });
  for (const char* name : {"BayerRG12p", "RGB10p", "YCbCr422_10"})
    add(std::string("12 MP ") + name + " to RGB 16", [name](auto& state) { makePicture(state, name, 3, 16); });
  add("12 MP Mono12p to gray 8", [](auto& state) { makePicture(state, "Mono12p", 1, 8); });
  add("12 MP BayerRG8 to gray 8", [](auto& state) { makePicture(state, "BayerRG8", 1, 8); });
  add("12 MP BayerRG12p measured", [](auto& state) { measureSamples(state, "BayerRG12p"); });
  struct File {
    const char *format, *ending;
    int level;
  };
  for (const File& file :
       {File{"Mono8", ".png", 0}, File{"Mono8", ".png", 1}, File{"Mono8", ".png", 6}, File{"Mono12", ".png", 1},
        File{"BayerRG8", ".png", 1}, File{"Mono8", ".tif", 1}, File{"Mono12", ".tif", 1}, File{"BayerRG8", ".tif", 1},
        File{"Mono8", ".pgm", 1}, File{"BayerRG8", ".ppm", 1}, File{"Mono12", ".npy", 1}, File{"Mono12", ".raw", 1},
        File{"Mono8", ".jpg", 1}, File{"BayerRG8", ".jpg", 1}}) {
    const std::string ending = file.ending;
    const std::string level = ending == ".png" ? " level " + std::to_string(file.level) : "";
    add(std::string("save ") + file.format + " as " + ending + level,
        [file](auto& state) { saveFile(state, file.format, file.ending, file.level); });
  }
  return true;
}();

}  // namespace

BENCHMARK_MAIN();

// Whole files between memory and the simulated camera, whose buffer takes 4096 bytes.
//
// Counters: port accesses per block of the device, peak memory that a transfer added (file to file), and, as the floor,
// the camera alone: the same register accesses without a node map.
#include <OxBase/OxBase.h>
#include <OxGenApi/OxGenApi.h>
#include <OxSimulation/SimulatedCamera.h>
#include <benchmark/benchmark.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

namespace {

using ox::simulation::SimulatedCamera;

constexpr size_t kBlock = 4096;
constexpr const char* kFile = "UserFile1";

void require(uint32_t result) {
  if (result == OXGENAPI_OK) return;
  std::fprintf(stderr, "bench_files: a call failed with 0x%08x\n", result);
  std::abort();
}

class Bench {
 public:
  Bench() {
    require(CreateNodeMap(map));
    require(NMLoadXMLString(map, std::string(SimulatedCamera::description()).c_str()));
    require(NMConnectPort(map, read, write, nullptr, this));
  }
  ~Bench() { OxIfaceContainerReleaseUseCounter(map); }
  Bench(const Bench&) = delete;
  Bench& operator=(const Bench&) = delete;

  SimulatedCamera camera;
  NODEMAP map = nullptr;
  int64_t accesses = 0;

 private:
  static int read(void* to, int64_t address, int64_t length, void* self) {
    ++static_cast<Bench*>(self)->accesses;
    return static_cast<Bench*>(self)->camera.read(to, address, length);
  }
  static int write(const void* from, int64_t address, int64_t length, void* self) {
    ++static_cast<Bench*>(self)->accesses;
    return static_cast<Bench*>(self)->camera.write(from, address, length);
  }
};

// Runs one transfer of `size` bytes per iteration. What does not grow with the file is taken off by a short transfer.
template <class Transfer>
void measure(benchmark::State& state, Bench& bench, Transfer transfer) {
  const auto size = static_cast<size_t>(state.range(0));
  transfer(kBlock);
  int64_t before = bench.accesses;
  transfer(kBlock);
  const int64_t once = bench.accesses - before;
  before = bench.accesses;
  transfer(size);
  const int64_t blocks = static_cast<int64_t>(size / kBlock) - 1;
  if (blocks > 0)
    state.counters["accesses_per_block"] =
        static_cast<double>(bench.accesses - before - once) / static_cast<double>(blocks);
  for (auto _ : state) transfer(size);
  state.SetBytesProcessed(state.iterations() * state.range(0));
}

void UploadFromMemory(benchmark::State& state) {
  Bench bench;
  const std::vector<char> data(static_cast<size_t>(state.range(0)), 'x');
  measure(state, bench, [&](size_t size) { require(NMUploadFileMemory(bench.map, kFile, data.data(), size)); });
}

void DownloadToMemory(benchmark::State& state) {
  Bench bench;
  std::vector<char> data(static_cast<size_t>(state.range(0)));
  bench.camera.setFileContent(kFile, std::vector<uint8_t>(data.size(), 'x'));
  measure(state, bench, [&](size_t size) {
    require(NMDownloadFileMemory(bench.map, kFile, data.data(), &size));
    benchmark::DoNotOptimize(data.data());
  });
}

// The largest resident size so far, in kilobytes.
long peak() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss;
}

// Host file to device and back; the camera holds the file beforehand, so that only the transfers could need more.
void FileToFile(benchmark::State& state) {
  Bench bench;
  const auto size = static_cast<size_t>(state.range(0));
  const std::string path = "/tmp/ox_bench_files_" + std::to_string(::getpid());
  std::ofstream(path, std::ios::binary) << std::string(size, 'x');
  require(NMUploadFile(bench.map, kFile, path.c_str()));
  require(NMDownloadFile(bench.map, kFile, path.c_str()));
  const long before = peak();
  for (auto _ : state) {
    require(NMUploadFile(bench.map, kFile, path.c_str()));
    require(NMDownloadFile(bench.map, kFile, path.c_str()));
  }
  state.counters["added_kB"] = static_cast<double>(peak() - before);
  state.SetBytesProcessed(2 * state.iterations() * state.range(0));
  std::remove(path.c_str());
}

// What the camera itself takes for the accesses of an upload.
void CameraAlone(benchmark::State& state) {
  SimulatedCamera camera;
  constexpr int64_t kSelector = 0x1B000;
  std::vector<char> block(kBlock, 'x');
  const auto word = [&](int64_t address, uint32_t value) {
    const uint32_t big = __builtin_bswap32(value);
    camera.write(&big, address, sizeof big);
  };
  const auto wide = [&](int64_t address, int64_t value) {
    const uint64_t big = __builtin_bswap64(static_cast<uint64_t>(value));
    camera.write(&big, address, sizeof big);
  };
  const auto ask = [&](int64_t address) {
    uint32_t big = 0;
    camera.read(&big, address, sizeof big);
    benchmark::DoNotOptimize(big);
  };
  // Behind FileSelector: operation 0x04, execute 0x08, open mode 0x0C, offset 0x18, length 0x20, status 0x24, result
  // 0x28.
  for (auto _ : state) {
    word(kSelector, 0);
    word(kSelector + 0x04, 0);
    word(kSelector + 0x0C, 1);
    word(kSelector + 0x08, 1);
    word(kSelector + 0x04, 3);
    for (int64_t offset = 0; offset < state.range(0); offset += kBlock) {
      wide(kSelector + 0x18, offset);
      word(kSelector + 0x20, kBlock);
      camera.write(block.data(), 0x40000, kBlock);
      word(kSelector + 0x08, 1);
      ask(kSelector + 0x08);
      ask(kSelector + 0x24);
      ask(kSelector + 0x28);
    }
    word(kSelector + 0x04, 1);
    word(kSelector + 0x08, 1);
  }
  if (camera.fileContent(kFile).size() != static_cast<size_t>(state.range(0))) state.SkipWithError("nothing arrived");
  state.SetBytesProcessed(state.iterations() * state.range(0));
}

constexpr int64_t kMegabyte = 1 << 20;
BENCHMARK(UploadFromMemory)->Arg(kBlock)->Arg(16 * kMegabyte)->Unit(benchmark::kMillisecond);
BENCHMARK(DownloadToMemory)->Arg(kBlock)->Arg(16 * kMegabyte)->Unit(benchmark::kMillisecond);
BENCHMARK(FileToFile)->Arg(16 * kMegabyte)->Arg(64 * kMegabyte)->Unit(benchmark::kMillisecond);
BENCHMARK(CameraAlone)->Arg(16 * kMegabyte)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();

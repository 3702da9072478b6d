// What node maps of one description cost in memory, and whether the thousandth costs what the first did.
//
// Measured once, with the largest description there is: private dirty pages of the process, in MB (1e6 bytes) for each
// map.
#include <OxBase/OxBase.h>
#include <OxGenApi/OxGenApi.h>
#include <benchmark/benchmark.h>
#include <malloc.h>

#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fstream>
#include <string>
#include <vector>

#include "Descriptions.h"

namespace {

void require(bool done) {
  if (!done) std::abort();
}

double dirtyMegabytes() {
  std::ifstream smaps("/proc/self/smaps_rollup");
  double bytes = 0;
  for (std::string line; std::getline(smaps, line);)
    if (line.starts_with("Private_Dirty:")) bytes += std::strtod(line.c_str() + std::strlen("Private_Dirty:"), nullptr);
  return bytes * 1024 / 1e6;
}

double now() {
  timespec time{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

int readNothing(void* to, int64_t, int64_t length, void*) {
  std::memset(to, 0, static_cast<size_t>(length));
  return 0;
}
int writeNothing(const void*, int64_t, int64_t, void*) { return 0; }

NODEMAP load(const std::string& text) {
  NODEMAP map = nullptr;
  require(CreateNodeMap(map) == OXGENAPI_OK);
  require(NMLoadXMLString(map, text.c_str()) == OXGENAPI_OK);
  require(NMConnectPort(map, readNothing, writeNothing, nullptr, nullptr) == OXGENAPI_OK);
  return map;
}

bool isReadable(NODE node) {
  char text[256];
  size_t size = sizeof text;
  return NGetAsString(node, text, size) == OXGENAPI_OK;
}

constexpr size_t kFeatures = 50;

// The first so many features, in the order of the description, that a device full of zeros lets one read.
std::vector<std::string> readableFeatures(NODEMAP map) {
  std::vector<std::string> found;
  uint32_t count = 0;
  require(NMNodeCount(map, count) == OXGENAPI_OK);
  for (uint32_t i = 0; i < count && found.size() < kFeatures; ++i) {
    char name[512];
    size_t size = sizeof name;
    NODE node = nullptr;
    if (NMListNode(map, i, name, size) != OXGENAPI_OK || NMGetNode(map, name, node) != OXGENAPI_OK) continue;
    bool isFeature = false;
    if (NInfoAsBoolean(node, NI_IsFeature, &isFeature) == OXGENAPI_OK && isFeature && isReadable(node))
      found.push_back(name);
    OxIfaceContainerReleaseUseCounter(node);
  }
  return found;
}

void readFeatures(NODEMAP map, const std::vector<std::string>& features) {
  for (const std::string& feature : features) {
    NODE node = nullptr;
    require(NMGetNode(map, feature.c_str(), node) == OXGENAPI_OK);
    require(isReadable(node));
    OxIfaceContainerReleaseUseCounter(node);
  }
}

// Node maps of one description; the first one, which pays for the description, is there before the count begins.
class Maps {
 public:
  Maps() : text_(largestDescription().text), before_(dirtyMegabytes()), maps_{load(text_)} {
    first_ = dirtyMegabytes() - before_;
    features_ = readableFeatures(maps_.front());
    malloc_trim(0);
    before_ = dirtyMegabytes();
  }
  ~Maps() {
    for (const NODEMAP map : maps_) OxIfaceContainerReleaseUseCounter(map);
    malloc_trim(0);
  }
  void create(size_t count, bool read) {
    maps_.reserve(maps_.size() + count);
    for (size_t i = 0; i < count; ++i) {
      maps_.push_back(load(text_));
      if (read) readFeatures(maps_.back(), features_);
    }
  }
  double firstMegabytes() const { return first_; }
  double megabytesEach() const { return (dirtyMegabytes() - before_) / static_cast<double>(maps_.size() - 1); }
  size_t features() const { return features_.size(); }

 private:
  std::string text_;
  double before_, first_;
  std::vector<NODEMAP> maps_;
  std::vector<std::string> features_;
};

void report(benchmark::State& state, double figure, const char* unit) {
  state.counters["figure"] = figure;
  state.SetLabel(unit);
}

void firstNodeMap(benchmark::State& state) {
  for (auto _ : state) report(state, Maps().firstMegabytes(), "MB");
}

void unusedNodeMap(benchmark::State& state) {
  for (auto _ : state) {
    Maps maps;
    maps.create(1000, false);
    report(state, maps.megabytesEach(), "MB");
  }
}

void readNodeMap(benchmark::State& state) {
  for (auto _ : state) {
    Maps maps;
    maps.create(1000, true);
    report(state, maps.megabytesEach(), "MB");
    state.counters["features"] = static_cast<double>(maps.features());
  }
}

void linearCreation(benchmark::State& state) {
  for (auto _ : state) {
    Maps maps;
    const double start = now();
    maps.create(500, true);
    const double middle = now();
    maps.create(500, true);
    report(state, (now() - middle) / (middle - start), "x");
  }
}

}  // namespace

BENCHMARK(firstNodeMap)->Iterations(1)->Name("first node map");
BENCHMARK(unusedNodeMap)->Iterations(1)->Name("node map nobody uses");
BENCHMARK(readNodeMap)->Iterations(1)->Name("node map with 50 features read");
BENCHMARK(linearCreation)->Iterations(1)->Name("creating the last 500 of 1000 node maps");
BENCHMARK_MAIN();

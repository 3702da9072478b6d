// What one call of the flat interface costs, beside the floor: one uncontended atomic add and subtract, and the
// callback where the device is asked.
//
// Counters: port reads and writes, and heap allocations, per call. The argument is the number of other threads alive:
// a process with one thread takes cheaper locks.
#include <benchmark/benchmark.h>

#include <atomic>
#include <semaphore>
#include <thread>
#include <vector>

#include "CallCamera.h"
#include "CountedAllocations.h"

namespace {

// A camera, and some threads that only exist.
class Bench : public CallCamera {
 public:
  explicit Bench(int64_t others) {
    for (int64_t i = 0; i < others; ++i) others_.emplace_back([this] { stop_.acquire(); });
  }
  ~Bench() {
    stop_.release(static_cast<std::ptrdiff_t>(others_.size()));
    for (auto& each : others_) each.join();
  }

 private:
  std::counting_semaphore<> stop_{0};
  std::vector<std::thread> others_;
};

// Measures one call on one feature; two calls before it warm what is remembered.
template <class Call>
void measure(benchmark::State& state, const char* feature, Call&& call) {
  Bench bench(state.range(0));
  const NODE node = bench.node(feature);
  call(bench, node);
  call(bench, node);
  const Device before = bench.device;
  const long allocationsBefore = allocations;
  for (auto _ : state) call(bench, node);
  const auto perCall = [&](long count) { return static_cast<double>(count) / static_cast<double>(state.iterations()); };
  state.counters["allocs"] = perCall(allocations - allocationsBefore);
  state.counters["reads"] = perCall(bench.device.reads - before.reads);
  state.counters["writes"] = perCall(bench.device.writes - before.writes);
  OxIfaceContainerReleaseUseCounter(node);
}

void atomicPair(benchmark::State& state) {
  std::atomic<uint64_t> counter{0};
  for (auto _ : state) {
    counter.fetch_add(1);
    counter.fetch_sub(1);
  }
}

void atomicPairAndCallback(benchmark::State& state) {
  std::atomic<uint64_t> counter{0};
  Device device;
  TReadMem callback = readDevice;
  benchmark::DoNotOptimize(callback);
  uint32_t value = 0;
  for (auto _ : state) {
    counter.fetch_add(1);
    require(static_cast<uint32_t>(callback(&value, 32, sizeof value, &device)));
    benchmark::DoNotOptimize(value);
    counter.fetch_sub(1);
  }
}

template <const char* kFeature>
void getInteger(benchmark::State& state) {
  measure(state, kFeature, [](Bench&, NODE node) {
    int64_t value;
    require(NGetAsInteger(node, &value));
  });
}

template <const char* kFeature>
void getFloat(benchmark::State& state) {
  measure(state, kFeature, [](Bench&, NODE node) {
    double value;
    require(NGetAsFloat(node, &value));
  });
}

void getBoolean(benchmark::State& state) {
  measure(state, "Flag", [](Bench&, NODE node) {
    bool value;
    require(NGetAsBoolean(node, &value));
  });
}

void getEnumerationText(benchmark::State& state) {
  measure(state, "Mode", [](Bench&, NODE node) {
    char text[64];
    size_t size = sizeof text;
    require(NGetAsString(node, text, size));
  });
}

void setInteger(benchmark::State& state) {
  measure(state, "Width",
          [value = int64_t{0}](Bench&, NODE node) mutable { require(NSetAsInteger(node, value ^= 1)); });
}

void setFloatThroughConverter(benchmark::State& state) {
  measure(state, "Exposure",
          [value = 1.0](Bench&, NODE node) mutable { require(NSetAsFloat(node, value = 3.0 - value)); });
}

void setEnumerationText(benchmark::State& state) {
  measure(state, "Mode", [which = false](Bench&, NODE node) mutable {
    which = !which;
    require(NSetAsString(node, which ? "Mode7" : "Mode31"));
  });
}

void getNodeAndRelease(benchmark::State& state) {
  measure(state, "Width", [](Bench& bench, NODE) { OxIfaceContainerReleaseUseCounter(bench.node("Width")); });
}

void infoAccessMode(benchmark::State& state) {
  measure(state, "Width", [](Bench&, NODE node) {
    int64_t value;
    require(NInfoAsInteger(node, NI_AccessMode, &value));
  });
}

void listEntry(benchmark::State& state) {
  measure(state, "Mode", [](Bench&, NODE node) {
    char text[64];
    size_t size = sizeof text;
    require(NList(node, NL_EnumEntries, 20, text, size));
  });
}

constexpr char kWidth[] = "Width";
constexpr char kStatus[] = "Status";
constexpr char kExposure[] = "Exposure";
constexpr char kTemperature[] = "Temperature";

constexpr struct {
  const char* name;
  void (*measure)(benchmark::State&);
} kCalls[] = {
    {"get integer, cached", getInteger<kWidth>},
    {"get boolean, cached", getBoolean},
    {"get float, cached", getFloat<kExposure>},
    {"get register, uncached", getInteger<kStatus>},
    {"get float through a converter, uncached", getFloat<kTemperature>},
    {"get enumeration as text, cached", getEnumerationText},
    {"set integer", setInteger},
    {"set float through a converter", setFloatThroughConverter},
    {"set enumeration by text", setEnumerationText},
    {"get a known node and release it", getNodeAndRelease},
    {"ask for the access mode", infoAccessMode},
    {"list one entry", listEntry},
};

}  // namespace

int main(int argc, char** argv) {
  benchmark::RegisterBenchmark("atomic pair", atomicPair);
  benchmark::RegisterBenchmark("atomic pair and callback", atomicPairAndCallback);
  // All calls alone first: once it has had a second thread, a process is never again taken for one of a single thread.
  for (const int64_t others : {0, 1})
    for (const auto& call : kCalls)
      benchmark::RegisterBenchmark(call.name, call.measure)->Arg(others)->ArgName("others");
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
}

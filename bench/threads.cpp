// Whether two threads on two node maps get in each other's way.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

#include "CallCamera.h"

namespace {

// A camera with its features, on cache lines of its own.
struct alignas(128) Worker {
  CallCamera camera;
  NODE width = camera.node("Width"), status = camera.node("Status"), exposure = camera.node("Exposure");
  ~Worker() {
    for (const NODE node : {width, status, exposure}) OxIfaceContainerReleaseUseCounter(node);
  }

  void work(int rounds) {
    for (int i = 0; i < rounds; ++i) {
      int64_t integer;
      double real;
      require(NGetAsInteger(width, &integer));
      require(NGetAsInteger(status, &integer));
      require(NGetAsFloat(exposure, &real));
      if (i % 16 == 0) require(NSetAsInteger(width, i % 1000));
    }
  }
};

constexpr int kRounds = 20000;

// Seconds that it takes so many threads to do their rounds, each on a node map of its own, all starting at once.
double timeOf(size_t threads, std::vector<Worker>& workers) {
  std::atomic<size_t> ready{0};
  std::vector<std::chrono::steady_clock::time_point> starts(threads), ends(threads);
  {
    std::vector<std::jthread> running;
    for (size_t i = 0; i < threads; ++i) {
      running.emplace_back([&, i] {
        ++ready;
        while (ready < threads) {
        }
        starts[i] = std::chrono::steady_clock::now();
        workers[i].work(kRounds);
        ends[i] = std::chrono::steady_clock::now();
      });
    }
  }
  const auto start = *std::min_element(starts.begin(), starts.end());
  return std::chrono::duration<double>(*std::max_element(ends.begin(), ends.end()) - start).count();
}

// How much more two threads get done than one; from the shortest times, because the machine may be busy with others.
void twoThreads(benchmark::State& state) {
  std::vector<Worker> workers(2);
  double one = 1e9, two = 1e9;
  for (auto _ : state) {
    for (int i = 0; i < 10; ++i) {
      one = std::min(one, timeOf(1, workers));
      two = std::min(two, timeOf(2, workers));
    }
  }
  state.counters["figure"] = 2 * one / two;
  state.SetLabel("x");
}

}  // namespace

BENCHMARK(twoThreads)->Iterations(10)->Name("two threads on two node maps");
BENCHMARK_MAIN();

// What it costs to read every feature of a description, cold and again, over a device full of zeros.
//
// The figure is the time of a cold sweep, the node map's features known but nothing read. Counters: features that can
// be read; "cold" and "again", the port reads of the first and the second sweep; "most", how often the first asked for
// one place (address, length) that may be cached; "again", port reads of such places in the second sweep;
// "uncacheable", those of the others. Commands are left out: whether they are done is asked past all caches.
#include <benchmark/benchmark.h>

#include "Descriptions.h"
#include "Sweep.h"

namespace {

void sweep(benchmark::State& state, const std::string& text) {
  for (auto _ : state) {
    state.PauseTiming();
    {
      SweptCamera camera(text);
      camera.device.counting = false;
      state.ResumeTiming();
      camera.sweep();
      state.PauseTiming();
    }
    state.ResumeTiming();
  }
  SweptCamera camera(text);
  const long features = camera.sweep();
  const EmptyDevice cold = camera.device;
  camera.device.reads.clear();
  camera.sweep();
  const EmptyDevice again = camera.device;
  EmptyPort zeros;
  const std::set<Place> uncacheable = uncacheablePlaces(text, zeros);
  const SweepCounts coldCounts = count(cold, uncacheable), againCounts = count(again, uncacheable);
  state.counters["features"] = static_cast<double>(features);
  state.counters["cold"] = static_cast<double>(coldCounts.all);
  state.counters["most"] = static_cast<double>(coldCounts.most);
  state.counters["again"] = static_cast<double>(againCounts.cacheable);
  state.counters["uncacheable"] = static_cast<double>(againCounts.all - againCounts.cacheable);
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  for (const auto& each : descriptions()) {
    benchmark::RegisterBenchmark(("read all features, " + each.name).c_str(),
                                 [text = each.text](benchmark::State& state) { sweep(state, text); });
  }
  benchmark::RunSpecifiedBenchmarks();
}

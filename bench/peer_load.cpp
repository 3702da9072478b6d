// What load.cpp measures, with aravis.
#include <benchmark/benchmark.h>
#include <malloc.h>

#include <cstdlib>

#include "Descriptions.h"
#include "PeerDevice.h"

namespace {

void load(ArvDevice* device, const std::string& text) {
  ArvGc* const description = arv_gc_new(device, text.data(), text.size());
  if (description == nullptr) std::abort();
  g_object_unref(description);
}

void add(const char* work, const NamedDescription& description, bool fresh) {
  benchmark::RegisterBenchmark((work + (", " + description.name)).c_str(),
                               [text = description.text, fresh](benchmark::State& state) {
                                 ArvDevice* const device = createPeerDevice();
                                 for (auto _ : state) {
                                   state.PauseTiming();
                                   if (fresh) malloc_trim(0);
                                   state.ResumeTiming();
                                   load(device, text);
                                 }
                                 g_object_unref(device);
                               });
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  for (const auto& each : descriptions()) {
    add("first load", each, true);
    add("first load on a warm heap", each, false);
    add("second node map", each, false);
  }
  benchmark::RunSpecifiedBenchmarks();
}

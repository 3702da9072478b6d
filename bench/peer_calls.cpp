// What calls.cpp measures, with aravis: same description, same features, nodes held, its register cache switched on.
#include <benchmark/benchmark.h>

#include <cstdlib>

#include "CallDescription.h"
#include "PeerDevice.h"

namespace {

class Peer {
 public:
  Peer() {
    const std::string text = callDescription();
    gc_ = arv_gc_new(device_, text.data(), text.size());
    if (gc_ == nullptr) std::abort();
    arv_gc_set_register_cache_policy(gc_, ARV_REGISTER_CACHE_POLICY_ENABLE);
    arv_gc_set_access_check_policy(gc_, ARV_ACCESS_CHECK_POLICY_ENABLE);
    arv_gc_set_range_check_policy(gc_, ARV_RANGE_CHECK_POLICY_ENABLE);
  }
  ~Peer() {
    g_object_unref(gc_);
    g_object_unref(device_);
  }
  Peer(const Peer&) = delete;
  Peer& operator=(const Peer&) = delete;

  ArvGcNode* node(const char* name) const {
    ArvGcNode* const found = arv_gc_get_node(gc_, name);
    if (found == nullptr) std::abort();
    return found;
  }

 private:
  ArvDevice* device_ = createPeerDevice();
  ArvGc* gc_ = nullptr;
};

void require(GError* error) {
  if (error != nullptr) std::abort();
}

// `call(node, error)` on one feature.
template <class Call>
void measure(benchmark::State& state, const char* feature, Call&& call) {
  const Peer peer;
  ArvGcNode* const node = peer.node(feature);
  GError* error = nullptr;
  for (auto _ : state) {
    call(node, &error);
    require(error);
  }
}

template <const char* kFeature>
void getInteger(benchmark::State& state) {
  measure(state, kFeature, [](ArvGcNode* node, GError** error) {
    benchmark::DoNotOptimize(arv_gc_integer_get_value(ARV_GC_INTEGER(node), error));
  });
}

template <const char* kFeature>
void getFloat(benchmark::State& state) {
  measure(state, kFeature, [](ArvGcNode* node, GError** error) {
    benchmark::DoNotOptimize(arv_gc_float_get_value(ARV_GC_FLOAT(node), error));
  });
}

void getBoolean(benchmark::State& state) {
  measure(state, "Flag", [](ArvGcNode* node, GError** error) {
    benchmark::DoNotOptimize(arv_gc_boolean_get_value(ARV_GC_BOOLEAN(node), error));
  });
}

void getEnumerationText(benchmark::State& state) {
  measure(state, "Mode", [](ArvGcNode* node, GError** error) {
    benchmark::DoNotOptimize(arv_gc_enumeration_get_string_value(ARV_GC_ENUMERATION(node), error));
  });
}

void setInteger(benchmark::State& state) {
  measure(state, "Width", [value = gint64{0}](ArvGcNode* node, GError** error) mutable {
    arv_gc_integer_set_value(ARV_GC_INTEGER(node), value ^= 1, error);
  });
}

void setFloatThroughConverter(benchmark::State& state) {
  measure(state, "Exposure", [value = 1.0](ArvGcNode* node, GError** error) mutable {
    arv_gc_float_set_value(ARV_GC_FLOAT(node), value = 3.0 - value, error);
  });
}

void setEnumerationText(benchmark::State& state) {
  measure(state, "Mode", [which = false](ArvGcNode* node, GError** error) mutable {
    which = !which;
    arv_gc_enumeration_set_string_value(ARV_GC_ENUMERATION(node), which ? "Mode7" : "Mode31", error);
  });
}

void getNode(benchmark::State& state) {
  const Peer peer;
  for (auto _ : state) benchmark::DoNotOptimize(peer.node("Width"));
}

constexpr char kWidth[] = "Width";
constexpr char kStatus[] = "Status";
constexpr char kExposure[] = "Exposure";
constexpr char kTemperature[] = "Temperature";

}  // namespace

BENCHMARK(getInteger<kWidth>)->Name("get integer, cached");
BENCHMARK(getBoolean)->Name("get boolean, cached");
BENCHMARK(getFloat<kExposure>)->Name("get float, cached");
BENCHMARK(getInteger<kStatus>)->Name("get register, uncached");
BENCHMARK(getFloat<kTemperature>)->Name("get float through a converter, uncached");
BENCHMARK(getEnumerationText)->Name("get enumeration as text, cached");
BENCHMARK(setInteger)->Name("set integer");
BENCHMARK(setFloatThroughConverter)->Name("set float through a converter");
BENCHMARK(setEnumerationText)->Name("set enumeration by text");
BENCHMARK(getNode)->Name("get a known node and release it");
BENCHMARK_MAIN();

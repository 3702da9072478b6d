// What a node map stream costs: pushing snapshots, and handing out the document.
//
// The nodes hold their values themselves, so no device is asked. A dump is the size query and the fetch, as callers do
// it; its figure is the rate in bytes of JSON text. The argument is the number of records in the document.
#include <OxBase/OxBase.h>
#include <OxGenApi/OxGenApi.h>
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <string>
#include <vector>

namespace {

constexpr int kFeatures = 100;

void require(uint32_t result) {
  if (result != OXGENAPI_OK) std::abort();
}

std::string description() {
  std::string text =
      "<RegisterDescription ModelName='M' VendorName='V' StandardNameSpace='None' SchemaMajorVersion='1' "
      "SchemaMinorVersion='1' SchemaSubMinorVersion='0' MajorVersion='1' MinorVersion='0' SubMinorVersion='0' "
      "ProductGuid='P' VersionGuid='V' xmlns='http://www.genicam.org/GenApi/Version_1_1'>";
  for (int i = 0; i < kFeatures; ++i) {
    const std::string number = std::to_string(i);
    text += "<Integer Name='Feature" + number + "'><DisplayName>Feature \xc2\xb5" + number + "</DisplayName><Value>" +
            number + "00</Value></Integer>";
  }
  return text + "</RegisterDescription>";
}

class Bench {
 public:
  Bench() {
    require(CreateNodeMap(map_));
    require(NMLoadXMLString(map_, description().c_str()));
    for (int i = 0; i < kFeatures; ++i) {
      NODE node = nullptr;
      require(NMGetNode(map_, ("Feature" + std::to_string(i)).c_str(), node));
      nodes_.push_back(node);
    }
  }
  ~Bench() {
    drop();
    for (NODE node : nodes_) OxIfaceContainerReleaseUseCounter(node);
    OxIfaceContainerReleaseUseCounter(map_);
  }
  Bench(const Bench&) = delete;
  Bench& operator=(const Bench&) = delete;

  // A new document of so many records.
  void fill(int64_t records) {
    drop();
    require(NMCreateStream(map_, ST_Json, &stream_));
    for (int64_t i = 0; i < records; ++i) require(NMStreamPush(stream_, nodes_[static_cast<size_t>(i % kFeatures)]));
  }
  NODEMAPSTREAM stream() const { return stream_; }

 private:
  void drop() {
    if (stream_ != nullptr) OxIfaceContainerReleaseUseCounter(stream_);
    stream_ = nullptr;
  }
  NODEMAP map_ = nullptr;
  NODEMAPSTREAM stream_ = nullptr;
  std::vector<NODE> nodes_;
};

size_t bytesOf(NODEMAPSTREAM stream) {
  size_t size = 0;
  require(NMStreamDump(stream, nullptr, &size));
  return size - 1;
}

// Grows linearly if the time per record stays.
void push(benchmark::State& state) {
  Bench bench;
  for (auto _ : state) bench.fill(state.range(0));
  state.counters["ns_per_record"] = benchmark::Counter(1e-9 * static_cast<double>(state.iterations() * state.range(0)),
                                                       benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

template <class Character, class Dump>
void dump(benchmark::State& state, Dump&& fetch) {
  Bench bench;
  bench.fill(state.range(0));
  std::vector<Character> text(bytesOf(bench.stream()) + 1);
  for (auto _ : state) {
    size_t size = 0;
    require(fetch(bench.stream(), nullptr, &size));
    require(fetch(bench.stream(), text.data(), &size));
    benchmark::DoNotOptimize(text.data());
    benchmark::ClobberMemory();
  }
  state.counters["figure"] =
      benchmark::Counter(1e-6 * static_cast<double>(text.size() - 1), benchmark::Counter::kIsIterationInvariantRate);
  state.SetLabel("MB/s");
}

void dumpNarrow(benchmark::State& state) { dump<char>(state, NMStreamDump); }

void dumpWide(benchmark::State& state) { dump<wchar_t>(state, NMStreamDumpW); }

}  // namespace

BENCHMARK(push)->Arg(1'000)->Arg(10'000)->Arg(100'000)->ArgName("records")->Name("push snapshots");
BENCHMARK(dumpNarrow)->Arg(10'000)->Arg(100'000)->ArgName("records")->Name("dump snapshots");
BENCHMARK(dumpWide)->Arg(10'000)->ArgName("records")->Name("dump snapshots, wide");
BENCHMARK_MAIN();

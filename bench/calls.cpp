// What one call of the flat interface costs, beside the floor: one uncontended atomic add and subtract.
//
// Everything runs over a byte array as device. Counters: port reads and writes, and heap allocations, per call. The
// argument of each benchmark is the number of other threads alive, because a process with one thread takes cheaper
// locks.
#include <OxBase/OxBase.h>
#include <OxGenApi/OxGenApi.h>
#include <benchmark/benchmark.h>

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <new>
#include <semaphore>
#include <string>
#include <thread>

namespace {
std::atomic<long> allocations{0};
}

// Not inlined: the compiler would take the pair for mismatched.
[[gnu::noinline]] void* operator new(size_t bytes) {
  allocations.fetch_add(1, std::memory_order_relaxed);
  if (void* memory = std::malloc(bytes)) return memory;
  throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete(void* memory) noexcept {
  std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, size_t) noexcept {
  std::free(memory);
}

namespace {

struct Device {
  uint8_t bytes[256] = {};
  long reads = 0;
  long writes = 0;
};

int readDevice(void* to, int64_t address, int64_t length, void* user) {
  auto& device = *static_cast<Device*>(user);
  ++device.reads;
  std::memcpy(to, device.bytes + address, static_cast<size_t>(length));
  return 0;
}

int writeDevice(const void* from, int64_t address, int64_t length, void* user) {
  auto& device = *static_cast<Device*>(user);
  ++device.writes;
  std::memcpy(device.bytes + address, from, static_cast<size_t>(length));
  return 0;
}

std::string integerRegister(const std::string& name, int address, const char* more = "") {
  return "<IntReg Name='" + name + "'><Address>" + std::to_string(address) +
         "</Address><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>" + more +
         "<Endianess>BigEndian</Endianess></IntReg>";
}

std::string converter(const std::string& name, const std::string& source) {
  return "<Float Name='" + name + "'><pValue>" + name + "Converter</pValue></Float><Converter Name='" + name +
         "Converter'><FormulaTo>FROM * 1000</FormulaTo><FormulaFrom>TO / 1000</FormulaFrom><pValue>" + source +
         "</pValue></Converter>";
}

std::string description() {
  std::string text =
      "<RegisterDescription ModelName='M' VendorName='V' StandardNameSpace='None' SchemaMajorVersion='1' "
      "SchemaMinorVersion='1' SchemaSubMinorVersion='0' MajorVersion='1' MinorVersion='0' SubMinorVersion='0' "
      "ProductGuid='P' VersionGuid='V' xmlns='http://www.genicam.org/GenApi/Version_1_1'><Port Name='Device'/>"
      "<Integer Name='Width'><pValue>WidthReg</pValue><Min>0</Min><Max>1000000</Max></Integer>";
  text += integerRegister("WidthReg", 16);
  text += integerRegister("Status", 32, "<Cachable>NoCache</Cachable>");
  text += integerRegister("ExposureReg", 48) + converter("Exposure", "ExposureReg");
  text += integerRegister("TemperatureReg", 52, "<Cachable>NoCache</Cachable>") +
          converter("Temperature", "TemperatureReg");
  text += integerRegister("FlagsReg", 68) + "<Boolean Name='Flag'><pValue>FlagsReg</pValue></Boolean>";
  text += "<Enumeration Name='Mode'>";
  for (int i = 0; i < 40; ++i) {
    const std::string number = std::to_string(i);
    text += "<EnumEntry Name='Mode" + number + "'><Value>" + number + "</Value></EnumEntry>";
  }
  text += "<pValue>ModeReg</pValue></Enumeration>" + integerRegister("ModeReg", 64);
  return text + "</RegisterDescription>";
}

void require(uint32_t result) {
  if (result != OXGENAPI_OK) std::abort();
}

// A node map over the device, and some threads that only exist.
class Bench {
 public:
  explicit Bench(int64_t threads) {
    for (int64_t i = 0; i < threads; ++i) threads_.emplace_back([this] { stop_.acquire(); });
    require(CreateNodeMap(map));
    require(NMLoadXMLString(map, description().c_str()));
    require(NMConnectPort(map, readDevice, writeDevice, nullptr, &device));
  }
  ~Bench() {
    OxIfaceContainerReleaseUseCounter(map);
    stop_.release(static_cast<std::ptrdiff_t>(threads_.size()));
    for (auto& each : threads_) each.join();
  }
  NODE node(const char* name) {
    NODE found = nullptr;
    require(NMGetNode(map, name, found));
    return found;
  }

  Device device;
  NODEMAP map = nullptr;

 private:
  std::counting_semaphore<> stop_{0};
  std::vector<std::thread> threads_;
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

void threads(benchmark::internal::Benchmark* benchmark) {
  benchmark->Arg(0)->Arg(1)->ArgName("threads");
}

}  // namespace

BENCHMARK(atomicPair);
BENCHMARK(getInteger<kWidth>)->Apply(threads)->Name("get integer, cached");
BENCHMARK(getBoolean)->Apply(threads)->Name("get boolean, cached");
BENCHMARK(getFloat<kExposure>)->Apply(threads)->Name("get float, cached");
BENCHMARK(getInteger<kStatus>)->Apply(threads)->Name("get register, uncached");
BENCHMARK(getFloat<kTemperature>)->Apply(threads)->Name("get float through a converter, uncached");
BENCHMARK(getEnumerationText)->Apply(threads)->Name("get enumeration as text, cached");
BENCHMARK(setInteger)->Apply(threads)->Name("set integer");
BENCHMARK(setFloatThroughConverter)->Apply(threads)->Name("set float through a converter");
BENCHMARK(setEnumerationText)->Apply(threads)->Name("set enumeration by text");
BENCHMARK(getNodeAndRelease)->Apply(threads)->Name("get a known node and release it");
BENCHMARK(infoAccessMode)->Apply(threads)->Name("ask for the access mode");
BENCHMARK(listEntry)->Apply(threads)->Name("list one entry");
BENCHMARK_MAIN();

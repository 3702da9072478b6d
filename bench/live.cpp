// Rates of live data: frames with chunks and event messages per second, and heap allocations for each.
//
// Frames come from the simulated camera with all ten chunks on; two of them take turns, so that every read finds bytes
// that it did not see before. Events go to a port with three registers, beside 10 or 10,000 other
// event nodes: the rate must not depend on them. Everything goes through the flat interface.
#include <OxBase/OxBase.h>
#include <OxGenApi/OxGenApi.h>
#include <OxSimulation/ChunkLayout.h>
#include <OxSimulation/SimulatedCamera.h>
#include <benchmark/benchmark.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "CountedAllocations.h"

namespace {

using ox::simulation::SimulatedCamera;

void require(uint32_t result) {
  if (result != OXGENAPI_OK) std::abort();
}

// A node map with the nodes it was asked for; all of it is released at the end.
class Map {
 public:
  explicit Map(const std::string& description) {
    require(CreateNodeMap(handle));
    require(NMLoadXMLString(handle, description.c_str()));
  }
  ~Map() {
    for (NODE each : nodes_) OxIfaceContainerReleaseUseCounter(each);
    OxIfaceContainerReleaseUseCounter(handle);
  }
  Map(const Map&) = delete;
  Map& operator=(const Map&) = delete;
  NODE node(const char* name) {
    NODE found = nullptr;
    require(NMGetNode(handle, name, found));
    nodes_.push_back(found);
    return found;
  }
  void set(const char* name, const char* value) { require(NSetAsString(node(name), value)); }

  NODEMAP handle = nullptr;

 private:
  std::vector<NODE> nodes_;
};

// Runs the rounds, the first few unmeasured: they fill what later ones reuse.
template <class Round>
void measure(benchmark::State& state, Round&& round) {
  for (int i = 0; i < 4; ++i) round();
  const long before = allocations;
  for (auto _ : state) round();
  state.counters["allocs"] = static_cast<double>(allocations - before) / static_cast<double>(state.iterations());
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations()));
}

class Frames {
 public:
  static constexpr const char* kChunks[] = {"Image",         "Timestamp",    "FrameCounter", "ExposureTime", "Gain",
                                            "LineStatusAll", "CounterValue", "PixelFormat",  "StreamLabel",  "Size"};

  Frames() : map_(std::string(SimulatedCamera::description())) {
    require(NMConnectPort(map_.handle, read, write, nullptr, &camera_));
    map_.set("ChunkModeActive", "true");
    for (const char* chunk : kChunks) {
      map_.set("ChunkSelector", chunk);
      bool on = false;
      require(NGetAsBoolean(map_.node("ChunkEnable"), &on));
      if (!on) map_.set("ChunkEnable", "true");
    }
    map_.set("AcquisitionStart", "1");
    for (Buffer& buffer : buffers_) {
      buffer.frame = camera_.acquireFrame();
      for (const auto& chunk : ox::simulation::ChunkLayout(buffer.frame.data))
        buffer.chunks.push_back({chunk.id, buffer.frame.data.data(), chunk.offset, chunk.length});
      if (buffer.chunks.size() != std::size(kChunks)) std::abort();
    }
    for (const char* name : {"ChunkTimestamp", "ChunkFrameCounter", "ChunkLineStatusAll", "ChunkCounterValue",
                             "ChunkPixelFormat", "ChunkWidth", "ChunkHeight", "ChunkImageLength"})
      integers_.push_back(map_.node(name));
    for (const char* name : {"ChunkExposureTime", "ChunkGain"}) floats_.push_back(map_.node(name));
  }

  void next() { buffer_ = &buffers_[buffer_ == &buffers_[0] ? 1 : 0]; }
  void attach() { require(NMAttachChunkList(map_.handle, buffer_->chunks.data(), buffer_->chunks.size())); }
  void rebase() { require(NMUpdateChunks(map_.handle, buffer_->frame.data.data())); }
  void readTen() {
    for (NODE node : integers_) {
      int64_t value = 0;
      require(NGetAsInteger(node, &value));
      benchmark::DoNotOptimize(value);
    }
    for (NODE node : floats_) {
      double value = 0;
      require(NGetAsFloat(node, &value));
      benchmark::DoNotOptimize(value);
    }
  }

 private:
  struct Buffer {
    ox::simulation::Frame frame;
    std::vector<TChunkData> chunks;
  };
  static int read(void* to, int64_t address, int64_t length, void* camera) {
    return static_cast<SimulatedCamera*>(camera)->read(to, address, length);
  }
  static int write(const void* from, int64_t address, int64_t length, void* camera) {
    return static_cast<SimulatedCamera*>(camera)->write(from, address, length);
  }

  SimulatedCamera camera_;
  Map map_;
  std::array<Buffer, 2> buffers_;
  Buffer* buffer_ = buffers_.data();
  std::vector<NODE> integers_, floats_;
};

void attachAndRead(benchmark::State& state) {
  Frames frames;
  measure(state, [&] {
    frames.next();
    frames.attach();
    frames.readTen();
  });
}

void attachOnly(benchmark::State& state) {
  Frames frames;
  measure(state, [&] {
    frames.next();
    frames.attach();
  });
}

void rebaseAndRead(benchmark::State& state) {
  Frames frames;
  frames.attach();
  measure(state, [&] {
    frames.next();
    frames.rebase();
    frames.readTen();
  });
}

std::string eventDescription(int64_t others) {
  std::string text =
      "<RegisterDescription xmlns='http://www.genicam.org/GenApi/Version_1_1'><Port Name='Device'/>"
      "<Port Name='Exposure'><EventID>9001</EventID></Port>";
  const auto reg = [&text](const std::string& name, const std::string& port, int address) {
    text += "<Integer Name='" + name + "'><pValue>" + name + "Reg</pValue></Integer><IntReg Name='" + name +
            "Reg'><Address>" + std::to_string(address) +
            "</Address><Length>8</Length><AccessMode>RO</AccessMode><pPort>" + port +
            "</pPort><Endianess>BigEndian</Endianess></IntReg>";
  };
  reg("Timestamp", "Exposure", 0);
  reg("FrameID", "Exposure", 8);
  reg("Lines", "Exposure", 16);
  for (int64_t i = 0; i < others; ++i) {
    const std::string number = std::to_string(i);
    text += "<Port Name='Port" + number + "'><EventID>" + std::to_string(10000 + i) + "</EventID></Port>";
    reg("Other" + number, "Port" + number, 0);
  }
  return text + "</RegisterDescription>";
}

// Three features hear of each message through update callbacks; `readsBack` also fetches their values.
template <bool readsBack, int others>
void deliver(benchmark::State& state) {
  Map map(eventDescription(others));
  long called = 0;
  const std::array<NODE, 3> features{map.node("Timestamp"), map.node("FrameID"), map.node("Lines")};
  for (NODE each : features) {
    TCallbackHandle handle = 0;
    require(NRegisterUpdate(
        each, [](NODE, void* count) { ++*static_cast<long*>(count); }, &called, &handle));
  }
  std::array<uint8_t, 24> payload{};
  const TEventData message{0x9001, payload.data(), payload.size()};
  measure(state, [&] {
    ++payload[7];
    require(NMDeliverEvent(map.handle, &message));
    if constexpr (readsBack) {
      for (NODE each : features) {
        int64_t value = 0;
        require(NGetAsInteger(each, &value));
        benchmark::DoNotOptimize(value);
      }
    }
  });
  state.counters["calls"] = static_cast<double>(called) / static_cast<double>(state.iterations() + 4);
}

}  // namespace

BENCHMARK(attachAndRead)->Name("attach 10 chunks, read 10 features");
BENCHMARK(attachOnly)->Name("attach 10 chunks");
BENCHMARK(rebaseAndRead)->Name("move 10 chunks to the next buffer, read 10 features");
BENCHMARK(deliver<false, 10>)->Name("deliver an event to 3 features");
BENCHMARK(deliver<false, 10000>)->Name("the same among 10,000 other event nodes");
BENCHMARK(deliver<true, 10>)->Name("deliver an event, read 3 features");
BENCHMARK_MAIN();

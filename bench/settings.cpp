// Saving settings: time per line, and how the whole compares with the bare ToString calls in it.
//
// Measured are tables behind an index selector, whose cost must grow with their size alone, and every file of the
// folder in OXGENAPI_DESCRIPTIONS over patterned memory. For the comparison the same lines are visited once more in the
// engine: selectors are set aside the clock, each feature's ToString is timed. Counters: lines, ns per line, total /
// bare as the ratio, the time of a save that also meets the features that are not available (each is reported); "most",
// how often the first save read one place that may be remembered between two writes (twice where selectors change that
// have no register); port writes for each change of a selector.
#include <OxBase/OxBase.h>
#include <OxGenApi/OxGenApi.h>
#include <OxSimulation/MemoryDevice.h>
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "GenApi/GenApi.h"
#include "GenApi/IDestroy.h"
#include "UncacheablePlaces.h"

namespace {

using namespace GENAPI_NAMESPACE;
using ox::simulation::MemoryDevice;

void require(bool holds) {
  if (!holds) std::abort();
}

// Time that this thread had a processor, in nanoseconds.
int64_t now() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

// What a save asks of the port.
struct Traffic {
  std::set<Place> uncacheable;
  std::map<Place, int64_t> reads;  // of places that may be remembered, since the last write
  int64_t most = 0;
  int64_t writes = 0;
};

class Saver {
 public:
  explicit Saver(const std::string& xml) {
    require(CreateNodeMap(map_) == 0 && NMLoadXMLString(map_, xml.c_str()) == 0);
    NMConnectPort(map_, read, write, nullptr, this);  // a description of a transport layer has no such port
  }
  ~Saver() { OxIfaceContainerReleaseUseCounter(map_); }
  Saver(const Saver&) = delete;
  Saver& operator=(const Saver&) = delete;

  // All that is streamable, or the features listed with "|" between them.
  std::string save(const std::string& names = "") {
    accesses_ = 0;
    size_t size = buffer_.size();
    require((names.empty() ? NMSaveSetString(map_, buffer_.data(), &size, nullptr, nullptr)
                           : NMSaveSetStringEx(map_, buffer_.data(), &size, names.c_str(), nullptr, nullptr)) == 0);
    if (size < buffer_.size()) return buffer_.substr(0, size - 1);
    buffer_.resize(2 * size);
    return save(names);
  }
  // A limit that comes from patterned memory may give a selector millions of values; the port ends such a save.
  bool isEndless() const { return accesses_ > kMostAccesses; }

  void count(Traffic& traffic, const std::string& names) {
    traffic_ = &traffic;
    save(names);
    traffic_ = nullptr;
  }

 private:
  static constexpr int64_t kMostAccesses = 100'000;
  static int read(void* to, int64_t address, int64_t length, void* self) {
    auto& saver = *static_cast<Saver*>(self);
    if (++saver.accesses_ > kMostAccesses) return -1;
    if (Traffic* traffic = saver.traffic_) {
      if (!traffic->uncacheable.contains({address, length}))
        traffic->most = std::max(traffic->most, ++traffic->reads[{address, length}]);
    }
    return saver.memory_.read(to, address, length);
  }
  static int write(const void* from, int64_t address, int64_t length, void* self) {
    auto& saver = *static_cast<Saver*>(self);
    if (Traffic* traffic = saver.traffic_) {
      ++traffic->writes;
      traffic->reads.clear();
    }
    return saver.memory_.write(from, address, length);
  }
  MemoryDevice memory_{MemoryDevice::Fill::kPattern};
  Traffic* traffic_ = nullptr;
  int64_t accesses_ = 0;
  NODEMAP map_ = nullptr;
  std::string buffer_ = std::string(size_t{1} << 20, '\0');  // kept: clearing it costs more than most saves
};

// The lines of a saved text, visited in the engine over memory of its own.
class BareCalls final : public CPortImpl {
 public:
  BareCalls(const std::string& xml, std::string_view text) {
    map_ = CNodeMapFactory(ContentType_Auto, xml.data(), xml.size()).CreateNodeMap();
    map_->Connect(this, "Device");
    while (!text.empty()) {
      const size_t end = text.find('\n');
      addLine(text.substr(0, end));
      text.remove_prefix(end + 1);
    }
  }
  ~BareCalls() override { dynamic_cast<IDestroy*>(map_)->Destroy(); }

  // Nanoseconds spent in ToString of the features, less what reading the clock costs.
  int64_t run() {
    changes_ = 0;
    int64_t sum = 0;
    const int64_t before = now();
    for (size_t i = 0; i < lines_.size(); ++i) benchmark::DoNotOptimize(now());
    const int64_t clock = now() - before;
    for (const Line& line : lines_) {
      for (const auto& [selector, value] : line.selectors) {
        if (selector->ToString() == value) continue;
        selector->FromString(value);
        ++changes_;
      }
      const int64_t start = now();
      benchmark::DoNotOptimize(line.feature->ToString(false, false));
      sum += now() - start;
    }
    return std::max<int64_t>(sum - clock, 1);
  }

  // How often the last run gave a selector another value.
  double changes() const { return changes_; }

  EAccessMode GetAccessMode() const override { return RW; }
  void Read(void* to, int64_t address, int64_t length) override { require(memory_.read(to, address, length) >= 0); }
  void Write(const void* from, int64_t address, int64_t length) override {
    require(memory_.write(from, address, length) >= 0);
  }

 private:
  struct Line {
    IValue* feature;
    std::vector<std::pair<IValue*, GENICAM_NAMESPACE::gcstring>> selectors;
  };
  IValue* value(std::string_view name) {
    return dynamic_cast<IValue*>(map_->GetNode(GENICAM_NAMESPACE::gcstring(name)));
  }
  void addLine(std::string_view text) {
    const std::string_view name = text.substr(0, text.find(" = \""));
    const size_t open = name.find('[');
    Line line{value(name.substr(0, open)), {}};
    if (!line.feature) return;  // the rest of a value with a line feed
    for (size_t at = open; at != std::string_view::npos && at + 1 < name.size();) {
      const size_t bracket = name.find('(', at);
      const size_t end = name.find(')', bracket);
      line.selectors.emplace_back(value(name.substr(at + 1, bracket - at - 1)),
                                  GENICAM_NAMESPACE::gcstring(name.substr(bracket + 1, end - bracket - 1)));
      at = end + 1;
    }
    lines_.push_back(std::move(line));
  }

  MemoryDevice memory_{MemoryDevice::Fill::kPattern};
  INodeMap* map_ = nullptr;
  std::vector<Line> lines_;
  double changes_ = 0;
};

// The features that have a line, in order.
std::string featuresOf(std::string_view text) {
  std::string names;
  std::string_view last;
  while (!text.empty()) {
    const std::string_view line = text.substr(0, text.find('\n'));
    text.remove_prefix(line.size() + 1);
    const std::string_view name = line.substr(0, line.find_first_of("[ "));
    if (line.find(" = \"") == std::string_view::npos || name == last) continue;
    if (!names.empty()) names += '|';
    names += last = name;
  }
  return names;
}

void saveAll(benchmark::State& state, const std::string& xml) {
  Saver saver(xml);
  std::string text = saver.save();
  if (saver.isEndless()) return state.SkipWithError("a selector has too many values over patterned memory");
  const std::string names = featuresOf(text);
  if (names.empty()) return state.SkipWithError("no streamable feature is available");
  text = saver.save(names);
  const auto lines = std::count(text.begin(), text.end(), '\n');
  BareCalls bare(xml, text);
  bare.run();
  std::vector<double> ratios;
  int64_t least = std::numeric_limits<int64_t>::max();
  int64_t leastOfAll = least;
  for (auto _ : state) {
    int64_t start = now();
    saver.save(names);
    const int64_t total = now() - start;
    least = std::min(least, total);
    ratios.push_back(static_cast<double>(total) / static_cast<double>(bare.run()));
    start = now();
    saver.save();
    leastOfAll = std::min(leastOfAll, now() - start);
    state.SetIterationTime(static_cast<double>(total) / 1e9);
  }
  std::sort(ratios.begin(), ratios.end());
  state.counters["lines"] = static_cast<double>(lines);
  state.counters["ns_per_line"] = static_cast<double>(least) / static_cast<double>(lines);
  state.counters["ratio"] = ratios[ratios.size() / 2];
  Traffic traffic;
  traffic.uncacheable = uncacheablePlaces(xml, bare);
  Saver(xml).count(traffic, names);
  state.counters["most"] = static_cast<double>(traffic.most);
  state.counters["writes_per_change"] = static_cast<double>(traffic.writes) / std::max(bare.changes(), 1.0);
  state.counters["all_us"] = static_cast<double>(leastOfAll) / 1e3;
}

std::string table(int entries) {
  const std::string last = std::to_string(entries - 1);
  return "<RegisterDescription xmlns='http://www.genicam.org/GenApi/Version_1_1'><Port Name='Device'/>"
         "<IntReg Name='IndexReg'><Address>0</Address><Length>4</Length><AccessMode>RW</AccessMode>"
         "<pPort>Device</pPort></IntReg><Integer Name='LUTIndex'><pValue>IndexReg</pValue><Min>0</Min><Max>" +
         last +
         "</Max><pSelected>LUTValue</pSelected></Integer><Integer Name='LUTValue'><Streamable>Yes</Streamable>"
         "<pValue>ValueReg</pValue></Integer><IntReg Name='ValueReg'><Address>0x1000</Address><pIndex Offset='4'>"
         "LUTIndex</pIndex><Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort></IntReg>"
         "</RegisterDescription>";
}

void add(const std::string& name, std::string xml) {
  benchmark::RegisterBenchmark(("save settings, " + name).c_str(),
                               [xml = std::move(xml)](benchmark::State& state) { saveAll(state, xml); })
      ->UseManualTime()
      ->Unit(benchmark::kMicrosecond);
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  for (const int entries : {1024, 4096}) add("table of " + std::to_string(entries), table(entries));
  if (const char* folder = std::getenv("OXGENAPI_DESCRIPTIONS")) {
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
      if (entry.path().extension() == ".xml") files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    for (const auto& path : files) {
      std::ifstream file(path, std::ios::binary);
      add(path.filename().string(), {std::istreambuf_iterator<char>(file), {}});
    }
  }
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
}

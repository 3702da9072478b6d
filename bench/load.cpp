// What it costs to load a description, compared in one run with parsing the same bytes and nothing else.
//
// A generated description is measured, and every file of the folder in OXGENAPI_DESCRIPTIONS. Counters: medians in
// microseconds of the bare parser, of a first load (nothing known of the text), of a load of a text in use; and first
// load / bare parser as the ratio. Both start without free memory at hand, as a first load does; warm_ratio is the same
// where the heap still has the pages of the round before, which favours the parser: most of its time is fresh pages.
#include <benchmark/benchmark.h>
#include <malloc.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <pugixml.hpp>
#include <string>
#include <vector>

#include "description/Description.h"
#include "description/DescriptionLoader.h"

namespace {

// Time that this thread had a processor, in microseconds: other load on the machine counts as little as possible.
double now() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) * 1e6 + static_cast<double>(time.tv_nsec) / 1e3;
}

double median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

// The loader's own settings, so that the comparison is about what it adds.
constexpr unsigned kParseFlags = pugi::parse_escapes | pugi::parse_cdata | pugi::parse_eol |
                                 pugi::parse_wconv_attribute | pugi::parse_ws_pcdata_single | pugi::parse_embed_pcdata |
                                 pugi::parse_doctype;

double parseBare(const std::string& text) {
  const double start = now();
  {
    const std::unique_ptr<char[]> copy(new char[text.size()]);
    std::memcpy(copy.get(), text.data(), text.size());
    pugi::xml_document document;
    const auto result = document.load_buffer_inplace(copy.get(), text.size(), kParseFlags, pugi::encoding_utf8);
    if (!result) std::abort();
    benchmark::DoNotOptimize(document.first_child());
  }
  return now() - start;
}

// The time for a load and for giving up what it made, as parseBare gives up its document.
double loadFirst(const std::string& text) {
  const double start = now();
  GenApi_3_4_SI::loadDescriptionText(text, GenApi_3_4_SI::ContentType_Xml);
  return now() - start;
}

double loadKnown(const std::string& text) {
  const double start = now();
  GenApi_3_4_SI::loadDescriptionText(text, GenApi_3_4_SI::ContentType_Xml);
  return now() - start;
}

struct Comparison {
  std::vector<double> bare, first;
  double ratio() const { return median(first) / median(bare); }

  void measure(const std::string& text, bool fresh) {
    if (fresh) malloc_trim(0);
    bare.push_back(parseBare(text));
    if (fresh) malloc_trim(0);
    first.push_back(loadFirst(text));
    GenApi_3_4_SI::clearDescriptionCache();
  }
};

void compareLoads(benchmark::State& state, const std::string& text) {
  Comparison fresh, warm;
  std::vector<double> known;
  for (auto _ : state) {
    fresh.measure(text, true);
    state.SetIterationTime(fresh.first.back() / 1e6);
  }
  const size_t rounds = fresh.first.size();
  for (size_t i = 0; i < rounds; ++i) warm.measure(text, false);
  const auto inUse = GenApi_3_4_SI::loadDescriptionText(text, GenApi_3_4_SI::ContentType_Xml);
  for (size_t i = 0; i < rounds; ++i) known.push_back(loadKnown(text));
  state.counters["bare_us"] = median(fresh.bare);
  state.counters["first_us"] = median(fresh.first);
  state.counters["known_us"] = median(known);
  state.counters["ratio"] = fresh.ratio();
  state.counters["warm_ratio"] = warm.ratio();
  state.counters["nodes"] = static_cast<double>(inUse.description->nodeCount());
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}

std::string generatedDescription() {
  std::string text =
      "<RegisterDescription xmlns='http://www.genicam.org/GenApi/Version_1_1'>\n<Port Name='Device'/>\n"
      "<Category Name='Root'>";
  constexpr int kFeatures = 2000;
  for (int i = 0; i < kFeatures; ++i) text += "<pFeature>Feature" + std::to_string(i) + "</pFeature>\n";
  text += "</Category>\n";
  for (int i = 0; i < kFeatures; ++i) {
    const std::string number = std::to_string(i);
    text += "<Integer Name='Feature" + number + "'>\n  <ToolTip>What feature " + number + " does.</ToolTip>\n" +
            "  <Visibility>Expert</Visibility>\n  <pValue>Register" + number + "</pValue>\n  <Min>0</Min>\n" +
            "  <Max>100</Max>\n</Integer>\n<IntReg Name='Register" + number + "'>\n  <Address>0x" +
            std::to_string(1000 + 4 * i) + "</Address>\n  <Length>4</Length>\n  <AccessMode>RW</AccessMode>\n" +
            "  <pPort>Device</pPort>\n  <Sign>Unsigned</Sign>\n  <Endianess>BigEndian</Endianess>\n</IntReg>\n";
  }
  return text + "</RegisterDescription>\n";
}

void add(const std::string& name, std::string text) {
  benchmark::RegisterBenchmark(("load/" + name).c_str(),
                               [text = std::move(text)](benchmark::State& state) { compareLoads(state, text); })
      ->UseManualTime()
      ->Unit(benchmark::kMicrosecond);
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  add("generated", generatedDescription());
  if (const char* folder = std::getenv("OXGENAPI_DESCRIPTIONS")) {
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
      if (entry.path().extension() == ".xml") files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    for (const auto& file : files) {
      std::ifstream stream(file, std::ios::binary);
      add(file.filename().string(), {std::istreambuf_iterator<char>(stream), {}});
    }
  }
  benchmark::RunSpecifiedBenchmarks();
}

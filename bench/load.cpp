// What it costs to load a description through the flat interface, compared in one run with parsing the same bytes and
// nothing else, and for a text in use with hashing and comparing it.
//
// "first load": nothing is known of the text, and no free memory is at hand, as in a process that begins. "on a warm
// heap": the pages of the round before are still there, which favours the parser, most of whose time is fresh pages.
#include <OxBase/OxBase.h>
#include <OxGenApi/OxGenApi.h>
#include <benchmark/benchmark.h>
#include <malloc.h>

// As the loader does.
#define XXH_INLINE_ALL
#include <xxhash.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <memory>
#include <pugixml.hpp>
#include <string>
#include <vector>

#include "Descriptions.h"

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

void require(bool done) {
  if (!done) std::abort();
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
    require(document.load_buffer_inplace(copy.get(), text.size(), kParseFlags, pugi::encoding_utf8));
    benchmark::DoNotOptimize(document.first_child());
  }
  return now() - start;
}

NODEMAP load(const std::string& text) {
  NODEMAP map = nullptr;
  require(CreateNodeMap(map) == OXGENAPI_OK);
  require(NMLoadXMLString(map, text.c_str()) == OXGENAPI_OK);
  return map;
}

// A node map from nothing to its end, as parseBare gives up its document.
double timeOfLoad(const std::string& text) {
  const double start = now();
  OxIfaceContainerReleaseUseCounter(load(text));
  return now() - start;
}

double hashAndCompare(const std::string& text, const std::string& copy) {
  const double start = now();
  benchmark::DoNotOptimize(XXH3_64bits(text.data(), text.size()));
  benchmark::DoNotOptimize(std::memcmp(text.data(), copy.data(), text.size()));
  return now() - start;
}

// Runs the work and its floor in turn and reports the medians; `prepare` comes before each.
template <class Prepare, class Floor, class Work>
void compare(benchmark::State& state, Prepare&& prepare, Floor&& floor, Work&& work) {
  std::vector<double> floors, figures;
  for (auto _ : state) {
    prepare();
    floors.push_back(floor());
    prepare();
    figures.push_back(work());
    state.SetIterationTime(figures.back() / 1e6);
  }
  state.counters["floor"] = median(floors);
  state.counters["figure"] = median(figures);
  state.SetLabel("us");
}

void firstLoad(benchmark::State& state, const std::string& text) {
  compare(
      state, [] { malloc_trim(0); }, [&] { return parseBare(text); }, [&] { return timeOfLoad(text); });
}

void firstLoadOnWarmHeap(benchmark::State& state, const std::string& text) {
  compare(
      state, [] {}, [&] { return parseBare(text); }, [&] { return timeOfLoad(text); });
}

void secondNodeMap(benchmark::State& state, const std::string& text) {
  const NODEMAP inUse = load(text);
  const std::string copy(text);
  compare(
      state, [] {}, [&] { return hashAndCompare(text, copy); }, [&] { return timeOfLoad(text); });
  OxIfaceContainerReleaseUseCounter(inUse);
}

void add(const char* work, const NamedDescription& description,
         void (*measure)(benchmark::State&, const std::string& text)) {
  benchmark::RegisterBenchmark((work + (", " + description.name)).c_str(), [measure, text = description.text](
                                                                               benchmark::State& state) {
    measure(state, text);
  })->UseManualTime();
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  const auto all = descriptions();
  for (const auto& each : all) add("first load", each, firstLoad);
  for (const auto& each : all) add("first load on a warm heap", each, firstLoadOnWarmHeap);
  for (const auto& each : all) add("second node map", each, secondNodeMap);
  benchmark::RunSpecifiedBenchmarks();
}

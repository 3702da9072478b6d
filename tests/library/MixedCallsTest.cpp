// Calls of all kinds, mixed by chance, from one thread and from many at once.
// OX_STRESS_SECONDS makes them long, OX_STRESS_SEED makes them others.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <thread>

#include "Interposed.h"
#include "calls/Caller.h"

namespace {

using calls::Caller;
using calls::Handle;
using calls::Kind;
using calls::Shared;
using calls::World;

int64_t fromEnvironment(const char* name, int64_t otherwise) {
  const char* value = std::getenv(name);
  return value == nullptr ? otherwise : std::atoll(value);
}

// Endless, the same for the same seed.
class Chance final : public calls::Bytes {
 public:
  explicit Chance(uint64_t seed) : state_(seed * 0x9E3779B97F4A7C15u + 1) {}
  bool empty() const override { return false; }
  uint8_t next() override {
    state_ ^= state_ << 13;
    state_ ^= state_ >> 7;
    state_ ^= state_ << 17;
    return static_cast<uint8_t>(state_ >> 32);
  }

 private:
  uint64_t state_;
};

// A node map that several threads use, with a proxy, a stream and some nodes.
class SharedMap {
 public:
  explicit SharedMap(World& world) {
    NODEMAP map{}, proxy{};
    NODEMAPSTREAM stream{};
    EXPECT_EQ(CreateNodeMap(map), 0u);
    EXPECT_EQ(NMLoadXMLString(map, calls::smallDescription().c_str()), 0u);
    EXPECT_EQ(NMConnectPort(map, &World::read, &World::write, nullptr, &world.memory), 0u);
    EXPECT_EQ(CreateNodeMapProxy(map, nullptr, nullptr, &proxy), 0u);
    EXPECT_EQ(NMCreateStream(map, ST_Json, &stream), 0u);
    add(map, Kind::kNodeMap);
    add(proxy, Kind::kNodeMap);
    add(stream, Kind::kStream);
    for (const char* name : {"Width", "Gain", "Mode", "Level", "Text", "Device", "Raw", "EventValue", "ChunkGain"}) {
      NODE node{};
      EXPECT_EQ(NMGetNode(map, name, node), 0u) << name;
      add(node, Kind::kNode);
    }
  }
  ~SharedMap() {
    for (const Handle& handle : shared.handles) OxIfaceContainerReleaseUseCounter(handle.value);
  }
  SharedMap(const SharedMap&) = delete;
  SharedMap& operator=(const SharedMap&) = delete;
  Shared shared;

 private:
  void add(OxHandle value, Kind kind) { shared.handles.push_back({value, kind, Shared::kGroup}); }
};

// Ends the program, saying where it stands, when no thread has come on for a while.
class Watchdog {
 public:
  static constexpr int kThreads = 8;
  static constexpr int kPatienceSeconds = 120;
  std::atomic<int64_t> steps[kThreads] = {};

  Watchdog() : thread_([this](const std::stop_token& stop) { watch(stop); }) {}

 private:
  void watch(const std::stop_token& stop) const {
    int64_t last = -1;
    for (int stuck = 0; !stop.stop_requested(); ++stuck) {
      int64_t sum = 0;
      for (const auto& count : steps) sum += count;
      if (sum != last) stuck = 0;
      last = sum;
      if (stuck / 10 >= kPatienceSeconds) {
        for (const auto& count : steps) std::fprintf(stderr, "%lld steps\n", static_cast<long long>(count.load()));
        std::fprintf(stderr, "no thread has come on for %d seconds\n", kPatienceSeconds);
        std::abort();
      }
      std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
  }
  std::jthread thread_;
};

TEST(MixedCalls, EightThreadsOnOneSharedAndManySeparateNodeMaps) {
  const auto start = std::chrono::steady_clock::now();
  const std::chrono::seconds wanted(fromEnvironment("OX_STRESS_SECONDS", 0));
  const auto seed = static_cast<uint64_t>(fromEnvironment("OX_STRESS_SEED", 1));
  const auto goesOn = [&] { return std::chrono::steady_clock::now() - start < wanted; };
  World world;
  std::atomic<int64_t> made{0};
  {
    SharedMap map(world);
    Watchdog watchdog;
    std::vector<std::jthread> threads;
    for (int self = 0; self < Watchdog::kThreads; ++self) {
      threads.emplace_back([&, self] {
        // Callers come and go, and with them node maps of their own.
        for (uint64_t round = 0; round == 0 || goesOn(); ++round) {
          Chance chance(seed + round * Watchdog::kThreads + static_cast<uint64_t>(self));
          Caller caller(chance, world, &map.shared);
          for (int i = 0; i < 2000; ++i) {
            caller.step();
            ++watchdog.steps[self];
          }
          made += caller.calls();
        }
      });
    }
    threads.clear();
  }
  EXPECT_GT(made, Watchdog::kThreads * 100);
  std::printf("%lld calls\n", static_cast<long long>(made.load()));
}

TEST(MixedCalls, AFailureSetsTheLastErrorOnceAndSendsOneRecord) {
  World world;
  Chance chance(23);
  Caller caller(chance, world);
  Caller::reports = &interposed::reports;
  for (int i = 0; i < 30'000; ++i) caller.step();
  Caller::reports = nullptr;
  EXPECT_GT(interposed::reports().records, 1000);
}

}  // namespace

// Many threads on one handle, and on handles that come and go. Meant to be run under the thread sanitizer too.
#include <gtest/gtest.h>

#include <barrier>
#include <thread>

#include "Probe.h"

namespace {

constexpr int kThreads = 4;

void onThreads(int count, const std::function<void(int)>& work) {
  std::vector<std::jthread> threads;
  for (int i = 0; i < count; ++i) threads.emplace_back(work, i);
}

TEST(HandleRace, NobodyHoldsADeadObjectAndItEndsOnce) {
  constexpr int kRounds = 1500;
  std::atomic<int> ends{0};
  std::atomic<int> heldDead{0};
  std::atomic<OxHandle> shared{nullptr};
  std::barrier start(kThreads), finish(kThreads);
  onThreads(kThreads, [&](int self) {
    for (int round = 0; round < kRounds; ++round) {
      if (self == 0) shared = makeProbe(ends).release();
      start.arrive_and_wait();
      const OxHandle handle = shared;
      if (self == 0) {
        OxIfaceContainerReleaseUseCounter(handle);
      } else {
        // Bounded, or the checkers keep the object alive for each other.
        for (int i = 0; i < 20 && OxIfaceContainerCheckedAddUseCounter(handle) >= 0; ++i) {
          void* object = nullptr;
          OxIfaceContainerQuery(handle, Probe::interfaceId(), &object);
          if (object == nullptr || static_cast<Probe*>(object)->alive != 1) ++heldDead;
          OxIfaceContainerReleaseUseCounter(handle);
        }
      }
      finish.arrive_and_wait();
      if (self == 0) {
        EXPECT_EQ(ends, round + 1);
      }
    }
  });
  EXPECT_EQ(heldDead, 0);
}

TEST(HandleRace, WeakReferencesRaceTheLastRelease) {
  constexpr int kRounds = 500;
  std::atomic<int> ends{0};
  for (int round = 0; round < kRounds; ++round) {
    ProbeRef strong = makeProbe(ends);
    const orxBase::weak_ref<Probe> weak(strong);
    {
      std::jthread other([copy = weak] {
        while (const ProbeRef locked = copy.lock()) EXPECT_EQ(locked->alive, 1);
      });
      strong.reset();
    }
    EXPECT_TRUE(weak.expired());
    EXPECT_EQ(ends, round + 1);
  }
}

TEST(HandleRace, StaleHandlesArePokedWhileBlocksAreReused) {
  constexpr int kObjects = 25000;  // more than wait for reuse, so blocks come back to life under the pokers
  std::atomic<int> ends{0};
  std::atomic<bool> done{false};
  std::vector<std::atomic<OxHandle>> known(512);
  onThreads(kThreads, [&](int self) {
    if (self < 2) {
      for (int i = 0; i < kObjects; ++i) {
        const ProbeRef probe = makeProbe(ends);
        known[(static_cast<size_t>(i) * 2 + static_cast<size_t>(self)) % known.size()] = probe.container();
      }
      done = true;
      return;
    }
    for (size_t i = 0; !done; ++i) {
      const OxHandle handle = known[i % known.size()];
      if (Probe* found = look(handle); found != nullptr && i % 64 == 0) std::this_thread::yield();
      if (OxIfaceContainerAddWeakCounter(handle) >= 0) OxIfaceContainerReleaseWeakCounter(handle);
    }
  });
  EXPECT_EQ(ends, 2 * kObjects);
}

TEST(HandleRace, OneInterfaceNameGivesOneIdOnAllThreads) {
  std::vector<uint64_t> ids(kThreads);
  onThreads(kThreads, [&](int self) { ids[static_cast<size_t>(self)] = OxRegisterInterface("RacedInterface"); });
  for (const uint64_t id : ids) EXPECT_EQ(id, ids.front());
}

}  // namespace

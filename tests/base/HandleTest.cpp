// Handles as callers mistreat them: garbage, stale, released twice, published twice.
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <cstdio>
#include <random>
#include <unordered_set>

#include "Probe.h"

// Allocations that are refused on purpose must come back as null, as they do without a sanitizer.
extern "C" __attribute__((visibility("default"))) const char* __asan_default_options() {
  return "allocator_may_return_null=1";
}
extern "C" __attribute__((visibility("default"))) const char* __tsan_default_options() {
  return "allocator_may_return_null=1";
}

namespace {

constexpr int kQuarantine = 16384;

using Operation = std::pair<const char*, int32_t (*)(OxHandle)>;
const Operation kOperations[] = {
    {"CheckedAddUse", OxIfaceContainerCheckedAddUseCounter},
    {"AddUse", OxIfaceContainerAddUseCounter},
    {"ReleaseUse", OxIfaceContainerReleaseUseCounter},
    {"AddWeak", OxIfaceContainerAddWeakCounter},
    {"ReleaseWeak", OxIfaceContainerReleaseWeakCounter},
    {"Query",
     [](OxHandle handle) {
       void* found = &found;
       const int32_t status = OxIfaceContainerQuery(handle, Probe::interfaceId(), &found);
       return found == nullptr ? status : 0;
     }},
    {"Add",
     [](OxHandle handle) {
       std::atomic<int> ends{0};
       Probe probe(ends);
       return OxIfaceContainerAdd(handle, static_cast<ORX::IDisposableType*>(&probe));
     }},
};

void expectRefusedByAll(OxHandle handle) {
  for (const auto& [name, operation] : kOperations)
    ASSERT_EQ(operation(handle), OX_E_INVALID_HANDLE) << name << " of " << handle;
}

TEST(Handle, ValuesThatAreNoHandlesFindNothingAndHarmNothing) {
  std::atomic<int> ends{0};
  ProbeRef live = makeProbe(ends);
  const auto address = reinterpret_cast<uint64_t>(live.container());
  constexpr uint64_t kFar = uint64_t{4} << 30;
  for (const uint64_t value :
       {uint64_t{0}, uint64_t{1}, uint64_t{64}, address + 1, address + 8, address + 63, address + kFar, address - kFar,
        uint64_t{1} << 47, uint64_t{0xffff800000000000}, ~uint64_t{0}, ~uint64_t{63}, reinterpret_cast<uint64_t>(&live),
        reinterpret_cast<uint64_t>(live.get())})
    expectRefusedByAll(reinterpret_cast<OxHandle>(value));
  std::mt19937_64 random(20240501);
  for (int i = 0; i < 1000000; ++i) {
    // Half of them anywhere, half close to a living handle but beyond the blocks handed out so far, or misaligned.
    const uint64_t value = random();
    expectRefusedByAll(reinterpret_cast<OxHandle>(i % 2 == 0 ? address + (value >> 30 | 1) : value));
  }
  EXPECT_EQ(look(live.container()), live.get());
  EXPECT_EQ(ends, 0);
}

TEST(Handle, StaysDeadThroughAQuarantineOfReleases) {
  std::atomic<int> ends{0};
  const OxHandle stale = makeProbe(ends).container();  // the only reference ends with the statement
  expectRefusedByAll(stale);
  for (int i = 0; i < kQuarantine; ++i) {
    const ProbeRef other = makeProbe(ends);
    ASSERT_NE(other.container(), stale) << "reused after " << i << " releases";
    ASSERT_EQ(look(stale), nullptr);
  }
  EXPECT_EQ(ends, kQuarantine + 1);
  // From now on blocks come back.
  std::unordered_set<OxHandle> seen;
  for (int i = 0; i < 3 * kQuarantine; ++i) seen.insert(makeProbe(ends).container());
  EXPECT_LE(seen.size(), kQuarantine + 64u) << "waiting blocks, and the few that other tests held at once";
}

TEST(Handle, ReleaseAfterTheLastOneChangesNothing) {
  std::atomic<int> ends{0};
  const OxHandle handle = makeProbe(ends).release();
  EXPECT_EQ(OxIfaceContainerAddUseCounter(handle), OX_OK);
  EXPECT_EQ(OxIfaceContainerReleaseUseCounter(handle), OX_OK);
  EXPECT_EQ(ends, 0);
  EXPECT_EQ(OxIfaceContainerReleaseUseCounter(handle), OX_OK);
  EXPECT_EQ(ends, 1);
  expectRefusedByAll(handle);
  EXPECT_EQ(ends, 1);
}

TEST(Handle, RefusesWhileItsObjectIsBeingDestroyed) {
  std::atomic<int> ends{0};
  OxHandle handle = nullptr;
  bool asked = false;
  handle = makeProbe(ends, [&] {
             asked = true;
             EXPECT_EQ(OxIfaceContainerCheckedAddUseCounter(handle), OX_E_INVALID_HANDLE);
             EXPECT_EQ(OxIfaceContainerAddUseCounter(handle), OX_E_INVALID_HANDLE);
             EXPECT_EQ(OxIfaceContainerReleaseUseCounter(handle), OX_E_INVALID_HANDLE);
           }).release();
  EXPECT_EQ(OxIfaceContainerReleaseUseCounter(handle), OX_OK);
  EXPECT_TRUE(asked);
  EXPECT_EQ(ends, 1);
}

TEST(Handle, WeakCountOutlivesUseAndKeepsTheValueFromReuse) {
  std::atomic<int> ends{0};
  ProbeRef strong = makeProbe(ends);
  const OxHandle handle = strong.container();
  ASSERT_EQ(OxIfaceContainerAddWeakCounter(handle), OX_OK);
  strong.reset();
  EXPECT_EQ(ends, 1) << "a weak count must not keep the object";
  for (int i = 0; i < 3 * kQuarantine; ++i) ASSERT_NE(makeProbe(ends).container(), handle);
  EXPECT_EQ(look(handle), nullptr);
  EXPECT_EQ(OxIfaceContainerReleaseWeakCounter(handle), OX_OK);
  EXPECT_EQ(OxIfaceContainerReleaseWeakCounter(handle), OX_E_INVALID_HANDLE);
}

TEST(Handle, UnpublishedContainerIsRefusedToOthersAndEndsWithoutItsObject) {
  void* storage = nullptr;
  const OxHandle handle = OxCreatePlacementIfaceContainer(0, &storage);
  ASSERT_NE(handle, nullptr);
  ASSERT_NE(storage, nullptr);
  EXPECT_EQ(reinterpret_cast<uintptr_t>(storage) % 16, 0u);
  EXPECT_EQ(OxIfaceContainerCheckedAddUseCounter(handle), OX_E_INVALID_HANDLE);
  EXPECT_EQ(OxIfaceContainerAdd(handle, nullptr), OX_E_INVALID_ARGUMENT);
  EXPECT_EQ(OxIfaceContainerReleaseWeakCounter(handle), OX_E_INVALID_HANDLE) << "nobody took one";
  EXPECT_EQ(OxIfaceContainerReleaseUseCounter(handle), OX_OK);
  expectRefusedByAll(handle);
}

TEST(Handle, CreationWithoutMemoryGivesNoContainerAndNoStorage) {
  void* storage = &storage;
  volatile size_t tooMuch = size_t{1} << 62;
  EXPECT_EQ(OxCreatePlacementIfaceContainer(tooMuch, &storage), nullptr);
  EXPECT_EQ(storage, nullptr);
  EXPECT_EQ(OxCreatePlacementIfaceContainer(8, nullptr), nullptr);
}

// Offers as many interfaces as it is told, numbered from 1000; lives outside the container's storage.
class ManyFaces final : public ORX::IDisposableType {
 public:
  explicit ManyFaces(std::vector<uint64_t> ids) : ids_(std::move(ids)) {}
  void DestroyInPlace() noexcept override { ++destroyed; }
  int32_t ListInterfaces(ORX::InterfaceEntry* entries, size_t* count) noexcept override {
    for (size_t i = 0; entries != nullptr && i < ids_.size(); ++i) entries[i] = {ids_[i], &ids_[i]};
    *count = ids_.size();
    return OX_OK;
  }
  const void* face(size_t i) const { return &ids_[i]; }
  int destroyed = 0;

 private:
  std::vector<uint64_t> ids_;
};

TEST(Handle, ObjectWithSeveralInterfacesAnswersEachAndNoOther) {
  ManyFaces object({1000, 1001, 1002});
  void* storage = nullptr;
  const OxHandle handle = OxCreatePlacementIfaceContainer(1, &storage);
  ASSERT_EQ(OxIfaceContainerAdd(handle, static_cast<ORX::IDisposableType*>(&object)), OX_OK);
  void* found = nullptr;
  for (size_t i = 0; i < 3; ++i) {
    EXPECT_EQ(OxIfaceContainerQuery(handle, 1000 + i, &found), OX_OK);
    EXPECT_EQ(found, object.face(i));
  }
  for (const uint64_t id : {uint64_t{0}, uint64_t{999}, uint64_t{1003}, ~uint64_t{0}}) {
    EXPECT_EQ(OxIfaceContainerQuery(handle, id, &found), OX_E_NOT_PRESENT) << id;
    EXPECT_EQ(found, nullptr);
  }
  EXPECT_EQ(OxIfaceContainerQuery(handle, 1000, nullptr), OX_E_INVALID_ARGUMENT);
  OxIfaceContainerReleaseUseCounter(handle);
  EXPECT_EQ(object.destroyed, 1);
}

TEST(Handle, SecondObjectIsRefusedAndTheFirstStays) {
  ManyFaces first({1000, 1001}), same({1001}), different({2000}), twice({3000, 3000}), none({}), zero({0});
  void* storage = nullptr;
  const OxHandle handle = OxCreatePlacementIfaceContainer(1, &storage);
  const auto add = [&](ManyFaces& object) {
    return OxIfaceContainerAdd(handle, static_cast<ORX::IDisposableType*>(&object));
  };
  EXPECT_EQ(add(twice), OX_E_INVALID_ARGUMENT) << "two interfaces with one id";
  EXPECT_EQ(add(zero), OX_E_INVALID_ARGUMENT);
  EXPECT_EQ(add(first), OX_OK) << "a refused object leaves the container as it was";
  EXPECT_EQ(add(first), OX_E_INVALID_ARGUMENT);
  EXPECT_EQ(add(same), OX_E_INVALID_ARGUMENT);
  EXPECT_EQ(add(different), OX_E_INVALID_STATE);
  EXPECT_EQ(add(none), OX_E_INVALID_STATE);
  void* found = nullptr;
  EXPECT_EQ(OxIfaceContainerQuery(handle, 1001, &found), OX_OK);
  EXPECT_EQ(found, first.face(1));
  OxIfaceContainerReleaseUseCounter(handle);
  EXPECT_EQ(first.destroyed + same.destroyed + different.destroyed + twice.destroyed, 1);
}

TEST(Handle, HeldUntilTheProcessEndsIsNoLeak) {
  // Only the container leads to this object; the leak check of the address sanitizer decides at exit.
  static std::atomic<int> ends{0};
  static OxHandle kept = makeProbe(ends).release();
  EXPECT_NE(look(kept), nullptr);
}

TEST(Handle, InterfaceNamesGetLastingIdsAboveTheFixedOnes) {
  const uint64_t one = OxRegisterInterface("TestInterfaceOne");
  const uint64_t two = OxRegisterInterface("TestInterfaceTwo");
  EXPECT_GE(std::min(one, two), 65536u);
  EXPECT_NE(one, two);
  EXPECT_EQ(OxRegisterInterface(std::string("TestInterfaceOne").c_str()), one);
  EXPECT_NE(OxRegisterInterface("testinterfaceone"), one);
  EXPECT_EQ(OxRegisterInterface(nullptr), 0u);
  EXPECT_EQ(OxRegisterInterface(""), 0u);
}

size_t mappedBytes() {
  unsigned long pages = 0;
  std::FILE* statm = std::fopen("/proc/self/statm", "r");
  if (statm == nullptr || std::fscanf(statm, "%lu", &pages) != 1) std::exit(2);
  std::fclose(statm);
  return pages * 4096;
}

// Ends with 0, or with the number of the promise that was broken.
[[noreturn]] void createInAddressSpace(size_t room, bool useUp) {
  std::vector<OxHandle> handles;
  handles.reserve(useUp ? 4 << 20 : 1);
  const size_t before = mappedBytes();
  if (room != 0) {
    const rlimit scarce{before + room, before + room};
    setrlimit(RLIMIT_AS, &scarce);
  }
  void* storage = nullptr;
  handles.push_back(OxCreatePlacementIfaceContainer(1, &storage));
  constexpr size_t kHeap = size_t{1} << 20;
  if (mappedBytes() - before > std::min(room == 0 ? SIZE_MAX : room / 16, size_t{64} << 20) + kHeap) std::exit(3);
  if (!useUp) std::exit(0);
  while (OxHandle handle = OxCreatePlacementIfaceContainer(1, &storage)) handles.push_back(handle);
  if (handles.size() < 5 * room / 64 / 10) std::exit(4);  // not half of the space went into blocks
  for (OxHandle handle : handles)
    if (OxIfaceContainerAddUseCounter(handle) != OX_OK || OxIfaceContainerReleaseUseCounter(handle) != OX_OK)
      std::exit(5);
  for (int i = 0; i < 2 * kQuarantine; ++i) {
    OxIfaceContainerReleaseUseCounter(handles.back());
    handles.pop_back();
  }
  std::exit(OxCreatePlacementIfaceContainer(1, &storage) != nullptr ? 0 : 6);
}

TEST(HandleDeathTest, TakesLittleOfAnAddressSpaceAtOnceAndNearlyAllInTheEnd) {
  if (OX_UNDER_SANITIZER) GTEST_SKIP() << "a sanitizer needs the address space itself";
  testing::FLAGS_gtest_death_test_style = "threadsafe";  // in a process of its own, where no range is reserved yet
  for (const size_t mebibytes : {0, 130, 1030, 4100})
    EXPECT_EXIT(createInAddressSpace(mebibytes << 20, mebibytes == 130), testing::ExitedWithCode(0), "") << mebibytes;
}

}  // namespace

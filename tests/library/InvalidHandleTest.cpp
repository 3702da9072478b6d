// Whatever is passed as a handle: every export that takes one refuses it and touches nothing.
#include <optional>

#include "Device.h"
#include "Records.h"
#include "calls/Caller.h"

namespace {

using calls::Kind;

// Of what every export does with the value, the caller judges code, text and outputs.
// The two tests of handles leave no record.
void expectRefused(OxHandle value, int calls, size_t recorded, std::optional<Kind> own = std::nullopt) {
  const std::vector<uint8_t> plain(10'000, 17);  // 17 elements, 17 bytes, the 17th word
  calls::SavedBytes bytes(plain.data(), plain.size());
  calls::World world;
  calls::Caller caller(bytes, world);
  const Records records;
  EXPECT_EQ(caller.refuseEverywhere(value, own), calls);
  EXPECT_EQ(records.texts().size(), recorded);
}

TEST(InvalidHandle, ZeroForeignAndReleasedValuesAreRefusedByEveryExport) {
  int object = 0;
  NODEMAP stale = nullptr;
  ASSERT_OK(CreateNodeMap(stale));
  ASSERT_GE(OxIfaceContainerReleaseUseCounter(stale), 0);
  for (void* const value :
       {static_cast<void*>(nullptr), static_cast<void*>(&object), reinterpret_cast<void*>(1),
        reinterpret_cast<void*>(~uintptr_t{0}), reinterpret_cast<void*>(0x7f31c0ffee40), static_cast<void*>(stale)}) {
    SCOPED_TRACE(value);
    expectRefused(value, 95, 93);
  }
}

// Handles are told apart by what their objects offer.
TEST(InvalidHandle, HandlesOfAnotherKindAreRefused) {
  Device device(integerRegister("Width", 0));
  expectRefused(device.map, 38, 37, Kind::kNodeMap);
  expectRefused(device.node("Width"), 65, 64, Kind::kNode);
}

TEST(InvalidHandle, TestsOfHandlesAnswerWithoutAnError) {
  Device device(integerRegister("Width", 0));
  void* const node = device.node("Width");
  void* const map = device.map;
  OxSetLastError(0, "");
  for (void* const each : {node, map, static_cast<void*>(nullptr)}) {
    EXPECT_EQ(IsNodeMap(static_cast<NODEMAP>(each)), each == map);
    EXPECT_EQ(IsNode(static_cast<NODE>(each)), each == node);
  }
  EXPECT_EQ(lastErrorText(), "");
}

TEST(InvalidHandle, OldEntryPointsFailWhateverTheyAreGiven) {
  for (const Outcome& each : {outcome(NMLoadXML(nullptr)), outcome(NMConnectRegisterPort(nullptr, 1, 2)),
                              outcome(NMConnectMultiRegisterPort(nullptr, "x"))})
    EXPECT_EQ(each, fails(OXGENAPI_E_NOT_SUPPORTED, "Unspecified error"));
}

TEST(InvalidHandle, BuffersThatAreCheckedFirstAreRefusedFirst) {
  for (const Outcome& each :
       {outcome(NMAttachChunkList(nullptr, nullptr, 1)), outcome(NMAttachChunkListEx(nullptr, nullptr, 1)),
        outcome(NMAttachChunkListExW(nullptr, nullptr, 1))})
    EXPECT_EQ(each, fails(OXGENAPI_E_INVALID_ARGUMENT, "Invalid DataList"));
  EXPECT_FAILS(NMAttachChunkList(nullptr, nullptr, 0), OXGENAPI_E_INVALID_HANDLE, "Invalid NODEMAP handle");
}

}  // namespace

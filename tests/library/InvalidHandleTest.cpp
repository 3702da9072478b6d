// Whatever is passed as a handle: every export that takes one refuses it and touches nothing.
#include <cstring>
#include <string>

#include "Device.h"
#include "Records.h"

namespace {

// Everything that calls could write, with contents that show it.
struct Outputs {
  char narrow[8] = "keep";
  wchar_t wide[8] = L"keep";
  size_t size = 8;
  int64_t integer = 4711;
  bool boolean = true;
  double real = 4711;
  uint32_t count = 4711;
  NODEMAP nodeMap = reinterpret_cast<NODEMAP>(uintptr_t{4711});
  NODE node = reinterpret_cast<NODE>(uintptr_t{4711});
  NODEMAPSTREAM stream = reinterpret_cast<NODEMAPSTREAM>(uintptr_t{4711});
  TCallbackHandle callback = 4711;
  TVerifyMode verifyMode = VM_ReadWrite;
  TNodeType type = NT_Float;
  TEventData eventData{};
  TEventDataEx eventDataEx{};
  TEventDataExW eventDataExW{};
  TChunkData chunkData{};
  TChunkDataEx chunkDataEx{};
  TChunkDataExW chunkDataExW{};

  bool isUntouched() const {
    const Outputs fresh;
    return std::string(narrow) == fresh.narrow && std::wstring(wide) == fresh.wide && size == fresh.size &&
           integer == fresh.integer && boolean == fresh.boolean && real == fresh.real && count == fresh.count &&
           nodeMap == fresh.nodeMap && node == fresh.node && stream == fresh.stream && callback == fresh.callback &&
           verifyMode == fresh.verifyMode;
  }
};

template <class Handle, class... Rest>
Handle handleOf(uint32_t (*)(Handle, Rest...));

const char* expectedText(NODEMAP) {
  return "Invalid NODEMAP handle";
}
const char* expectedText(NODE) {
  return "Invalid NODE handle";
}
const char* expectedText(NODEMAPSTREAM) {
  return "Invalid NODEMAPSTREAM handle";
}
const char* expectedText(FWUPDATER) {
  return "Invalid FWUPDATER handle";
}

struct Call {
  const char* name;
  uint32_t (*call)(void* handle, Outputs& out);
  const char* text;
};

#define CALL(name, ...)                                                                                                              \
  Call {                                                                                                                             \
#name,                                                                                                                           \
        [](void* handle,                                                                                                             \
           [[maybe_unused]] Outputs&                                                                                                 \
               out) { return name(static_cast<decltype(handleOf(&name))>(handle) __VA_OPT__(, ) __VA_ARGS__); },                     \
                                                                                                              expectedText(          \
                                                                                                                  decltype(handleOf( \
                                                                                                                      &name)){})     \
  }

const Call kCalls[] = {CALL(CreateNodeMapProxy, nullptr, out.narrow, &out.nodeMap),
                       CALL(NMLoadXMLFile, "x"),
                       CALL(NMLoadXMLFileW, L"x"),
                       CALL(NMLoadXMLString, "x"),
                       CALL(NMLoadXMLStringW, L"x"),
                       CALL(NMNodeCount, out.count),
                       CALL(NMGetNode, "x", out.node),
                       CALL(NMGetNodeW, L"x", out.node),
                       CALL(NMListNode, 1, out.narrow, out.size),
                       CALL(NMListNodeW, 1, out.wide, out.size),
                       CALL(NMInfoAsBoolean, NMI_ToolTip, &out.boolean),
                       CALL(NMInfoAsInteger, NMI_ToolTip, &out.integer),
                       CALL(NMInfoAsFloat, NMI_ToolTip, &out.real),
                       CALL(NMInfoAsString, NMI_ToolTip, out.narrow, out.size),
                       CALL(NMInfoAsStringW, NMI_ToolTip, out.wide, out.size),
                       CALL(NMPollNodes, 1),
                       CALL(NMConnectPort, nullptr, nullptr, nullptr, out.narrow),
                       CALL(NMConnectPortEx, nullptr, nullptr, nullptr, out.narrow, "x"),
                       CALL(NMConnectPortExW, nullptr, nullptr, nullptr, out.narrow, L"x"),
                       CALL(NMDeliverEvent, &out.eventData),
                       CALL(NMDeliverEventEx, &out.eventDataEx),
                       CALL(NMDeliverEventExW, &out.eventDataExW),
                       CALL(NMAttachChunk, &out.chunkData),
                       CALL(NMAttachChunkEx, &out.chunkDataEx),
                       CALL(NMAttachChunkExW, &out.chunkDataExW),
                       CALL(NMAttachChunkList, &out.chunkData, 1),
                       CALL(NMAttachChunkListEx, &out.chunkDataEx, 1),
                       CALL(NMAttachChunkListExW, &out.chunkDataExW, 1),
                       CALL(NMUpdateChunks, out.narrow),
                       CALL(NMDetachAllChunks),
                       CALL(NMLoadSet, "x", nullptr, out.narrow),
                       CALL(NMLoadSetW, L"x", nullptr, out.narrow),
                       CALL(NMLoadSetEx, "x", true, nullptr, out.narrow),
                       CALL(NMLoadSetExW, L"x", true, nullptr, out.narrow),
                       CALL(NMLoadSetString, "x", true, nullptr, out.narrow),
                       CALL(NMLoadSetStringW, L"x", true, nullptr, out.narrow),
                       CALL(NMSaveSet, "x", nullptr, out.narrow),
                       CALL(NMSaveSetW, L"x", nullptr, out.narrow),
                       CALL(NMSaveSetEx, "x", "x", nullptr, out.narrow),
                       CALL(NMSaveSetExW, L"x", L"x", nullptr, out.narrow),
                       CALL(NMSaveSetString, out.narrow, &out.size, nullptr, out.narrow),
                       CALL(NMSaveSetStringW, out.wide, &out.size, nullptr, out.narrow),
                       CALL(NMSaveSetStringEx, out.narrow, &out.size, "x", nullptr, out.narrow),
                       CALL(NMSaveSetStringExW, out.wide, &out.size, L"x", nullptr, out.narrow),
                       CALL(NMCreateStream, ST_Json, &out.stream),
                       CALL(NMUploadFile, "x", "x"),
                       CALL(NMUploadFileW, L"x", L"x"),
                       CALL(NMUploadFileMemory, "x", out.narrow, 1),
                       CALL(NMUploadFileMemoryW, L"x", out.narrow, 1),
                       CALL(NMDownloadFile, "x", "x"),
                       CALL(NMDownloadFileW, L"x", L"x"),
                       CALL(NMDownloadFileMemory, "x", out.narrow, &out.size),
                       CALL(NMDownloadFileMemoryW, L"x", out.narrow, &out.size),
                       CALL(NType, &out.type),
                       CALL(NGetAsBoolean, &out.boolean),
                       CALL(NGetAsInteger, &out.integer),
                       CALL(NGetAsFloat, &out.real),
                       CALL(NGetAsString, out.narrow, out.size),
                       CALL(NGetAsStringW, out.wide, out.size),
                       CALL(NSetAsBoolean, true),
                       CALL(NSetAsInteger, 1),
                       CALL(NSetAsFloat, 1),
                       CALL(NSetAsString, "x"),
                       CALL(NSetAsStringW, L"x"),
                       CALL(NInfoAsBoolean, NI_Name, &out.boolean),
                       CALL(NInfoAsInteger, NI_Name, &out.integer),
                       CALL(NInfoAsFloat, NI_Name, &out.real),
                       CALL(NInfoAsString, NI_Name, out.narrow, out.size),
                       CALL(NInfoAsStringW, NI_Name, out.wide, out.size),
                       CALL(NInfoEnum, NI_Name, 1, &out.integer, out.narrow, &out.size),
                       CALL(NInfoEnumW, NI_Name, 1, &out.integer, out.wide, &out.size),
                       CALL(NListCount, NL_Children, &out.integer),
                       CALL(NList, NL_Children, 1, out.narrow, out.size),
                       CALL(NListW, NL_Children, 1, out.wide, out.size),
                       CALL(NGetAsMemory, 1, out.narrow, 1),
                       CALL(NSetAsMemory, 1, out.narrow, 1),
                       CALL(NGetAsRegisterData, out.narrow, &out.integer),
                       CALL(NRegisterUpdate, nullptr, out.narrow, &out.callback),
                       CALL(NDeregisterUpdate, 1),
                       CALL(NInvalidate),
                       CALL(NGetVerifyMode, &out.verifyMode),
                       CALL(NSetVerifyMode, VM_None),
                       CALL(NMStreamPush, nullptr),
                       CALL(NMStreamDump, out.narrow, &out.size),
                       CALL(NMStreamDumpW, out.wide, &out.size),
                       CALL(FWUpdateFileCount, &out.size),
                       CALL(FWUpdateFileInfoCount, 1, &out.size),
                       CALL(FWUpdateFileInfo, 1, 1, FUI_Key, out.narrow, &out.size),
                       CALL(FWUpdateFileInfoW, 1, 1, FUI_Key, out.wide, &out.size),
                       CALL(FWUpdate, nullptr, 1, nullptr, out.narrow)};

void expectRefused(void* handle, const char* what) {
  for (const Call& call : kCalls) {
    Outputs out;
    Records records;
    EXPECT_FAILS(call.call(handle, out), OXGENAPI_E_INVALID_HANDLE, call.text) << call.name << " with " << what;
    EXPECT_TRUE(out.isUntouched()) << call.name << " with " << what;
    EXPECT_EQ(out.type, std::string(call.name) == "NType" ? NT_Invalid : NT_Float) << call.name;
    EXPECT_EQ(records.texts().size(), 1u) << call.name;
  }
}

TEST(InvalidHandle, ZeroRandomAndForeignValuesAreRefusedByEveryExport) {
  int object = 0;
  expectRefused(nullptr, "zero");
  expectRefused(&object, "an address of something else");
  expectRefused(reinterpret_cast<void*>(uintptr_t{0x1}), "one");
  expectRefused(reinterpret_cast<void*>(~uintptr_t{0}), "all bits");
  expectRefused(reinterpret_cast<void*>(uintptr_t{0x7f31c0ffee40}), "a random value");
}

TEST(InvalidHandle, ReleasedHandlesAreRefusedByEveryExport) {
  NODEMAP stale = nullptr;
  ASSERT_OK(CreateNodeMap(stale));
  ASSERT_GE(OxIfaceContainerReleaseUseCounter(stale), 0);
  expectRefused(stale, "a released node map");
}

// Handles are told apart by what their objects offer.
TEST(InvalidHandle, HandlesOfAnotherKindAreRefused) {
  Device device(integerRegister("Width", 0));
  void* const nodeMap = device.map;
  void* const node = device.node("Width");
  for (const Call& call : kCalls) {
    Outputs out;
    const bool takesNodeMap = std::strstr(call.text, "NODEMAP ") != nullptr;
    EXPECT_FAILS(call.call(takesNodeMap ? node : nodeMap, out), OXGENAPI_E_INVALID_HANDLE, call.text) << call.name;
    EXPECT_TRUE(out.isUntouched()) << call.name;
  }
}

TEST(InvalidHandle, TestsOfHandlesAnswerWithoutAnError) {
  Device device(integerRegister("Width", 0));
  void* const node = device.node("Width");
  OxSetLastError(0, "");
  EXPECT_TRUE(IsNodeMap(device.map));
  EXPECT_TRUE(IsNode(static_cast<NODE>(node)));
  EXPECT_FALSE(IsNodeMap(static_cast<NODEMAP>(node)));
  EXPECT_FALSE(IsNode(static_cast<NODE>(static_cast<void*>(device.map))));
  EXPECT_FALSE(IsNodeMap(nullptr));
  EXPECT_FALSE(IsNode(nullptr));
  EXPECT_EQ(lastErrorText(), "");
}

TEST(InvalidHandle, OldEntryPointsFailWhateverTheyAreGiven) {
  EXPECT_FAILS(NMLoadXML(nullptr), OXGENAPI_E_NOT_SUPPORTED, "Unspecified error");
  EXPECT_FAILS(NMConnectRegisterPort(nullptr, 1, 2), OXGENAPI_E_NOT_SUPPORTED, "Unspecified error");
  EXPECT_FAILS(NMConnectMultiRegisterPort(nullptr, "x"), OXGENAPI_E_NOT_SUPPORTED, "Unspecified error");
}

TEST(InvalidHandle, BuffersThatAreCheckedFirstAreRefusedFirst) {
  EXPECT_FAILS(NMAttachChunkList(nullptr, nullptr, 1), OXGENAPI_E_INVALID_ARGUMENT, "Invalid DataList");
  EXPECT_FAILS(NMAttachChunkListEx(nullptr, nullptr, 1), OXGENAPI_E_INVALID_ARGUMENT, "Invalid DataList");
  EXPECT_FAILS(NMAttachChunkListExW(nullptr, nullptr, 1), OXGENAPI_E_INVALID_ARGUMENT, "Invalid DataList");
  EXPECT_FAILS(NMAttachChunkList(nullptr, nullptr, 0), OXGENAPI_E_INVALID_HANDLE, "Invalid NODEMAP handle");
}

}  // namespace

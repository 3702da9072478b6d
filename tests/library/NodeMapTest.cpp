// Loading, finding nodes, and what the description says about itself.
#include <pthread.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <utility>

#include "Device.h"

namespace {

TEST(NodeMap, RefusesUntilSomethingIsLoaded) {
  Device empty;
  NODE node = nullptr;
  uint32_t count = 7;
  size_t size = 0;
  int64_t number = 0;
  for (const Outcome& each :
       {outcome(NMGetNode(empty.map, "Width", node)), outcome(NMNodeCount(empty.map, count)),
        outcome(NMListNode(empty.map, 0, nullptr, size)), outcome(NMInfoAsInteger(empty.map, NMI_VendorName, &number)),
        outcome(NMPollNodes(empty.map, 1)), outcome(NMUpdateChunks(empty.map, nullptr)),
        outcome(NMDetachAllChunks(empty.map))})
    EXPECT_EQ(each, fails(OXGENAPI_E_INVALID_STATE, "No NodeMap object available"));
  EXPECT_EQ(count, 7u);
  EXPECT_FAILS(NMConnectPort(empty.map, nullptr, nullptr, nullptr, nullptr), OXGENAPI_E_INVALID_STATE,
               "No NodeMap available to connect to");
}

TEST(NodeMap, FindsNodesByNameAndHandsOutTheSameObject) {
  Device device(integerRegister("Width", 0));
  NODE first = nullptr;
  NODE second = nullptr;
  ASSERT_OK(NMGetNode(device.map, "Width", first));
  ASSERT_OK(NMGetNodeW(device.map, L"Width", second));
  EXPECT_EQ(first, second);
  EXPECT_GE(OxIfaceContainerReleaseUseCounter(first), 0);
  EXPECT_TRUE(IsNode(second));
  EXPECT_GE(OxIfaceContainerReleaseUseCounter(second), 0);
  EXPECT_FALSE(IsNode(second));

  NODE none = second;
  EXPECT_FAILS(NMGetNode(device.map, "Height", none), OXGENAPI_E_NOT_PRESENT, "Node 'Height' not present in NodeMap");
  EXPECT_EQ(none, nullptr);
  EXPECT_FAILS(NMGetNode(device.map, nullptr, none), OXGENAPI_E_NOT_PRESENT, "Node '' not present in NodeMap");
}

TEST(NodeMap, ListsItsNodesInDescriptionOrder) {
  Device device(integerRegister("Width", 0));
  uint32_t count = 0;
  ASSERT_OK(NMNodeCount(device.map, count));
  ASSERT_EQ(count, 3u);
  std::vector<std::string> names;
  for (uint32_t i = 0; i < count; ++i)
    names.push_back(textOf([&](char* buffer, size_t& size) { return NMListNode(device.map, i, buffer, size); }));
  EXPECT_EQ(names, (std::vector<std::string>{"Root", "Width", "Device"}));
  size_t size = 0;
  EXPECT_FAILS(NMListNode(device.map, 3, nullptr, size), OXGENAPI_E_INVALID_ARGUMENT, "Index out of range: 0 <= 3 < 3");
  EXPECT_OK(NMListNodeW(device.map, 1, nullptr, size));
  EXPECT_EQ(size, 6u);
}

TEST(NodeMap, TellsWhatTheDescriptionSaysAboutTheDevice) {
  Device device("");
  const char* const texts[] = {"Vendor",
                               "Model",
                               "1",
                               "1",
                               "7",
                               "4",
                               "5",
                               "6",
                               "GEV",
                               "11111111-2222-3333-4444-555555555555",
                               "66666666-7777-8888-9999-AAAAAAAAAAAA",
                               "A camera"};
  for (uint32_t command = 0; command <= 12; ++command) {
    const auto info = static_cast<TNodeMapInfo>(command);
    const bool isNumber = command >= 2 && command <= 7;
    int64_t integer = -1;
    double real = -1;
    bool boolean = false;
    const Outcome number = isNumber ? succeeds() : fails(OXGENAPI_E_NOT_SUPPORTED, "Unknown info command");
    EXPECT_EQ(outcome(NMInfoAsInteger(device.map, info, &integer)), number) << command;
    EXPECT_EQ(outcome(NMInfoAsFloat(device.map, info, &real)), number) << command;
    EXPECT_FAILS(NMInfoAsBoolean(device.map, info, &boolean), OXGENAPI_E_NOT_SUPPORTED, "Unknown info command");
    if (isNumber) {
      EXPECT_EQ(integer, std::stoi(texts[command]));
      EXPECT_EQ(real, static_cast<double>(integer));
    }
    if (command < std::size(texts)) {
      EXPECT_EQ(textOf([&](char* b, size_t& size) { return NMInfoAsString(device.map, info, b, size); }),
                texts[command]);
    }
  }
  char text[4] = "old";
  size_t size = sizeof text;
  EXPECT_FAILS(NMInfoAsString(device.map, static_cast<TNodeMapInfo>(12), text, size), OXGENAPI_E_NOT_SUPPORTED,
               "Unknown info command");
  EXPECT_STREQ(text, "");
  wchar_t wide[8];
  size = 8;
  EXPECT_OK(NMInfoAsStringW(device.map, NMI_VendorName, wide, size));
  EXPECT_EQ(std::wstring(wide), L"Vendor");
}

TEST(NodeMap, AFailedLoadKeepsWhatWasLoaded) {
  Device device(integerRegister("Width", 0));
  const NODE width = device.node("Width");
  for (const uint32_t result : {NMLoadXMLString(device.map, "<RegisterDescription"), NMLoadXMLString(device.map, ""),
                                NMLoadXMLString(device.map, nullptr), NMLoadXMLStringW(device.map, nullptr),
                                NMLoadXMLFile(device.map, nullptr)})
    EXPECT_EQ(result, OXGENAPI_E_RUNTIME);
  EXPECT_EQ(device.node("Width"), width);
  EXPECT_OK(NSetAsInteger(width, 3));
  EXPECT_EQ(device.integerAt(0), 3);
}

TEST(NodeMap, PollingInvalidatesWhatIsDue) {
  Device device(integerRegister("Width", 0, "<PollingTime>100</PollingTime>"));
  EXPECT_EQ(device.value("Width"), 0);
  device.setInteger(0, 5);
  for (const int64_t seen : {0, 5}) {
    EXPECT_OK(NMPollNodes(device.map, 60));
    EXPECT_EQ(device.value("Width"), seen);
  }
  EXPECT_EQ(NMPollNodes(device.map, -1), OXGENAPI_E_UNSPECIFIED);
}

struct Notified {
  NODEMAP internal = nullptr;
  int calls = 0;
  uint32_t resultInside = ~0u;
  static void notify(void* self) {
    auto& notified = *static_cast<Notified*>(self);
    ++notified.calls;
    uint32_t count = 0;
    notified.resultInside = NMNodeCount(notified.internal, count);
  }
};

TEST(NodeMapProxy, StandsForItsNodeMapAndOutlivesItsHandle) {
  Notified notified;
  NODEMAP internal = nullptr;
  NODEMAP proxy = nullptr;
  NODEMAP proxyOfProxy = nullptr;
  ASSERT_OK(CreateNodeMap(internal));
  notified.internal = internal;
  ASSERT_OK(CreateNodeMapProxy(internal, &Notified::notify, &notified, &proxy));
  ASSERT_OK(CreateNodeMapProxy(proxy, nullptr, nullptr, &proxyOfProxy));
  EXPECT_TRUE(IsNodeMap(proxy));
  OxIfaceContainerReleaseUseCounter(internal);
  OxIfaceContainerReleaseUseCounter(proxy);

  EXPECT_FAILS(NMAttachChunk(proxyOfProxy, std::vector<TChunkData>(1).data()), OXGENAPI_E_INVALID_ARGUMENT,
               "Chunk data buffer invalid");
  ASSERT_OK(NMLoadXMLString(proxyOfProxy, description("<Integer Name=\"Width\"><Value>4</Value></Integer>").c_str()));
  NODE node = nullptr;
  ASSERT_OK(NMGetNode(proxyOfProxy, "Width", node));
  NODE same = nullptr;
  ASSERT_OK(NMGetNode(internal, "Width", same));  // kept alive by the proxies
  EXPECT_EQ(node, same);
  OxIfaceContainerReleaseUseCounter(node);
  OxIfaceContainerReleaseUseCounter(same);

  EXPECT_EQ(notified.calls, 0);
  OxIfaceContainerReleaseUseCounter(proxyOfProxy);
  EXPECT_EQ(notified.calls, 1);
  EXPECT_EQ(notified.resultInside, 0u);  // the node map was still there
  EXPECT_FALSE(IsNodeMap(internal));
}

// More of them than a stack could hold one inside the other: 256 KiB, a thread's stack on small systems.
TEST(NodeMapProxy, ALongChainIsUsedAndEndsOnASmallStack) {
  constexpr int kProxies = 200'000;
  pthread_attr_t small;
  pthread_attr_init(&small);
  pthread_attr_setstacksize(&small, size_t{256} << 10);
  static int notified;
  notified = 0;
  const auto run = [](void*) -> void* {
    NODEMAP last = nullptr;
    EXPECT_OK(CreateNodeMap(last));
    EXPECT_OK(NMLoadXMLString(last, description("").c_str()));
    for (int i = 0; i < kProxies; ++i) {
      const NODEMAP before = std::exchange(last, nullptr);
      EXPECT_OK(CreateNodeMapProxy(
          before, [](void* inner) { notified += IsNodeMap(static_cast<NODEMAP>(inner)); }, before, &last));
      OxIfaceContainerReleaseUseCounter(before);
    }
    uint32_t count = 0;
    EXPECT_OK(NMNodeCount(last, count));
    EXPECT_EQ(count, 2u);
    OxIfaceContainerReleaseUseCounter(last);
    return nullptr;
  };
  pthread_t thread;
  ASSERT_EQ(pthread_create(&thread, &small, run, nullptr), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&small);
  EXPECT_EQ(notified, kProxies) << "each while what it stood for was there";
}

// The call itself ends the proxy: a port callback inside it gives back the last handle, and the notification overwrites
// the last error. What the call reports stays.
TEST(NodeMapProxy, EndingInsideAFailingCallKeepsTheCallsLastError) {
  struct Context {
    NODEMAP proxy = nullptr;
    int notifications = 0;
    static int read(void* buffer, int64_t, int64_t, void* self) {
      OxIfaceContainerReleaseUseCounter(std::exchange(static_cast<Context*>(self)->proxy, nullptr));
      const uint8_t id[4] = {7, 0, 0, 0};
      std::memcpy(buffer, id, sizeof id);
      return 0;
    }
    static void notify(void* self) {
      ++static_cast<Context*>(self)->notifications;
      OxSetLastError(OXGENAPI_E_RUNTIME, "set while ending");
    }
  } context;
  Device device;
  device.load(description(integerRegister("Id", 0) + "<Port Name=\"Chunk\"><pChunkID>Id</pChunkID></Port>"));
  ASSERT_OK(NMConnectPort(device.map, &Context::read, nullptr, nullptr, &context));
  ASSERT_OK(CreateNodeMapProxy(device.map, &Context::notify, &context, &context.proxy));
  uint8_t byte = 0;
  const TChunkDataEx refused{"7", &byte, 0, -1};
  const uint32_t result = NMAttachChunkEx(context.proxy, &refused);
  EXPECT_EQ(outcome(result).code, OXGENAPI_E_UNSPECIFIED);
  EXPECT_NE(lastErrorText(), "set while ending");
  EXPECT_EQ(context.notifications, 1);
}

}  // namespace

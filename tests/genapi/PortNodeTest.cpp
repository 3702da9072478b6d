// Port nodes: connecting implementations, passing bytes through, swapping, and what ports throw.
#include "NodeNames.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Bytes = std::vector<uint8_t>;

// Tells which node it was told to serve.
class Registrar : public BytePort {
 public:
  void SetPortImpl(IPort* node) override {
    BytePort::SetPortImpl(node);
    told.push_back(node);
  }
  std::vector<IPort*> told;
};

TEST(PortNodes, TellImplementationsWhenTheyServeAndWhenTheyEnd) {
  Registrar first, second, last;
  {
    TestMap map("<Integer Name=\"X\"><Value>0</Value></Integer><Port Name=\"Other\"/>");
    IPort* device = CPortPtr(map.node("Device"));
    EXPECT_TRUE(map.map->Connect(&first));
    EXPECT_THAT(first.told, ElementsAre(device));
    EXPECT_TRUE(map.map->Connect(&second, "Device"));
    EXPECT_THAT(first.told, ElementsAre(device, nullptr));
    EXPECT_THAT(second.told, ElementsAre(device));
    EXPECT_TRUE(map.map->Connect(nullptr, "Device"));
    EXPECT_THAT(second.told, ElementsAre(device, nullptr));
    first.InvalidateNode();  // of nobody any more

    for (const char* each : {"X", "Nobody", ""}) EXPECT_FALSE(map.map->Connect(&last, each)) << each;
    EXPECT_THAT(last.told, IsEmpty());
    EXPECT_TRUE(map.map->Connect(&last, "Other"));
    CPortConstructPtr(map.node("Device"))->SetPortImpl(&second);
    EXPECT_EQ(second.told.back(), device) << "connecting from the node's side is the same";
  }
  EXPECT_EQ(last.told.back(), nullptr) << "the map's end ends the connection";
  EXPECT_EQ(second.told.back(), nullptr);
  last.InvalidateNode();
}

TEST(PortNodes, ConnectSilentlyAndForgetWhatTheFormerImplementationSaid) {
  TestMap map("<Integer Name=\"Top\"><pValue>Raw</pValue></Integer>" + reg("IntReg", "Raw", 0, 4) +
              "<Integer Name=\"Guarded\"><pIsAvailable>Raw</pIsAvailable><Value>0</Value></Integer>");
  EXPECT_EQ(map.integer("Top")->GetValue(), 0);
  EXPECT_EQ(map.mode("Guarded"), NA);
  CallLog log;
  log.watch(map, {"Device", "Raw", "Top", "Guarded"});
  BytePort other;
  other.poke(0, {5});
  map.map->Connect(&other);
  EXPECT_EQ(map.integer("Top")->GetValue(), 5);
  EXPECT_EQ(map.mode("Guarded"), RW);
  map.map->Connect(nullptr);
  EXPECT_EQ(map.mode("Top"), NI);
  EXPECT_EQ(map.mode("Guarded"), NA);
  EXPECT_THAT(log.take(), IsEmpty());
  map.map->Connect(&map.port);
}

TEST(PortNodes, HaveTheRightsOfTheirImplementation) {
  TestMap map(R"(
    <Port Name="Device"><pIsLocked>Locked</pIsLocked></Port>
    <Port Name="Chunk"><ChunkID>12ab</ChunkID><SwapEndianess>Yes</SwapEndianess>
      <CacheChunkData>Yes</CacheChunkData></Port>
    <Port Name="ByText"><pChunkID>Id</pChunkID></Port>
    <String Name="Id"><Value>34cd</Value></String>
    <Integer Name="Locked"><Value>0</Value></Integer>)" +
              reg("IntReg", "Raw", 0, 4));
  map.port.mode = RW;
  EXPECT_EQ(map.mode("Device"), RW);
  map.integer("Locked")->SetValue(1);
  EXPECT_EQ(map.mode("Device"), RO);
  map.integer("Locked")->SetValue(0);
  EXPECT_EQ(map.mode("Raw"), RW);

  // The port itself is asked each time, registers keep what they were told until they hear of a change.
  map.port.mode = RO;
  EXPECT_EQ(map.mode("Device"), RO);
  EXPECT_EQ(map.mode("Raw"), RW);
  map.port.InvalidateNode();
  EXPECT_EQ(map.mode("Raw"), RO);
  const uint8_t byte = 0;
  EXPECT_THROW(map.bytes("Raw")->Set(&byte, 1), AccessException);
  uint8_t back = 1;
  map.bytes("Raw")->Get(&back, 1);
  EXPECT_EQ(back, 0);

  map.map->Connect(nullptr);
  EXPECT_EQ(map.mode("Device"), NI);
  EXPECT_EQ(map.mode("Chunk"), NA);
  EXPECT_EQ(map.mode("ByText"), NA);
  const std::tuple<const char*, const char*, EYesNo, EYesNo> ports[] = {
      {"Chunk", "12ab", Yes, Yes}, {"ByText", "34cd", No, No}, {"Device", "", No, No}};
  for (const auto& [name, id, caches, swaps] : ports) {
    EXPECT_STREQ(CChunkPortPtr(map.node(name))->GetChunkID(), id);
    EXPECT_EQ(CChunkPortPtr(map.node(name))->CacheChunkData(), caches) << name;
    EXPECT_EQ(CPortConstructPtr(map.node(name))->GetSwapEndianess(), swaps) << name;
  }
  EXPECT_EQ(map.port.GetSwapEndianess(), No);
}

TEST(PortNodes, SwapGroupsOfFourBytesForRegisters) {
  TestMap map("<Port Name=\"Device\"><SwapEndianess>Yes</SwapEndianess></Port>" + reg("Register", "Raw", 8, 8) +
              reg("IntReg", "Number", 0, 4) + reg("IntReg", "Big", 0, 4, tag("Endianess", "BigEndian")) +
              reg("IntReg", "Short", 16, 2) + reg("Register", "Crooked", 18, 4));
  map.port.poke(8, {1, 2, 3, 4, 5, 6, 7, 8});
  Bytes bytes(8);
  map.bytes("Raw")->Get(bytes.data(), 8);
  EXPECT_EQ(bytes, (Bytes{4, 3, 2, 1, 8, 7, 6, 5}));
  map.bytes("Raw")->Set(bytes.data(), 4);
  EXPECT_EQ(map.port.peek(8, 8), (Bytes{1, 2, 3, 4, 5, 6, 7, 8}));
  map.integer("Number")->SetValue(0x01020304);
  EXPECT_EQ(map.port.peek(0, 4), (Bytes{1, 2, 3, 4}));
  EXPECT_EQ(map.integer("Number")->GetValue(false, true), 0x01020304);
  EXPECT_EQ(map.integer("Big")->GetValue(), 0x04030201);
  map.port.counts();
  EXPECT_THROW(map.integer("Short")->GetValue(), RuntimeException);
  EXPECT_THROW(map.integer("Short")->SetValue(1), RuntimeException);
  EXPECT_THROW(map.bytes("Crooked")->Get(bytes.data(), 4), RuntimeException);
  EXPECT_EQ(map.port.counts(), "0r0w");

  // Straight through the port node bytes stay as they are.
  Bytes straight(4);
  CPortPtr(map.node("Device"))->Read(straight.data(), 8, 4);
  EXPECT_EQ(straight, (Bytes{1, 2, 3, 4}));
}

}  // namespace

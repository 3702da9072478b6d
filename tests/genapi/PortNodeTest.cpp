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

TEST(PortNodes, PassBytesStraightThrough) {
  TestMap map(reg("IntReg", "Raw", 0, 4));
  CPortPtr port(map.node("Device"));
  CallLog log;
  log.watch(map, {"Device", "Raw"});
  EXPECT_EQ(map.integer("Raw")->GetValue(), 0);

  const uint8_t written[3] = {7, 8, 9};
  port->Write(written, 0, 3);
  uint8_t read[2] = {};
  port->Read(read, 1, 2);
  EXPECT_EQ(read[0], 8);
  EXPECT_EQ(read[1], 9);
  EXPECT_EQ(map.port.writes.count({0, 3}), 1U);
  EXPECT_EQ(map.port.reads.count({1, 2}), 1U);
  EXPECT_EQ(map.integer("Raw")->GetValue(), 0) << "caches do not hear of it";
  map.node("Device")->InvalidateNode();
  EXPECT_EQ(map.integer("Raw")->GetValue(), 0x090807);
  EXPECT_THAT(log.take(), testing::UnorderedElementsAre("Device", "Raw")) << "of invalidating";

  map.port.counts();
  port->Read(read, 5000, 0);
  port->Write(written, 5000, 0);
  EXPECT_THROW(port->Read(read, 0, -1), InvalidArgumentException);
  EXPECT_THROW(port->Write(written, 0, INT64_MIN), InvalidArgumentException);
  EXPECT_EQ(map.port.counts(), "0r0w");

  map.port.mode = NA;
  EXPECT_NO_THROW(port->Read(read, 0, 2)) << "the access mode is no matter here";
  map.map->Connect(nullptr);
  EXPECT_EQ(refusal<AccessException>([&] { port->Read(read, 0, 1); }), "port 'Device' is not connected");
  EXPECT_EQ(refusal<AccessException>([&] { port->Write(written, 0, 1); }), "port 'Device' is not connected");
  EXPECT_THAT(log.take(), IsEmpty());
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

TEST(PortNodes, LetExceptionsPassUnchanged) {
  TestMap map(reg("IntReg", "Raw", 0, 4) + reg("StringReg", "Text", 4, 4) + R"(
    <Integer Name="Top"><pValue>Raw</pValue></Integer>
    <SwissKnife Name="Knife"><pVariable Name="X">Top</pVariable><Formula>X * 2</Formula></SwissKnife>
    <Converter Name="Scaled"><pVariable Name="V">Raw</pVariable><FormulaTo>FROM</FormulaTo>
      <FormulaFrom>TO + V</FormulaFrom><pValue>Top</pValue></Converter>
    <Boolean Name="Flag"><pValue>Raw</pValue></Boolean>
    <Enumeration Name="Mode"><EnumEntry Name="Off"><Value>0</Value></EnumEntry><pValue>Raw</pValue></Enumeration>
    <Integer Name="Limited"><Value>0</Value><pMax>Knife</pMax></Integer>
    <Integer Name="Guarded"><pIsAvailable>Raw</pIsAvailable><Value>0</Value></Integer>)");
  const auto outcomes = [&](auto&& check) {
    for (const char* each : {"Raw", "Top", "Knife", "Scaled", "Flag", "Mode", "Text", "Guarded"}) {
      SCOPED_TRACE(each);
      check([&] { map.value(each)->ToString(); });
    }
    check([&] { map.integer("Raw")->GetValue(); });
    check([&] { map.real("Scaled")->GetMax(); });
    check([&] { map.node("Guarded")->GetAccessMode(); });
    check([&] { map.integer("Limited")->SetValue(1); });
    check([&] { map.integer("Top")->SetValue(1); });
    check([&] { map.real("Scaled")->SetValue(1); });
    check([&] { map.boolean("Flag")->SetValue(true); });
    check([&] { map.enumeration("Mode")->SetIntValue(0); });
    check([&] { map.value("Raw")->FromString("1"); });
  };
  const auto failWith = [&](auto failure) {
    map.port.onRead = map.port.onWrite = [failure](int64_t, int64_t) { throw failure; };
  };
  failWith(GenericException("the cable is %s out", "port.cpp", 17));
  outcomes([](auto&& action) { EXPECT_EQ(refusal<GenericException>(action), "the cable is %s out"); });
  failWith(OutOfRangeException("the port's own words", "port.cpp", 18));
  outcomes([](auto&& action) { EXPECT_EQ(refusal<OutOfRangeException>(action), "the port's own words"); });
  failWith(std::out_of_range("not one of ours"));
  outcomes([](auto&& action) { EXPECT_EQ(refusal<std::out_of_range>(action), "not one of ours"); });
  failWith(42);
  outcomes([](auto&& action) { EXPECT_THROW(action(), int); });
  failWith(std::bad_alloc());
  outcomes([](auto&& action) { EXPECT_THROW(action(), std::bad_alloc); });

  map.port.onRead = map.port.onWrite = nullptr;
  map.port.poke(0, {3});
  EXPECT_EQ(map.real("Knife")->GetValue(), 6) << "nothing of the failures stays";
  EXPECT_EQ(map.mode("Guarded"), RW);
}

}  // namespace

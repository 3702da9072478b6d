// What is read from the device, how often, and what nodes over one place know of each other.
#include "TestMap.h"

using testing::ElementsAre;

namespace {

std::string cachable(const std::string& mode) {
  return tag("Cachable", mode);
}

}  // namespace

TEST(Caching, ModeIsTheWeakestOfTheNodeAndWhatItReads) {
  TestMap t(
      reg("IntReg", "Through", 0, 1) + reg("IntReg", "Around", 1, 1, cachable("WriteAround")) +
      reg("IntReg", "None", 2, 1, cachable("NoCache")) + reg("IntReg", "No", 3, 1, cachable("No")) +
      "<IntReg Name='ByAddress'><pAddress>None</pAddress><Length>1</Length><pPort>Device</pPort></IntReg>"
      "<Integer Name='OverThrough'><pValue>Through</pValue></Integer>"
      "<Integer Name='OverAround'><pValue>Around</pValue></Integer>"
      "<Integer Name='LimitedByNone'><Value>0</Value><pMax>None</pMax></Integer>"
      "<Integer Name='GuardedByNone'><Value>0</Value><pIsLocked>None</pIsLocked></Integer>"
      "<IntSwissKnife Name='Knife'><pVariable Name='A'>Around</pVariable><pVariable Name='N'>None</pVariable>"
      "<Formula>A+N</Formula></IntSwissKnife>"
      "<Converter Name='Conv'><FormulaTo>FROM</FormulaTo><FormulaFrom>TO</FormulaFrom><pValue>OverAround</pValue>"
      "</Converter>"
      "<Float Name='Floating'><Value>1</Value></Float><Integer Name='OverFloating'><pValue>Floating</pValue></Integer>"
      "<Boolean Name='Bool'><Value>true</Value></Boolean>"
      "<String Name='Str'><Value>x</Value></String>");
  const std::map<std::string, ECachingMode> expected = {{"Through", WriteThrough},
                                                        {"Around", WriteAround},
                                                        {"None", NoCache},
                                                        {"No", NoCache},
                                                        {"ByAddress", NoCache},
                                                        {"OverThrough", WriteThrough},
                                                        {"OverAround", WriteAround},
                                                        {"LimitedByNone", NoCache},
                                                        {"GuardedByNone", WriteThrough},
                                                        {"Knife", NoCache},
                                                        {"Conv", WriteAround},
                                                        {"Floating", WriteAround},
                                                        {"OverFloating", WriteAround},
                                                        {"Bool", WriteThrough},
                                                        {"Str", WriteThrough}};
  for (const auto& [name, mode] : expected) {
    EXPECT_EQ(t.node(name)->GetCachingMode(), mode) << name;
    EXPECT_EQ(t.node(name)->IsCachable(), mode != NoCache) << name;
  }
}

// One table for every kind of chain: accesses of (cold read, second read, write, read back).
TEST(Caching, AccessesOfEachModeThroughChains) {
  const std::string chain =
      "<Integer Name='I'><pValue>R</pValue></Integer><Float Name='F'><pValue>I</pValue></Float>"
      "<IntConverter Name='C'><FormulaTo>FROM * 2</FormulaTo><FormulaFrom>TO / 2</FormulaFrom><pValue>I</pValue>"
      "</IntConverter><Integer Name='Top'><pValue>C</pValue></Integer>"
      "<Boolean Name='B'><pValue>I</pValue></Boolean>";
  struct Case {
    std::string mode, accesses;
  };
  for (const Case& each : {Case{"WriteThrough", "1r0w 0r0w 0r1w 0r0w"}, Case{"WriteAround", "1r0w 0r0w 0r1w 1r0w"},
                           Case{"NoCache", "1r0w 1r0w 0r1w 1r0w"}}) {
    for (const std::string top : {"R", "I", "F", "C", "Top", "B"}) {
      TestMap t(reg("IntReg", "R", 0, 2, cachable(each.mode)) + chain);
      const CValuePtr node = t.value(top);
      std::string accesses;
      EXPECT_FALSE(node->IsValueCacheValid()) << top;
      node->ToString();
      accesses += t.port.counts();
      EXPECT_EQ(node->IsValueCacheValid(), each.mode != "NoCache") << top << each.mode;
      node->ToString();
      accesses += " " + t.port.counts();
      node->FromString("1");
      accesses += " " + t.port.counts();
      EXPECT_EQ(node->IsValueCacheValid(), each.mode == "WriteThrough") << top << each.mode;
      EXPECT_EQ(node->ToString(), "1") << top << each.mode;
      accesses += " " + t.port.counts();
      EXPECT_EQ(accesses, each.accesses) << top << " over " << each.mode;
    }
  }
}

TEST(Caching, ValuesBelowAWriteComeFromTheEndOfTheChain) {
  TestMap t(
      "<Float Name='Grid'><pValue>I</pValue></Float><Integer "
      "Name='I'><Value>1</Value><Min>1</Min><Inc>3</Inc></Integer>"
      "<Integer Name='Narrow'><pValue>Byte</pValue></Integer>" +
      reg("IntReg", "Byte", 0, 1) +
      "<IntConverter Name='Sum'><pVariable Name='OLDTO'>Cell</pVariable><FormulaTo>OLDTO + FROM</FormulaTo>"
      "<FormulaFrom>TO</FormulaFrom><pValue>Cell</pValue></IntConverter><Integer "
      "Name='Cell'><Value>0</Value></Integer>");
  t.real("Grid")->SetValue(2.4);
  EXPECT_EQ(t.real("Grid")->GetValue(), 1.0);
  t.integer("Narrow")->SetValue(0x1ff, false);
  EXPECT_EQ(t.integer("Narrow")->GetValue(), 0xff);
  EXPECT_EQ(t.port.counts(), "0r1w");
  for (const int64_t expected : {1, 2, 3}) {
    t.integer("Sum")->SetValue(1);
    EXPECT_EQ(t.integer("Sum")->GetValue(), expected);
  }
}

TEST(Caching, ReadModifyWriteConverterReadsOnce) {
  TestMap t(reg("IntReg", "R", 0, 1) +
            "<IntConverter Name='C'><pVariable Name='OLD'>R</pVariable><FormulaTo>(OLD &amp; 0xF0) | FROM</FormulaTo>"
            "<FormulaFrom>TO &amp; 0x0F</FormulaFrom><pValue>R</pValue></IntConverter>");
  t.port.poke(0, {0xa0});
  t.map->InvalidateNodes();
  t.integer("C")->SetValue(5);
  EXPECT_EQ(t.port.counts(), "1r1w") << "first write after an invalidation";
  t.integer("C")->SetValue(6);
  EXPECT_EQ(t.port.counts(), "0r1w") << "second write";
  t.node("C")->InvalidateNode();
  t.node("R")->InvalidateNode();
  EXPECT_EQ(t.integer("C")->GetValue(), 6);
  EXPECT_EQ(t.integer("C")->GetValue(), 6);
  EXPECT_EQ(t.port.counts(), "1r0w") << "reading twice";
  EXPECT_EQ(t.port.memory[0], 0xa6);
}

TEST(Caching, IgnoreCacheGoesDownTheValueChainOnly) {
  TestMap t(
      "<Integer Name='Top'><pValue>C</pValue><pMax>Max</pMax></Integer>"
      "<IntConverter Name='C'><pVariable Name='V'>Var</pVariable><FormulaTo>FROM - V</FormulaTo>"
      "<FormulaFrom>TO + V</FormulaFrom><pValue>Src</pValue></IntConverter>"
      "<IntReg "
      "Name='Src'><pAddress>Addr</pAddress><Length>1</Length><AccessMode>RW</AccessMode><pPort>Device</pPort></"
      "IntReg>" +
      reg("IntReg", "Addr", 0, 1) + reg("IntReg", "Var", 1, 1) + reg("IntReg", "Max", 2, 1));
  t.port.poke(0, {8, 1, 100, 0, 0, 0, 0, 0, 5});
  EXPECT_EQ(t.integer("Top")->GetValue(), 6);
  EXPECT_EQ(t.integer("Top")->GetMax(), 100);
  t.port.counts();
  t.port.poke(1, {50, 50});
  t.port.poke(8, {7});
  EXPECT_EQ(t.integer("Top")->GetValue(), 6);
  EXPECT_EQ(t.integer("Top")->GetValue(false, true), 8);
  EXPECT_EQ(t.port.reads, (std::map<BytePort::Access, int>{{{8, 1}, 1}}));
  EXPECT_EQ(t.integer("Src")->GetValue(), 7) << "the fresh value refills the caches";
  EXPECT_EQ(t.integer("Top")->GetValue(), 8);
  EXPECT_EQ(t.integer("Top")->GetMax(), 100);
  EXPECT_EQ(t.port.counts(), "1r0w");
}

TEST(Caching, FreshBytesThatDifferDropDependentsWithoutCallbacks) {
  TestMap t(reg("IntReg", "R", 0, 1) +
            "<Integer Name='A'><pValue>R</pValue></Integer>"
            "<IntSwissKnife Name='K'><pVariable Name='X'>R</pVariable><Formula>X * 10</Formula></IntSwissKnife>"
            "<Integer Name='L'><Value>0</Value><pMax>K</pMax></Integer>");
  int fired = 0;
  const auto count = [&](INode*) { ++fired; };
  const CallbackHandleType handle = Register(t.node("K"), count);
  t.port.poke(0, {1});
  EXPECT_EQ(t.integer("L")->GetMax(), 10);
  EXPECT_EQ(t.integer("A")->GetValue(), 1);
  t.port.poke(0, {2});
  EXPECT_EQ(t.integer("A")->GetValue(false, true), 2);
  EXPECT_EQ(t.integer("R")->GetValue(), 2);
  EXPECT_EQ(t.integer("K")->GetValue(), 20);
  EXPECT_EQ(t.integer("L")->GetMax(), 20);
  EXPECT_EQ(t.port.counts(), "2r0w");
  EXPECT_EQ(fired, 0);
  Deregister(handle);
}

TEST(Caching, ValidFlagFollowsReadsWritesAndInvalidations) {
  TestMap t(
      "<Integer Name='A'><pValue>B</pValue></Integer><Integer Name='B'><pValue>R</pValue></Integer>"
      "<Float Name='F'><Value>1</Value></Float><Integer Name='OverF'><pValue>F</pValue></Integer>" +
      reg("IntReg", "R", 0, 1) + reg("IntReg", "N", 1, 1, cachable("NoCache")));
  EXPECT_TRUE(t.value("F")->IsValueCacheValid()) << "a floating node always knows its value";
  EXPECT_FALSE(t.value("A")->IsValueCacheValid());
  t.integer("A")->GetValue();
  for (const char* name : {"A", "B", "R"}) EXPECT_TRUE(t.value(name)->IsValueCacheValid()) << name;
  t.node("A")->InvalidateNode();
  EXPECT_FALSE(t.value("A")->IsValueCacheValid());
  EXPECT_TRUE(t.value("B")->IsValueCacheValid());
  t.integer("R")->SetValue(4);
  EXPECT_TRUE(t.value("R")->IsValueCacheValid());
  EXPECT_FALSE(t.value("B")->IsValueCacheValid()) << "its source was written behind its back";
  t.integer("A")->SetValue(5);
  for (const char* name : {"A", "B", "R"}) EXPECT_TRUE(t.value(name)->IsValueCacheValid()) << name;
  t.node("R")->InvalidateNode();
  for (const char* name : {"A", "B", "R"}) EXPECT_FALSE(t.value(name)->IsValueCacheValid()) << name;
  t.integer("OverF")->SetValue(3, false);
  EXPECT_FALSE(t.value("OverF")->IsValueCacheValid()) << "a float that holds its value is WriteAround";
  t.integer("N")->GetValue();
  t.integer("N")->SetValue(1);
  EXPECT_FALSE(t.value("N")->IsValueCacheValid());
}

TEST(Caching, NodesOverOnePlaceAgree) {
  TestMap t(reg("IntReg", "A", 0, 4) + reg("IntReg", "B", 0, 4, tag("Endianess", "BigEndian")) +
            reg("Register", "Raw", 0, 4) + "<Integer Name='OverB'><pValue>B</pValue></Integer>");
  t.port.poke(0, {1, 0, 0, 2});
  EXPECT_EQ(t.integer("A")->GetValue(), 0x02000001);
  EXPECT_EQ(t.integer("OverB")->GetValue(), 0x01000002);
  EXPECT_EQ(t.value("Raw")->ToString(), "0x01000002");
  EXPECT_EQ(t.port.counts(), "1r0w") << "one read serves them all";
  t.integer("A")->SetValue(7);
  EXPECT_EQ(t.integer("OverB")->GetValue(), 0x07000000);
  EXPECT_EQ(t.value("Raw")->ToString(), "0x07000000");
  EXPECT_EQ(t.port.counts(), "0r1w");
  t.node("A")->InvalidateNode();
  t.port.poke(0, {3});
  EXPECT_EQ(t.value("Raw")->ToString(), "0x03000000") << "invalidating one node forgets the place";
  EXPECT_EQ(t.integer("A")->GetValue(), 3);
  EXPECT_EQ(t.integer("OverB")->GetValue(), 0x03000000);
  EXPECT_EQ(t.port.counts(), "1r0w");
}

TEST(Caching, EveryKindOfWriteUpdatesWhatItOverlaps) {
  for (const std::string mode : {"WriteThrough", "WriteAround", "NoCache"}) {
    for (const auto& [address, length] : std::vector<std::pair<int, int>>{{0, 4}, {1, 2}, {3, 1}, {0, 8}}) {
      TestMap t(reg("IntReg", "Reader", 0, 4) + "<Integer Name='Over'><pValue>Reader</pValue></Integer>" +
                "<IntSwissKnife Name='K'><pVariable Name='X'>Over</pVariable><Formula>X</Formula></IntSwissKnife>" +
                reg("Register", "Writer", address, length, cachable(mode)));
      const std::string where = mode + " at " + std::to_string(address) + ", " + std::to_string(length);
      const auto expectAgreement = [&](const char* when) {
        const int64_t stored = t.port.memory[0] | t.port.memory[1] << 8 | t.port.memory[2] << 16 |
                               static_cast<int64_t>(t.port.memory[3]) << 24;
        EXPECT_EQ(t.integer("K")->GetValue(), stored) << where << when;
        EXPECT_EQ(t.integer("Over")->GetValue(), stored) << where << when;
        EXPECT_EQ(t.integer("Reader")->GetValue(), stored) << where << when;
      };
      expectAgreement("");
      std::vector<uint8_t> content(static_cast<size_t>(length), 0x5a);
      t.bytes("Writer")->Set(content.data(), length);
      expectAgreement(", first write");
      // The place is forgotten by one of its users: what others computed from it must not outlive the next write.
      t.node("Reader")->InvalidateNode();
      expectAgreement(", invalidated");
      content.assign(content.size(), 0x33);
      t.bytes("Writer")->Set(content.data(), length);
      expectAgreement(", second write");
      content.assign(content.size(), 0x44);
      t.bytes("Writer")->Set(content.data(), 1);
      expectAgreement(", partial write");
    }
  }
}

TEST(Caching, PlaceForgottenThroughOneNodeStillWarnsTheOthers) {
  TestMap t(reg("IntReg", "A", 0, 4) + reg("IntReg", "B", 0, 4) + "<Integer Name='OverB'><pValue>B</pValue></Integer>" +
            reg("IntReg", "Half", 0, 2));
  EXPECT_EQ(t.integer("OverB")->GetValue(), 0);
  t.integer("A")->GetValue();
  t.node("A")->InvalidateNode();
  t.integer("Half")->SetValue(0x1234);
  EXPECT_EQ(t.integer("OverB")->GetValue(), 0x1234);
}

TEST(Caching, NeighboursAreLeftAlone) {
  TestMap t(reg("IntReg", "Before", 0, 4) + reg("IntReg", "At", 4, 4) + reg("IntReg", "After", 8, 4) +
            "<Port Name='Other'/><IntReg "
            "Name='Elsewhere'><Address>4</Address><Length>4</Length><pPort>Other</pPort></IntReg>");
  BytePort other;
  t.map->Connect(&other, "Other");
  for (const char* name : {"Before", "At", "After", "Elsewhere"}) t.integer(name)->GetValue();
  t.port.counts();
  other.counts();
  t.integer("At")->SetValue(5);
  for (const char* name : {"Before", "At", "After", "Elsewhere"}) t.integer(name)->GetValue();
  EXPECT_EQ(t.port.counts(), "0r1w");
  EXPECT_EQ(other.counts(), "0r0w");
  t.map->Connect(nullptr, "Other");
}

TEST(Caching, OverlapAloneCallsNobodyBack) {
  TestMap t(reg("IntReg", "A", 0, 4) + reg("IntReg", "B", 2, 4) + "<Integer Name='OverB'><pValue>B</pValue></Integer>");
  int fired = 0;
  const auto count = [&](INode*) { ++fired; };
  Register(t.node("B"), count);
  Register(t.node("OverB"), count);
  t.integer("OverB")->GetValue();
  t.integer("A")->SetValue(-1, false);
  EXPECT_EQ(t.integer("OverB")->GetValue(), 0xffff);
  EXPECT_EQ(fired, 0);
}

TEST(Caching, StatusAndCommandAtOneAddress) {
  TestMap t(reg("IntReg", "Status", 0, 4, tag("AccessMode", "RO")) +
            "<Integer Name='Over'><pValue>Status</pValue></Integer>" +
            reg("IntReg", "Order", 0, 4, tag("AccessMode", "WO")) + reg("IntReg", "Both", 0, 4));
  t.port.onWrite = [&](int64_t, int64_t) {};
  EXPECT_EQ(t.integer("Over")->GetValue(), 0);
  t.integer("Order")->SetValue(1);
  t.port.poke(0, {0x80});  // the device turns the order into a status
  EXPECT_EQ(t.integer("Status")->GetValue(), 0x80);
  EXPECT_EQ(t.integer("Over")->GetValue(), 0x80);
  EXPECT_EQ(t.integer("Both")->GetValue(), 0x80);
  EXPECT_EQ(t.port.counts(), "2r1w");
  t.integer("Both")->SetValue(2);
  t.port.poke(0, {0x81});
  EXPECT_EQ(t.integer("Both")->GetValue(), 2) << "one who may read and write trusts what it wrote";
  EXPECT_EQ(t.integer("Over")->GetValue(), 0x81) << "who only reads wants to see the device";
  EXPECT_EQ(t.integer("Both")->GetValue(), 0x81) << "and what it saw is news for all";
  EXPECT_EQ(t.port.counts(), "1r1w");
}

TEST(Caching, PortAccessBesideTheRegistersIsNotNoticed) {
  TestMap t(reg("IntReg", "R", 0, 1) + "<Integer Name='A'><pValue>R</pValue></Integer>");
  const CPortPtr port = t.node("Device");
  EXPECT_EQ(t.integer("A")->GetValue(), 0);
  const uint8_t byte = 9;
  port->Write(&byte, 0, 1);
  EXPECT_EQ(t.integer("A")->GetValue(), 0);
  t.port.InvalidateNode();
  EXPECT_EQ(t.integer("A")->GetValue(), 9);
  EXPECT_EQ(t.port.counts(), "2r1w");
}

TEST(Caching, TablesOfRegistersRememberEveryPlaceTheyPassed) {
  TestMap t(
      "<IntReg Name='R'><Address>0</Address><pIndex Offset='4'>I</pIndex><Length>4</Length>"
      "<AccessMode>RW</AccessMode><pPort>Device</pPort></IntReg><Integer Name='I'><Value>0</Value></Integer>");
  const CIntegerPtr r = t.integer("R"), i = t.integer("I");
  t.port.poke(0, {1, 0, 0, 0, 2});
  for (int round = 0; round < 2; ++round) {
    for (const int64_t index : {0, 1}) {
      i->SetValue(index);
      EXPECT_EQ(r->GetValue(), index + 1);
    }
  }
  // The index invalidates the register, so that content older than that is not used.
  EXPECT_EQ(t.port.counts(), "4r0w");
}

TEST(Caching, NumberOfPlacesIsBounded) {
  TestMap t(
      "<IntReg Name='R'><Address>0</Address><pIndex Offset='2'>I</pIndex><Length>2</Length>"
      "<AccessMode>RW</AccessMode><pPort>Device</pPort></IntReg><Integer Name='I'><Value>0</Value></Integer>" +
      reg("IntReg", "First", 0, 2) + "<Integer Name='Over'><pValue>First</pValue></Integer>");
  t.port.memory.resize(2 * 70000);
  const CIntegerPtr r = t.integer("R"), i = t.integer("I");
  EXPECT_EQ(t.integer("Over")->GetValue(), 0);
  for (int64_t index = 1; index < 70000; ++index) {
    i->SetValue(index);
    r->SetValue(index % 60000);
  }
  EXPECT_EQ(r->GetValue(), 9999);
  EXPECT_EQ(t.port.counts(), "1r69999w");
  // The place of First was the oldest and is gone: its next write must still be seen.
  i->SetValue(0);
  r->SetValue(77);
  EXPECT_EQ(t.integer("Over")->GetValue(), 77);
}

TEST(Caching, LongContentsAreBoundedTogether) {
  TestMap t(
      "<Register Name='R'><Address>0</Address><pIndex Offset='1'>I</pIndex><Length>0x1000000</Length>"
      "<pPort>Device</pPort></Register><Integer Name='I'><Value>0</Value></Integer>");
  t.port.memory.resize((16 << 20) + 16);
  std::vector<uint8_t> content(16 << 20);
  for (int64_t index = 0; index < 8; ++index) {
    t.integer("I")->SetValue(index);
    t.bytes("R")->Get(content.data(), 16 << 20);
    t.bytes("R")->Get(content.data(), 16 << 20);
  }
  EXPECT_EQ(t.port.counts(), "8r0w");
}

TEST(Caching, FailedWriteForgetsWhatTheDeviceMayHaveChanged) {
  TestMap t(reg("IntReg", "R", 0, 1) + reg("IntReg", "Wide", 0, 2) +
            "<Integer Name='A'><pValue>R</pValue></Integer>"
            "<Integer Name='OverWide'><pValue>Wide</pValue></Integer>");
  EXPECT_EQ(t.integer("A")->GetValue(), 0);
  EXPECT_EQ(t.integer("OverWide")->GetValue(), 0);
  t.port.onWrite = [&](int64_t, int64_t) {
    t.port.poke(0, {6});
    throw TIMEOUT_EXCEPTION("answer lost");
  };
  EXPECT_THROW(t.integer("A")->SetValue(5), TimeoutException);
  EXPECT_EQ(t.integer("R")->GetValue(), 6);
  EXPECT_EQ(t.integer("A")->GetValue(), 6);
  EXPECT_EQ(t.integer("OverWide")->GetValue(), 6);
  t.port.counts();
  EXPECT_THROW(t.integer("A")->SetValue(256), OutOfRangeException);
  EXPECT_EQ(t.integer("A")->GetValue(), 6);
  EXPECT_EQ(t.port.counts(), "0r0w") << "refused before the first byte: nothing is forgotten";
}

TEST(Caching, FailedReadsKeepNothing) {
  TestMap t(reg("IntReg", "R", 0, 1) + "<Integer Name='A'><pValue>R</pValue></Integer>");
  t.port.onRead = [](int64_t, int64_t) { throw TIMEOUT_EXCEPTION("asleep"); };
  for (int i = 0; i < 2; ++i) EXPECT_EQ(refusal<TimeoutException>([&] { t.integer("A")->GetValue(); }), "asleep");
  EXPECT_FALSE(t.value("A")->IsValueCacheValid());
  t.port.onRead = nullptr;
  EXPECT_EQ(t.integer("A")->GetValue(), 0);
}

TEST(Caching, ConnectingAnotherDeviceForgetsTheFirst) {
  TestMap t(reg("IntReg", "R", 0, 1) +
            "<Integer Name='A'><pValue>R</pValue></Integer>"
            "<IntSwissKnife Name='K'><pVariable Name='X'>A</pVariable><Formula>X</Formula></IntSwissKnife>");
  EXPECT_EQ(t.integer("K")->GetValue(), 0);
  BytePort second;
  second.poke(0, {8});
  t.map->Connect(&second);
  EXPECT_EQ(t.integer("K")->GetValue(), 8);
  t.map->Connect(static_cast<IPort*>(nullptr));
  EXPECT_EQ(t.mode("K"), NI);
  EXPECT_THROW(t.integer("K")->GetValue(), AccessException);
  t.map->Connect(&t.port);
  EXPECT_EQ(t.integer("K")->GetValue(), 0);
}

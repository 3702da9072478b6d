// What is read from the device, how often, and what nodes over one place know of each other.
#include "TestMap.h"

namespace {

std::string cachable(const std::string& mode) { return tag("Cachable", mode); }

// A register of four bytes whose address moves with I.
std::string moving(const std::string& type, const std::string& step, const std::string& length) {
  return "<" + type + " Name='R'><Address>0</Address><pIndex Offset='" + step + "'>I</pIndex>" + tag("Length", length) +
         "<AccessMode>RW</AccessMode><pPort>Device</pPort></" + type + ">" + held("I");
}

}  // namespace

TEST(Caching, ModeIsTheWeakestOfTheNodeAndWhatItReads) {
  TestMap t(reg("IntReg", "Through", 0, 1) + reg("IntReg", "Around", 1, 1, cachable("WriteAround")) +
            reg("IntReg", "None", 2, 1, cachable("NoCache")) + reg("IntReg", "No", 3, 1, cachable("No")) +
            reg("FloatReg", "Real", 4, 4) + reg("FloatReg", "RealThrough", 8, 4, cachable("WriteThrough")) +
            "<IntReg Name='ByAddress'><pAddress>None</pAddress><Length>1</Length><pPort>Device</pPort></IntReg>" +
            over("OverThrough", "Through") + over("OverAround", "Around") + over("OverMoving", "ByAddress") +
            held("LimitedByNone", 0, tag("pMax", "None")) + held("GuardedByNone", 0, tag("pIsLocked", "None")) +
            "<IntSwissKnife Name='Knife'><pVariable Name='A'>Around</pVariable><pVariable Name='N'>None</pVariable>"
            "<Formula>A+N</Formula></IntSwissKnife>" +
            knife("AroundKnife", "OverAround") +
            over("Conv", "OverAround", "<FormulaTo>FROM</FormulaTo><FormulaFrom>TO</FormulaFrom>", "Converter") +
            "<Float Name='Floating'><Value>1</Value></Float>" + over("OverFloating", "Floating") +
            "<Boolean Name='Bool'><Value>true</Value></Boolean><String Name='Str'><Value>x</Value></String>");
  const std::pair<ECachingMode, std::vector<std::string>> expected[] = {
      {WriteThrough, {"Through", "OverThrough", "GuardedByNone", "Bool", "Str", "RealThrough"}},
      {WriteAround, {"Around", "OverAround", "Conv", "Floating", "OverFloating", "Real", "AroundKnife"}},
      {NoCache, {"None", "No", "ByAddress", "OverMoving", "LimitedByNone", "Knife"}}};
  for (const auto& [mode, names] : expected) {
    for (const std::string& name : names) {
      EXPECT_EQ(t.node(name)->GetCachingMode(), mode) << name;
      EXPECT_EQ(t.node(name)->IsCachable(), mode != NoCache) << name;
    }
  }
}

// One table for every kind of chain: accesses of (cold read, second read, write, read back).
TEST(Caching, AccessesOfEachModeThroughChains) {
  const std::string chain =
      over("I", "R") + over("F", "I", "", "Float") + over("Top", "C") +
      over("C", "I", "<FormulaTo>FROM * 2</FormulaTo><FormulaFrom>TO / 2</FormulaFrom>", "IntConverter") +
      over("B", "I", "", "Boolean");
  for (const auto& [mode, expected] :
       std::initializer_list<std::pair<std::string, std::string>>{{"WriteThrough", "1r0w 0r0w 0r1w 0r0w"},
                                                                  {"WriteAround", "1r0w 0r0w 0r1w 1r0w"},
                                                                  {"NoCache", "1r0w 1r0w 0r1w 1r0w"}}) {
    for (const std::string top : {"R", "I", "F", "C", "Top", "B"}) {
      TestMap t(reg("IntReg", "R", 0, 2, cachable(mode)) + chain);
      const CValuePtr node = t.value(top);
      EXPECT_FALSE(node->IsValueCacheValid()) << top;
      node->ToString();
      std::string accesses = t.port.counts();
      EXPECT_EQ(node->IsValueCacheValid(), mode != "NoCache") << top << mode;
      node->ToString();
      accesses += " " + t.port.counts();
      node->FromString("1");
      accesses += " " + t.port.counts();
      EXPECT_EQ(node->IsValueCacheValid(), mode == "WriteThrough") << top << mode;
      EXPECT_EQ(node->ToString(), "1") << top << mode;
      EXPECT_EQ(accesses + " " + t.port.counts(), expected) << top << " over " << mode;
    }
  }
}

TEST(Caching, ReadModifyWriteConverterReadsOnce) {
  TestMap t(reg("IntReg", "R", 0, 1) +
            over("C", "R",
                 "<pVariable Name='OLD'>R</pVariable><FormulaTo>(OLD &amp; 0xF0) | FROM</FormulaTo>"
                 "<FormulaFrom>TO &amp; 0x0F</FormulaFrom>",
                 "IntConverter"));
  t.port.poke(0, {0xa0});
  t.map->InvalidateNodes();
  t.integer("C")->SetValue(5);
  EXPECT_EQ(t.port.counts(), "1r1w") << "first write after an invalidation";
  t.integer("C")->SetValue(6);
  EXPECT_EQ(t.port.counts(), "0r1w") << "second write";
  t.node("C")->InvalidateNode();
  t.node("R")->InvalidateNode();
  for (int i = 0; i < 2; ++i) EXPECT_EQ(t.integer("C")->GetValue(), 6);
  EXPECT_EQ(t.port.counts(), "1r0w") << "reading twice";
  EXPECT_EQ(t.port.memory[0], 0xa6);
}

TEST(Caching, IgnoreCacheGoesDownTheValueChainOnly) {
  TestMap t(over("Top", "C", tag("pMax", "Max")) +
            over("C", "Src",
                 "<pVariable Name='V'>Var</pVariable><FormulaTo>FROM - V</FormulaTo><FormulaFrom>TO + V</FormulaFrom>",
                 "IntConverter") +
            "<IntReg Name='Src'><pAddress>Addr</pAddress><Length>1</Length><AccessMode>RW</AccessMode>"
            "<pPort>Device</pPort></IntReg>" +
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
  TestMap t(reg("IntReg", "R", 0, 1) + over("A", "R") + knife("K", "R", "X * 10") + held("L", 0, tag("pMax", "K")));
  int fired = 0;
  Register(t.node("K"), [&](INode*) { ++fired; });
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
}

TEST(Caching, ValidFlagFollowsReadsWritesAndInvalidations) {
  TestMap t(over("A", "B") + over("B", "R") + "<Float Name='F'><Value>1</Value></Float>" + over("OverF", "F") +
            reg("IntReg", "R", 0, 1) + reg("IntReg", "N", 1, 1, cachable("NoCache")));
  const auto valid = [&] {
    std::string names;
    for (const char* name : {"A", "B", "R"}) names += t.value(name)->IsValueCacheValid() ? name : "";
    return names;
  };
  EXPECT_TRUE(t.value("F")->IsValueCacheValid()) << "a floating node always knows its value";
  EXPECT_EQ(valid(), "");
  t.integer("A")->GetValue();
  EXPECT_EQ(valid(), "ABR");
  t.node("A")->InvalidateNode();
  EXPECT_EQ(valid(), "BR");
  t.integer("R")->SetValue(4);
  EXPECT_EQ(valid(), "R") << "B's source was written behind its back";
  t.integer("A")->SetValue(5);
  EXPECT_EQ(valid(), "ABR");
  t.node("R")->InvalidateNode();
  EXPECT_EQ(valid(), "");
  t.integer("OverF")->SetValue(3, false);
  EXPECT_FALSE(t.value("OverF")->IsValueCacheValid()) << "a float that holds its value is WriteAround";
  t.integer("N")->GetValue();
  t.integer("N")->SetValue(1);
  EXPECT_FALSE(t.value("N")->IsValueCacheValid());
}

TEST(Caching, NodesOverOnePlaceAgree) {
  TestMap t(reg("IntReg", "A", 0, 4) + reg("IntReg", "B", 0, 4, tag("Endianess", "BigEndian")) +
            reg("Register", "Raw", 0, 4) + over("OverB", "B"));
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

TEST(Caching, EveryKindOfWriteUpdatesWhatItOverlapsAndCallsNobodyBack) {
  for (const std::string mode : {"WriteThrough", "WriteAround", "NoCache"}) {
    for (const auto& [address, length] : std::vector<std::pair<int, int>>{{0, 4}, {1, 2}, {3, 1}, {0, 8}}) {
      TestMap t(reg("IntReg", "Reader", 0, 4) + over("Over", "Reader") + knife("K", "Over") +
                reg("Register", "Writer", address, length, cachable(mode)));
      const std::string where = mode + " at " + std::to_string(address) + ", " + std::to_string(length);
      const auto expectAgreement = [&](const char* when) {
        for (const char* name : {"K", "Over", "Reader"})
          EXPECT_EQ(t.integer(name)->GetValue(), t.port.word(0)) << where << when;
      };
      int fired = 0;
      Register(t.node("Over"), [&](INode*) { ++fired; });
      std::vector<uint8_t> content(static_cast<size_t>(length), 0x5a);
      const auto write = [&](uint8_t byte, int64_t count) {
        content.assign(content.size(), byte);
        t.bytes("Writer")->Set(content.data(), count);
        EXPECT_EQ(fired, 0) << "overlap alone calls nobody back";
      };
      expectAgreement("");
      write(0x5a, length);
      expectAgreement(", first write");
      // The place is forgotten by one of its users: what others computed from it must not outlive the next write.
      t.node("Reader")->InvalidateNode();
      fired = 0;
      expectAgreement(", invalidated");
      write(0x33, length);
      expectAgreement(", second write");
      write(0x44, 1);
      expectAgreement(", partial write");
    }
  }
}

TEST(Caching, NodesWithOtherRulesTakeNothingFromEachOther) {
  TestMap t(reg("Register", "Cached", 0, 4) + reg("Register", "Never", 0, 4, tag("Cachable", "NoCache")) +
            reg("IntReg", "Command", 8, 4, tag("AccessMode", "WO")) + reg("IntReg", "Status", 8, 4));
  uint8_t bytes[4];
  t.bytes("Cached")->Get(bytes, 4);
  t.port.poke(0, {7});
  t.bytes("Never")->Get(bytes, 1);
  EXPECT_EQ(bytes[0], 7) << "the first bytes alone";
  t.integer("Command")->SetValue(5);
  t.port.poke(8, {9});
  EXPECT_EQ(t.integer("Status")->GetValue(), 9) << "what cannot be read is not what was written";
}

TEST(Caching, PlaceForgottenThroughOneNodeStillWarnsTheOthers) {
  TestMap t(reg("IntReg", "A", 0, 4) + reg("IntReg", "B", 0, 4) + over("OverB", "B") + reg("IntReg", "Half", 0, 2));
  EXPECT_EQ(t.integer("OverB")->GetValue(), 0);
  t.integer("A")->GetValue();
  t.node("A")->InvalidateNode();
  t.integer("Half")->SetValue(0x1234);
  EXPECT_EQ(t.integer("OverB")->GetValue(), 0x1234);
}

// B has the register of A and was never read: once invalidated, it must not take what A has read before.
TEST(Caching, ForgottenThroughOneNodeIsNotTakenFromAnother) {
  const auto content = [](const CRegisterPtr& node) {
    std::vector<uint8_t> bytes(4);
    node->Get(bytes.data(), 4);
    return bytes;
  };
  for (const bool partialWrite : {false, true}) {
    TestMap t(reg("Register", "A", 0, 4) + reg("Register", "B", 0, 4));
    t.port.poke(0, {1, 2, 3, 4});
    content(t.bytes("A"));
    t.port.poke(0, {5, 6, 7, 8});
    t.node("B")->InvalidateNode();
    const uint8_t nine = 9;
    if (partialWrite) t.bytes("B")->Set(&nine, 1);
    for (const char* name : {"B", "A"})
      EXPECT_EQ(content(t.bytes(name)), (std::vector<uint8_t>{uint8_t(partialWrite ? 9 : 5), 6, 7, 8})) << name;
  }
}

TEST(Caching, ResultOfOldAndFreshContentIsNotKept) {
  TestMap t(reg("IntReg", "P", 0, 4) + reg("IntReg", "Q", 0, 4) +
            "<IntSwissKnife Name='X'><pVariable Name='P'>P</pVariable><pVariable Name='Q'>Q</pVariable>"
            "<Formula>P * 1000 + Q</Formula></IntSwissKnife>");
  t.port.poke(0, {1});
  EXPECT_EQ(t.integer("P")->GetValue(), 1);
  t.port.poke(0, {2});
  t.node("Q")->InvalidateNode();
  t.integer("X")->GetValue();  // an old P with a fresh Q may be answered, but not remembered
  EXPECT_EQ(t.integer("X")->GetValue(), 2002);
}

TEST(Caching, NeighboursAreLeftAlone) {
  TestMap t(reg("IntReg", "Before", 0, 4) + reg("IntReg", "At", 4, 4) + reg("IntReg", "After", 8, 4) +
            "<Port Name='Other'/><IntReg Name='Elsewhere'><Address>4</Address><Length>4</Length><pPort>Other</pPort>"
            "</IntReg>");
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

TEST(Caching, StatusAndCommandAtOneAddress) {
  TestMap t(reg("IntReg", "Status", 0, 4, tag("AccessMode", "RO")) + over("Over", "Status") +
            reg("IntReg", "Order", 0, 4, tag("AccessMode", "WO")) + reg("IntReg", "Both", 0, 4));
  EXPECT_EQ(t.integer("Over")->GetValue(), 0);
  t.integer("Order")->SetValue(1);
  t.port.poke(0, {0x80});  // the device turns the order into a status
  for (const char* name : {"Status", "Over", "Both"}) EXPECT_EQ(t.integer(name)->GetValue(), 0x80) << name;
  EXPECT_EQ(t.port.counts(), "2r1w");
  t.integer("Both")->SetValue(2);
  t.port.poke(0, {0x81});
  EXPECT_EQ(t.integer("Both")->GetValue(), 2) << "one who may read and write trusts what it wrote";
  EXPECT_EQ(t.integer("Over")->GetValue(), 0x81) << "who only reads wants to see the device";
  EXPECT_EQ(t.integer("Both")->GetValue(), 0x81) << "and what it saw is news for all";
  EXPECT_EQ(t.port.counts(), "1r1w");
  t.integer("Both")->SetValue(0x81);
  t.port.poke(0, {0x82});
  EXPECT_EQ(t.integer("Status")->GetValue(), 0x82) << "writing what was there already makes no difference";
}

TEST(Caching, PortAccessBesideTheRegistersIsNotNoticed) {
  TestMap t(reg("IntReg", "R", 0, 1) + over("A", "R"));
  const CPortPtr port = t.node("Device");
  EXPECT_EQ(t.integer("A")->GetValue(), 0);
  const uint8_t byte = 9;
  port->Write(&byte, 0, 1);
  EXPECT_EQ(t.integer("A")->GetValue(), 0);
  t.port.InvalidateNode();
  EXPECT_EQ(t.integer("A")->GetValue(), 9);
  EXPECT_EQ(t.port.counts(), "2r1w");
}

TEST(Caching, NumberOfPlacesIsBounded) {
  TestMap t(moving("IntReg", "2", "2") + reg("IntReg", "First", 0, 2) + over("Over", "First"));
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
  TestMap t(moving("Register", "1", "0x1000000"));
  t.port.memory.resize((16 << 20) + 16);
  std::vector<uint8_t> content(16 << 20);
  for (int64_t index = 0; index < 8; ++index) {
    t.integer("I")->SetValue(index);
    for (int i = 0; i < 2; ++i) t.bytes("R")->Get(content.data(), 16 << 20);
  }
  EXPECT_EQ(t.port.counts(), "8r0w");
  t.integer("I")->SetValue(0);  // content older than its index is not used
  t.bytes("R")->Get(content.data(), 16 << 20);
  EXPECT_EQ(t.port.counts(), "1r0w");
}

TEST(Caching, FailedWriteForgetsWhatTheDeviceMayHaveChanged) {
  TestMap t(reg("IntReg", "R", 0, 1) + reg("IntReg", "Wide", 0, 2) + over("A", "R") + over("OverWide", "Wide"));
  EXPECT_EQ(t.integer("A")->GetValue(), 0);
  EXPECT_EQ(t.integer("OverWide")->GetValue(), 0);
  t.port.onWrite = [&](int64_t, int64_t) {
    t.port.poke(0, {6});
    throw TIMEOUT_EXCEPTION("answer lost");
  };
  EXPECT_THROW(t.integer("A")->SetValue(5), TimeoutException);
  for (const char* name : {"R", "A", "OverWide"}) EXPECT_EQ(t.integer(name)->GetValue(), 6) << name;
  t.port.counts();
  EXPECT_THROW(t.integer("A")->SetValue(256), OutOfRangeException);
  EXPECT_EQ(t.integer("A")->GetValue(), 6);
  EXPECT_EQ(t.port.counts(), "0r0w") << "refused before the first byte: nothing is forgotten";
}

// What an operation makes everybody forget, and who is called back for it.
#include <set>

#include "TestMap.h"

using testing::HasSubstr;

namespace {

// Collects "A B E" from the callbacks of one operation: names in order of the alphabet; a node fired twice shows twice.
class Fired {
 public:
  Fired(TestMap& t, const std::string& names) {
    for (const char name : names) {
      const std::string text(1, name);
      Register(t.node(text), [this, text](INode*) { names_.insert(text); });
    }
  }
  template <class Operation>
  std::string by(Operation&& operation) {
    names_.clear();
    operation();
    std::string text;
    for (const std::string& name : names_) text += name;
    return text;
  }

 private:
  std::multiset<std::string> names_;
};

// Which of the nodes have lost their value.
template <class Operation>
std::string forgottenBy(TestMap& t, const std::string& names, Operation&& operation) {
  for (const char name : names) {
    if (auto* value = dynamic_cast<IValue*>(t.node(std::string(1, name)))) value->ToString();
  }
  operation();
  std::string text;
  for (const char name : names) {
    auto* value = dynamic_cast<IValue*>(t.node(std::string(1, name)));
    if (value && !value->IsValueCacheValid()) text += name;
  }
  return text;
}

}  // namespace

TEST(Invalidation, FollowsValuesLimitsGuardsAndPorts) {
  const auto guarded = [](const std::string& name, int address) {
    return reg("IntReg", name, address, 4, tag("pIsAvailable", "E"));
  };
  const std::string nodes = "<Integer Name='A'><pValue>B</pValue><pMin>C</pMin><pMax>D</pMax></Integer>" +
                            guarded("B", 0) + guarded("C", 4) + guarded("D", 8) + reg("IntReg", "E", 12, 4);
  std::string onPort = nodes;
  for (size_t at; (at = onPort.find("Device")) != std::string::npos;) onPort.replace(at, 6, "P");
  TestMap t("<Port Name='P'/>" + onPort);
  t.map->Connect(&t.port, "P");
  t.port.poke(8, {9});
  t.port.poke(12, {1});
  Fired fired(t, "ABCDEP");
  EXPECT_EQ(fired.by([&] { t.integer("A")->SetValue(1); }), "AB");
  EXPECT_EQ(fired.by([&] { t.integer("B")->SetValue(1); }), "AB");
  EXPECT_EQ(fired.by([&] { t.node("B")->InvalidateNode(); }), "AB");
  EXPECT_EQ(fired.by([&] { t.integer("C")->SetValue(0); }), "AC");
  EXPECT_EQ(fired.by([&] { t.node("A")->InvalidateNode(); }), "A");
  EXPECT_EQ(fired.by([&] { t.integer("E")->SetValue(1); }), "ABCDE");
  EXPECT_EQ(fired.by([&] { t.node("E")->InvalidateNode(); }), "ABCDE");
  EXPECT_EQ(fired.by([&] { t.node("P")->InvalidateNode(); }), "ABCDEP");
  EXPECT_EQ(fired.by([&] { t.port.InvalidateNode(); }), "ABCDEP");
  EXPECT_EQ(fired.by([&] { t.map->InvalidateNodes(); }), "ABCDEP");
  EXPECT_EQ(fired.by([&] { t.integer("A")->GetValue(true, true); }), "");
  EXPECT_EQ(fired.by([&] { t.integer("A")->GetMax(); }), "");

  EXPECT_EQ(forgottenBy(t, "ABCDE", [&] { t.node("A")->InvalidateNode(); }), "A");
  EXPECT_EQ(forgottenBy(t, "ABCDE", [&] { t.node("B")->InvalidateNode(); }), "AB");
  EXPECT_EQ(forgottenBy(t, "ABCDE", [&] { t.integer("A")->SetValue(2); }), "");
  EXPECT_EQ(forgottenBy(t, "ABCDE", [&] { t.integer("B")->SetValue(3); }), "A");
  EXPECT_EQ(forgottenBy(t, "ABCDE", [&] { t.integer("E")->SetValue(1); }), "ABCD");
  EXPECT_EQ(forgottenBy(t, "ABCDE", [&] { t.port.InvalidateNode(); }), "ABCDE");
  EXPECT_EQ(forgottenBy(t, "ABCDE", [&] { t.map->InvalidateNodes(); }), "ABCDE");
  t.map->Connect(nullptr, "P");
}

TEST(Invalidation, FollowsInvalidatorsInCirclesAndSelectors) {
  TestMap t("<Integer Name='A'><pValue>D</pValue></Integer><Integer Name='B'><pValue>F</pValue></Integer>" +
            reg("IntReg", "D", 0, 4, "<pInvalidator>E</pInvalidator><pSelected>F</pSelected>") +
            reg("IntReg", "E", 4, 4, tag("pInvalidator", "D")) + reg("IntReg", "F", 8, 4) +
            reg("IntReg", "G", 12, 4, tag("pInvalidator", "E")));
  Fired fired(t, "ABDEFG");
  for (const char* name : {"A", "D", "E"}) {
    EXPECT_EQ(fired.by([&] { t.integer(name)->SetValue(1); }), "ABDEFG") << name;
  }
  for (const char* name : {"B", "F"}) EXPECT_EQ(fired.by([&] { t.integer(name)->SetValue(1); }), "BF") << name;
  EXPECT_EQ(fired.by([&] { t.integer("G")->SetValue(1); }), "G");
  // D is among its own dependents: what was written is not trusted.
  t.port.counts();
  t.integer("A")->SetValue(3);
  t.port.poke(0, {4});
  EXPECT_EQ(t.integer("A")->GetValue(), 4);
  EXPECT_EQ(t.port.counts(), "1r1w");
}

TEST(Invalidation, RegisterThatNamesItselfIsReadAfterItsWrite) {
  TestMap t(reg("IntReg", "R", 0, 1, tag("pInvalidator", "R")) + "<Integer Name='A'><pValue>R</pValue></Integer>");
  t.integer("A")->SetValue(5);
  EXPECT_FALSE(t.value("R")->IsValueCacheValid());
  t.port.poke(0, {6});
  EXPECT_EQ(t.integer("A")->GetValue(), 6);
  EXPECT_EQ(t.integer("A")->GetValue(), 6);
  EXPECT_EQ(t.port.counts(), "1r1w");
}

TEST(Invalidation, CommandThatReloadsSettings) {
  TestMap t("<Command Name='Load'><pValue>LoadReg</pValue><CommandValue>1</CommandValue></Command>" +
            reg("IntReg", "LoadReg", 0, 1, tag("AccessMode", "WO")) +
            reg("IntReg", "Gain", 4, 1, tag("pInvalidator", "Load")) +
            "<Integer Name='Over'><pValue>Gain</pValue></Integer>");
  EXPECT_EQ(t.integer("Over")->GetValue(), 0);
  t.port.onWrite = [&](int64_t, int64_t) { t.port.poke(4, {42}); };
  t.command("Load")->Execute();
  EXPECT_EQ(t.integer("Over")->GetValue(), 42);
}

TEST(Invalidation, IndexTablesDependOnAllTheirAlternatives) {
  TestMap t(
      "<Integer Name='T'><pIndex>I</pIndex><pValueIndexed Index='0'>X</pValueIndexed>"
      "<pValueIndexed Index='1'>Y</pValueIndexed><pValueDefault>Z</pValueDefault></Integer>"
      "<Integer Name='I'><Value>0</Value></Integer>" +
      reg("IntReg", "X", 0, 1) + reg("IntReg", "Y", 1, 1) + reg("IntReg", "Z", 2, 1));
  Fired fired(t, "TIXYZ");
  EXPECT_EQ(fired.by([&] { t.integer("Y")->SetValue(1); }), "TY");
  EXPECT_EQ(fired.by([&] { t.integer("Z")->SetValue(1); }), "TZ");
  EXPECT_EQ(fired.by([&] { t.integer("I")->SetValue(1); }), "IT");
  EXPECT_EQ(fired.by([&] { t.integer("T")->SetValue(9); }), "TY");
}

TEST(Invalidation, RefusedWritesCallNobody) {
  TestMap t(
      "<Integer Name='A'><pValue>B</pValue><pIsLocked>L</pIsLocked></Integer><Integer "
      "Name='L'><Value>0</Value></Integer>" +
      reg("IntReg", "B", 0, 1));
  Fired fired(t, "AB");
  EXPECT_EQ(fired.by([&] { EXPECT_THROW(t.integer("A")->SetValue(256), OutOfRangeException); }), "");
  EXPECT_EQ(fired.by([&] { EXPECT_THROW(t.value("A")->FromString("x"), InvalidArgumentException); }), "");
  t.integer("L")->SetValue(1);
  EXPECT_EQ(fired.by([&] { EXPECT_THROW(t.integer("A")->SetValue(1), AccessException); }), "");
  EXPECT_EQ(fired.by([&] { t.integer("A")->SetValue(1, false); }), "AB");
}

TEST(Invalidation, PartlyWrittenCopiesCallBackForWhatWasWritten) {
  TestMap t("<Integer Name='A'><pValue>B</pValue><pValueCopy>C</pValueCopy></Integer>" + reg("IntReg", "B", 0, 1) +
            reg("IntReg", "C", 1, 1) + "<Integer Name='D'><pValue>C</pValue></Integer>");
  t.port.onWrite = [](int64_t address, int64_t) {
    if (address == 1) throw TIMEOUT_EXCEPTION("no answer");
  };
  Fired fired(t, "ABCD");
  EXPECT_EQ(fired.by([&] { EXPECT_THROW(t.integer("A")->SetValue(1), TimeoutException); }), "AB");
  EXPECT_EQ(t.integer("A")->GetValue(), 1);
}

TEST(Invalidation, ImposingIsNews) {
  TestMap t("<Integer Name='A'><pValue>B</pValue></Integer><Integer Name='B'><Value>1</Value></Integer>");
  Fired fired(t, "AB");
  EXPECT_EQ(fired.by([&] { t.node("B")->ImposeAccessMode(RO); }), "AB");
  EXPECT_EQ(t.mode("A"), RO);
  EXPECT_EQ(fired.by([&] { t.integer("B")->ImposeMax(4); }), "AB");
  EXPECT_EQ(t.integer("A")->GetMax(), 4);
  EXPECT_EQ(fired.by([&] { t.node("A")->ImposeVisibility(Guru); }), "A");
}

TEST(Invalidation, ErrorEnumerationIsReadAfterAVerifiedWrite) {
  TestMap t(
      "<Integer Name='A'><pValue>R</pValue><pError>Err</pError></Integer>"
      "<Enumeration Name='Err'><EnumEntry Name='Ok'><Value>0</Value></EnumEntry>"
      "<EnumEntry Name='Hot'><Value>3</Value><ToolTip>cool it down</ToolTip><DisplayName>Too hot</DisplayName>"
      "</EnumEntry><pValue>ErrReg</pValue></Enumeration>" +
      reg("IntReg", "ErrReg", 1, 1, tag("AccessMode", "RO")) + reg("IntReg", "R", 0, 1));
  Fired fired(t, "AR");
  t.integer("A")->SetValue(1);
  EXPECT_EQ(t.port.counts(), "1r1w");
  t.port.poke(1, {3});
  EXPECT_EQ(fired.by([&] {
    EXPECT_EQ(refusal<RuntimeException>([&] { t.integer("A")->SetValue(2); }), "A: Too hot: cool it down");
  }),
            "AR");
  EXPECT_EQ(t.port.counts(), "1r1w") << "past the cache";
  EXPECT_EQ(t.integer("A")->GetValue(), 2) << "the write itself has happened";
  EXPECT_EQ(t.port.counts(), "0r0w");
  t.integer("A")->SetValue(3, false);
  EXPECT_EQ(t.port.counts(), "0r1w");
  t.port.poke(1, {77});
  EXPECT_THAT(refusal<RuntimeException>([&] { t.integer("A")->SetValue(2); }), HasSubstr("77"));
}

TEST(Invalidation, ErrorsOfASourceReachItsUser) {
  TestMap t(
      "<Float Name='Top'><pValue>A</pValue></Float><Integer "
      "Name='A'><Value>0</Value><pError>E1</pError><pError>E2</pError>"
      "</Integer><Enumeration Name='E1'><EnumEntry Name='Ok'><Value>0</Value></EnumEntry><Value>0</Value></Enumeration>"
      "<Enumeration Name='E2'><EnumEntry Name='Bad'><Value>1</Value><ToolTip>tip</ToolTip></EnumEntry><Value>1</Value>"
      "</Enumeration>");
  EXPECT_EQ(refusal<RuntimeException>([&] { t.real("Top")->SetValue(4); }), "A: Bad: tip");
  EXPECT_EQ(t.real("Top")->GetValue(), 4.0);
}

TEST(Invalidation, PortInvalidatedThroughItsOwnInvalidator) {
  TestMap t(
      "<Port Name=\"Device\"><pInvalidator>Reset</pInvalidator></Port><Integer "
      "Name='Reset'><Value>0</Value></Integer>" +
      reg("IntReg", "R", 0, 1) + "<Integer Name='A'><pValue>R</pValue></Integer>");
  EXPECT_EQ(t.integer("A")->GetValue(), 0);
  t.port.poke(0, {5});
  t.integer("Reset")->SetValue(1);
  EXPECT_EQ(t.integer("A")->GetValue(), 5);
}

TEST(Invalidation, ImplementationMayBeGoneAfterDisconnecting) {
  BytePort outlived;
  {
    TestMap t(reg("IntReg", "R", 0, 1));
    t.map->Connect(&outlived);
    outlived.InvalidateNode();
  }
  outlived.InvalidateNode();  // the map has said goodbye
}

TEST(Invalidation, BytesReadPastTheCacheRenewTheNumber) {
  TestMap t(reg("IntReg", "R", 0, 1) + reg("FloatReg", "F", 4, 4));
  EXPECT_EQ(t.integer("R")->GetValue(), 0);
  EXPECT_EQ(t.real("F")->GetValue(), 0.0);
  t.port.poke(0, {5, 0, 0, 0, 0, 0, 0x80, 0x3f});
  uint8_t bytes[4];
  t.bytes("R")->Get(bytes, 1, false, true);
  t.bytes("F")->Get(bytes, 4, false, true);
  EXPECT_EQ(t.integer("R")->GetValue(), 5);
  EXPECT_EQ(t.real("F")->GetValue(), 1.0);
}

// A copy is never read, so it leaves the caching mode alone; its limits and its increment count all the same.
TEST(Invalidation, LimitsAndRightsFollowWhatCopiesMayNotCache) {
  TestMap t(reg("IntReg", "R", 0, 1) + reg("IntReg", "Live", 1, 1, tag("Cachable", "NoCache")) +
            "<Integer Name='Limited'><Value>0</Value><pMax>Live</pMax></Integer>"
            "<Integer Name='Stepped'><Value>0</Value><pInc>Live</pInc></Integer>"
            "<Integer Name='A'><pValue>R</pValue><pValueCopy>Limited</pValueCopy></Integer>"
            "<Integer Name='OverA'><pValue>A</pValue></Integer>"
            "<Integer Name='B'><pValue>R</pValue><pValueCopy>Stepped</pValueCopy></Integer>"
            "<Integer Name='OverB'><pValue>B</pValue></Integer>"
            "<Integer Name='C'><pValue>R</pValue><pValueCopy>Live</pValueCopy></Integer>");
  for (const uint8_t live : {1, 2, 1}) {
    t.port.poke(1, {live});
    EXPECT_EQ(t.integer("OverA")->GetMax(), live);
    EXPECT_EQ(t.mode("OverB"), live == 1 ? RW : RO);
  }
  EXPECT_EQ(t.node("A")->GetCachingMode(), WriteThrough);
  EXPECT_EQ(t.node("OverB")->IsAccessModeCacheable(), No);
  EXPECT_EQ(t.node("C")->IsAccessModeCacheable(), Yes);  // the increment of a register is fixed
}

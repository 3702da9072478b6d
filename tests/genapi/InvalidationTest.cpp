// What an operation makes everybody forget, and who is called back for it.
#include <set>

#include "TestMap.h"

using testing::HasSubstr;

namespace {

// Collects "ABE" from the callbacks of one operation: names in order of the alphabet; a node fired twice shows twice.
class Fired {
 public:
  Fired(TestMap& t, const std::string& names) {
    for (const char name : names) Register(t.node({name}), [this, name](INode*) { names_.insert(name); });
  }
  template <class Operation>
  std::string by(Operation&& operation) {
    names_.clear();
    operation();
    return {names_.begin(), names_.end()};
  }

 private:
  std::multiset<char> names_;
};

// Which of the nodes have lost their value.
template <class Operation>
std::string forgottenBy(TestMap& t, const std::string& names, Operation&& operation) {
  for (const char name : names) t.value({name})->ToString();
  operation();
  std::string text;
  for (const char name : names)
    if (!t.value({name})->IsValueCacheValid()) text += name;
  return text;
}

}  // namespace

// Whom these call back, CallbackTest tells.
TEST(Invalidation, FollowsValuesLimitsGuardsAndPorts) {
  const auto guarded = [](const std::string& name, int address) {
    return reg("IntReg", name, address, 4, tag("pIsAvailable", "E"));
  };
  TestMap t(over("A", "B", "<pMin>C</pMin><pMax>D</pMax>") + guarded("B", 0) + guarded("C", 4) + guarded("D", 8) +
            reg("IntReg", "E", 12, 4));
  t.port.poke(8, {9});
  t.port.poke(12, {1});
  const std::string all = "ABCDE";
  EXPECT_EQ(forgottenBy(t, all, [&] { t.node("A")->InvalidateNode(); }), "A");
  EXPECT_EQ(forgottenBy(t, all, [&] { t.node("B")->InvalidateNode(); }), "AB");
  EXPECT_EQ(forgottenBy(t, all, [&] { t.integer("A")->SetValue(2); }), "");
  EXPECT_EQ(forgottenBy(t, all, [&] { t.integer("B")->SetValue(3); }), "A");
  EXPECT_EQ(forgottenBy(t, all, [&] { t.integer("E")->SetValue(1); }), "ABCD");
  EXPECT_EQ(forgottenBy(t, all, [&] { t.port.InvalidateNode(); }), "ABCDE");
  EXPECT_EQ(forgottenBy(t, all, [&] { t.map->InvalidateNodes(); }), "ABCDE");
}

TEST(Invalidation, FollowsInvalidatorsInCirclesAndSelectors) {
  TestMap t(over("A", "D") + over("B", "F") +
            reg("IntReg", "D", 0, 4, "<pInvalidator>E</pInvalidator><pSelected>F</pSelected>") +
            reg("IntReg", "E", 4, 4, tag("pInvalidator", "D")) + reg("IntReg", "F", 8, 4) +
            reg("IntReg", "G", 12, 4, tag("pInvalidator", "E")));
  Fired fired(t, "ABDEFG");
  for (const char* name : {"A", "D", "E"}) EXPECT_EQ(fired.by([&] { t.integer(name)->SetValue(1); }), "ABDEFG") << name;
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
  TestMap t(reg("IntReg", "R", 0, 1, tag("pInvalidator", "R")) + over("A", "R"));
  t.integer("A")->SetValue(5);
  EXPECT_FALSE(t.value("R")->IsValueCacheValid());
  t.port.poke(0, {6});
  for (int i = 0; i < 2; ++i) EXPECT_EQ(t.integer("A")->GetValue(), 6);
  EXPECT_EQ(t.port.counts(), "1r1w");
}

TEST(Invalidation, CopiesPartlyWrittenCallBackForWhatWasWritten) {
  TestMap t(over("A", "B", tag("pValueCopy", "C")) + reg("IntReg", "B", 0, 1) + reg("IntReg", "C", 1, 1) +
            over("D", "C"));
  t.port.onWrite = [](int64_t address, int64_t) {
    if (address == 1) throw TIMEOUT_EXCEPTION("no answer");
  };
  Fired fired(t, "ABCD");
  EXPECT_EQ(fired.by([&] { EXPECT_THROW(t.integer("A")->SetValue(1), TimeoutException); }), "AB");
  EXPECT_EQ(t.integer("A")->GetValue(), 1);
}

TEST(Invalidation, ImposingIsNewsAndRefusalsAreNone) {
  TestMap t(over("A", "B") + held("B", 1));
  Fired fired(t, "AB");
  EXPECT_EQ(fired.by([&] { t.integer("B")->ImposeMax(4); }), "AB");
  EXPECT_EQ(t.integer("A")->GetMax(), 4);
  EXPECT_EQ(fired.by([&] { t.node("A")->ImposeVisibility(Guru); }), "A");
  EXPECT_EQ(fired.by([&] { t.node("B")->ImposeAccessMode(RO); }), "AB");
  EXPECT_EQ(t.mode("A"), RO);
  EXPECT_EQ(fired.by([&] { EXPECT_THROW(t.integer("A")->SetValue(1), AccessException); }), "");
  EXPECT_EQ(fired.by([&] { t.integer("A")->SetValue(1, false); }), "AB");
}

TEST(Invalidation, ErrorEnumerationIsReadAfterAVerifiedWrite) {
  TestMap t(over("A", "R", tag("pError", "Err")) +
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
  const auto constant = [](const std::string& name, const std::string& value, const std::string& entry) {
    return "<Enumeration Name='" + name + "'><EnumEntry Name='" + entry + "'>" + tag("Value", value) +
           "<ToolTip>tip</ToolTip></EnumEntry>" + tag("Value", value) + "</Enumeration>";
  };
  TestMap t(over("Top", "A", "", "Float") + held("A", 0, "<pError>E1</pError><pError>E2</pError>") +
            constant("E1", "0", "Ok") + constant("E2", "1", "Bad"));
  EXPECT_EQ(refusal<RuntimeException>([&] { t.real("Top")->SetValue(4); }), "A: Bad: tip");
  EXPECT_EQ(t.real("Top")->GetValue(), 4.0);
}

TEST(Invalidation, PortInvalidatedThroughItsOwnInvalidator) {
  TestMap t("<Port Name=\"Device\"><pInvalidator>Reset</pInvalidator></Port>" + held("Reset") +
            reg("IntReg", "R", 0, 1) + over("A", "R"));
  EXPECT_EQ(t.integer("A")->GetValue(), 0);
  t.port.poke(0, {5});
  t.integer("Reset")->SetValue(1);
  EXPECT_EQ(t.integer("A")->GetValue(), 5);
  t.end();
  t.port.InvalidateNode();  // the map has said goodbye
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
            held("Limited", 0, tag("pMax", "Live")) + held("Stepped", 0, tag("pInc", "Live")) +
            over("A", "R", tag("pValueCopy", "Limited")) + over("OverA", "A") +
            over("B", "R", tag("pValueCopy", "Stepped")) + over("OverB", "B") +
            over("C", "R", tag("pValueCopy", "Live")));
  for (const uint8_t live : {1, 2, 1}) {
    t.port.poke(1, {live});
    EXPECT_EQ(t.integer("OverA")->GetMax(), live);
    EXPECT_EQ(t.mode("OverB"), live == 1 ? RW : RO);
  }
  EXPECT_EQ(t.node("A")->GetCachingMode(), WriteThrough);
  EXPECT_EQ(t.node("OverB")->IsAccessModeCacheable(), No);
  EXPECT_EQ(t.node("C")->IsAccessModeCacheable(), Yes);  // the increment of a register is fixed
}

// Enumerations, their entries, and Booleans as sources of values.
#include "TestMap.h"

using testing::ElementsAre;

namespace {

std::vector<std::string> symbolics(const CEnumerationPtr& node) {
  StringList_t list;
  node->GetSymbolics(list);
  return {list.begin(), list.end()};
}

std::string entry(const std::string& name, int value, const std::string& more = "") {
  return "<EnumEntry Name='" + name + "'>" + tag("Value", std::to_string(value)) + more + "</EnumEntry>";
}

// An enumeration that holds its value.
std::string choice(const std::string& name, const std::string& entries, int value) {
  return "<Enumeration Name='" + name + "'>" + entries + tag("Value", std::to_string(value)) + "</Enumeration>";
}

const std::string kWhileG = tag("pIsAvailable", "G");

// Mono8 always, Mono12 while Deep is not 0, Bayer never implemented.
const std::string kFormats = "<Enumeration Name='Format'>" + entry("Mono8", 8) +
                             entry("Mono12", 12, tag("pIsAvailable", "Deep")) +
                             entry("Bayer", 20, "<Symbolic>BayerRG</Symbolic><pIsImplemented>Never</pIsImplemented>") +
                             "<pValue>Reg</pValue></Enumeration>" + held("Deep") + held("Never") + held("Reg", 8);

}  // namespace

TEST(Enumeration, ValuesAndNames) {
  TestMap t(kFormats);
  const CEnumerationPtr format = t.enumeration("Format");
  EXPECT_EQ(format->GetIntValue(), 8);
  EXPECT_EQ(format->ToString(), "Mono8");
  EXPECT_EQ(format->GetCurrentEntry()->GetSymbolic(), "Mono8");
  EXPECT_THAT(symbolics(format), ElementsAre("Mono8"));
  NodeList_t entries;
  format->GetEntries(entries);
  ASSERT_EQ(entries.size(), 3U);
  EXPECT_EQ(entries[2]->GetName(), "EnumEntry_Format_Bayer");
  EXPECT_EQ(entries[2]->GetDisplayName(), "BayerRG");
  EXPECT_EQ(format->GetEntryByName("BayerRG")->GetValue(), 20);
  EXPECT_EQ(format->GetEntryByName("Bayer"), nullptr) << "its Symbolic has replaced the name";
  EXPECT_EQ(format->GetEntry(12)->GetSymbolic(), "Mono12");
  EXPECT_EQ(format->GetEntry(13), nullptr);

  EXPECT_EQ(refusal<AccessException>([&] { format->SetIntValue(12); }), "Format: entry 'Mono12' is not available");
  EXPECT_THROW(format->FromString("Mono12"), AccessException);
  EXPECT_EQ(refusal<InvalidArgumentException>([&] { format->FromString("mono8"); }), "Format: no entry named 'mono8'");
  EXPECT_EQ(refusal<InvalidArgumentException>([&] { format->SetIntValue(77, false); }),
            "Format: no entry with value 77");
  t.integer("Deep")->SetValue(1);
  EXPECT_THAT(symbolics(format), ElementsAre("Mono8", "Mono12"));
  format->FromString("Mono12");
  EXPECT_EQ(t.integer("Reg")->GetValue(), 12);

  // The device holds an entry that is not available now.
  t.integer("Deep")->SetValue(0);
  EXPECT_EQ(format->GetIntValue(), 12);
  EXPECT_EQ(format->ToString(), "Mono12");
  EXPECT_THROW(format->GetIntValue(true), AccessException);
  EXPECT_THROW(format->GetCurrentEntry(true), AccessException);
  EXPECT_THROW(format->ToString(true), AccessException);
  // Or one that nobody knows.
  t.integer("Reg")->SetValue(99);
  EXPECT_EQ(format->GetIntValue(), 99);
  EXPECT_EQ(format->GetCurrentEntry(), nullptr);
  EXPECT_THROW(format->GetIntValue(true), InvalidArgumentException);
  EXPECT_THROW(format->ToString(), InvalidArgumentException);
  format->SetIntValue(12, false);
  EXPECT_EQ(t.integer("Reg")->GetValue(), 12);
}

TEST(Enumeration, SeveralEntriesOfOneValue) {
  TestMap t(
      choice("E",
             entry("First", 1, kWhileG) + entry("Second", 1) + entry("Lost", 2, kWhileG) + entry("LostToo", 2, kWhileG),
             1) +
      held("G", 1));
  EXPECT_EQ(t.enumeration("E")->ToString(), "First");
  t.integer("G")->SetValue(0);
  EXPECT_EQ(t.enumeration("E")->ToString(), "Second");
  EXPECT_EQ(t.enumeration("E")->GetEntry(2)->GetSymbolic(), "Lost");
  t.enumeration("E")->SetIntValue(1);
}

TEST(Enumeration, AccessFollowsTheEntries) {
  TestMap t(kFormats);
  EXPECT_EQ(t.mode("Format"), RW);
  t.node("EnumEntry_Format_Mono8")->ImposeAccessMode(NA);
  EXPECT_EQ(t.mode("Format"), NA) << "NA and NI mixed";
  t.integer("Deep")->SetValue(1);
  EXPECT_EQ(t.mode("Format"), RW);
  t.node("EnumEntry_Format_Mono8")->ImposeAccessMode(NI);
  t.node("EnumEntry_Format_Mono12")->ImposeAccessMode(NI);
  EXPECT_EQ(t.mode("Format"), NI) << "no entry is implemented";
  EXPECT_EQ(t.mode("EnumEntry_Format_Bayer"), NI);
  t.node("EnumEntry_Format_Mono8")->ImposeAccessMode(RW);
  EXPECT_EQ(t.mode("Format"), RW);
  EXPECT_EQ(t.mode("EnumEntry_Format_Mono8"), RO);
}

TEST(Enumeration, EntryIsAConstant) {
  TestMap t(choice("E",
                   entry("X", 16, "<NumericValue>1.5</NumericValue><IsSelfClearing>Yes</IsSelfClearing>") +
                       entry("Y", -3) + "<EnumEntry Name='Bad'><Value>x</Value></EnumEntry>",
                   -3));
  const CEnumEntryPtr x = t.node("EnumEntry_E_X"), y = t.node("EnumEntry_E_Y");
  EXPECT_EQ(x->GetValue(), 16);
  EXPECT_EQ(x->GetNumericValue(), 1.5);
  EXPECT_TRUE(x->IsSelfClearing());
  EXPECT_EQ(y->GetNumericValue(), -3.0);
  EXPECT_FALSE(y->IsSelfClearing());
  EXPECT_EQ(x->ToString(), "16");
  for (const bool verify : {true, false}) EXPECT_THROW(x->FromString("16", verify), AccessException);
  // One bad entry costs one entry.
  EXPECT_EQ(t.mode("E"), RW);
  EXPECT_THAT(symbolics(t.enumeration("E")), ElementsAre("X", "Y"));
  EXPECT_EQ(t.mode("EnumEntry_E_Bad"), NI);
  EXPECT_THROW(t.value("EnumEntry_E_Bad")->ToString(), RuntimeException);
}

TEST(Enumeration, AsSourceOfNumbersUsesNumericValues) {
  TestMap t(choice("E",
                   entry("A", 0, "<NumericValue>1.5</NumericValue>") +
                       entry("B", 1, "<NumericValue>20</NumericValue>") +
                       entry("C", 2, "<NumericValue>1.7</NumericValue>" + kWhileG),
                   1) +
            held("G", 1) + over("I", "E") + over("F", "E", "", "Float"));
  EXPECT_EQ(t.integer("I")->GetValue(), 20);
  t.integer("I")->SetValue(1);
  EXPECT_EQ(t.enumeration("E")->ToString(), "A");
  EXPECT_EQ(t.integer("I")->GetValue(), 2) << "1.5, rounded";
  t.real("F")->SetValue(1.69);
  EXPECT_EQ(t.enumeration("E")->ToString(), "C");
  t.integer("G")->SetValue(0);
  t.real("F")->SetValue(1.69);
  EXPECT_EQ(t.enumeration("E")->ToString(), "A") << "the nearest of those that are available";
  t.real("F")->SetValue(10.75);
  EXPECT_EQ(t.enumeration("E")->ToString(), "A") << "as near to A as to B: the first one";
  EXPECT_THROW(t.real("F")->SetValue(std::numeric_limits<double>::quiet_NaN()), OutOfRangeException);
  for (const char* each : {"A", "B"}) t.node(std::string("EnumEntry_E_") + each)->ImposeAccessMode(NA);
  EXPECT_THROW(t.real("F")->SetValue(1, false), AccessException);

  TestMap wide(
      "<Enumeration Name='E'><EnumEntry Name='A'><Value>9007199254740992</Value></EnumEntry><EnumEntry Name='B'>"
      "<Value>9007199254740993</Value></EnumEntry><Value>9007199254740992</Value></Enumeration>" +
      over("I", "E"));
  wide.integer("I")->SetValue(9007199254740993);
  EXPECT_EQ(wide.enumeration("E")->ToString(), "B");
  EXPECT_EQ(wide.integer("I")->GetValue(), 9007199254740993) << "wide values keep their bits";
}

TEST(Enumeration, SelfClearingEntryIsAskedPastTheCache) {
  const std::string clears = "<IsSelfClearing>Yes</IsSelfClearing>";
  TestMap t("<Enumeration Name='E'>" + entry("Off", 0) + entry("Once", 1, clears) + entry("Twice", 2, clears) +
            "<pValue>R</pValue></Enumeration>" + reg("IntReg", "R", 0, 1) +
            reg("IntReg", "Result", 4, 1, tag("pInvalidator", "E")));
  t.enumeration("E")->FromString("Once");
  int fired = 0;
  for (const char* name : {"E", "R", "Result"}) Register(t.node(name), [&](INode*) { ++fired; });
  for (const auto& [byte, shown, result, accesses] :
       std::initializer_list<std::tuple<uint8_t, const char*, int, const char*>>{
           {1, "Once", 1, "3r1w"},    // dependents do not forget before it has changed
           {2, "Twice", 2, "3r0w"},   // another one that clears itself
           {0, "Off", 3, "2r0w"}}) {  // now the cache will do
    t.port.poke(0, {byte, 0, 0, 0, static_cast<uint8_t>(result)});
    for (int i = 0; i < 2; ++i) {
      EXPECT_EQ(t.enumeration("E")->ToString(), shown);
      EXPECT_EQ(t.integer("Result")->GetValue(), result);
      t.port.poke(4, {99});
    }
    EXPECT_EQ(t.port.counts(), accesses) << shown;
  }
  EXPECT_EQ(fired, 0) << "whatever is noticed by reading is forgotten silently";
}

// A port that uses the map leaves what is read meanwhile unremembered: the next look may find another value.
TEST(Enumeration, MayChangeBetweenTwoLooksOfOneCall) {
  TestMap t("<Enumeration Name='E'>" + entry("One", 1) + tag("pValue", "R") + "</Enumeration>" +
            reg("IntReg", "R", 0, 1, "<pInvalidator>Other</pInvalidator><Cachable>NoCache</Cachable>") + held("Other"));
  uint8_t next = 99;
  t.port.onRead = [&](int64_t, int64_t) {
    t.port.memory[0] = std::exchange(next, 1);
    t.integer("Other")->SetValue(next);
  };
  const CEnumerationPtr value = t.enumeration("E");
  EXPECT_EQ(value->ToString(), "One");
  next = 99;
  t.port.onRead = [&](int64_t, int64_t) { t.port.memory[0] = next; };
  refusal<InvalidArgumentException>([&] { value->ToString(); });
}

TEST(Enumeration, TopLevelEntriesOfSchema10) {
  TestMap t(entry("Lonely", 4) + choice("E", tag("pEnumEntry", "Lonely"), 4), 0);
  EXPECT_EQ(t.enumeration("E")->ToString(), "Lonely");
  EXPECT_EQ(t.enumeration("E")->GetEntryByName("Lonely")->GetValue(), 4);
}

TEST(Boolean, ComparesWithItsTwoValues) {
  TestMap t(over("B", "V", "<OnValue>7</OnValue><OffValue>-1</OffValue>", "Boolean") + held("V", 7, "<Max>7</Max>") +
            "<Boolean Name='Own'><Value>true</Value></Boolean>");
  EXPECT_TRUE(t.boolean("B")->GetValue());
  t.boolean("B")->SetValue(false);
  EXPECT_EQ(t.integer("V")->GetValue(), -1);
  EXPECT_FALSE(t.boolean("B")->GetValue());
  t.integer("V")->SetValue(3);
  EXPECT_EQ(refusal<LogicalErrorException>([&] { t.boolean("B")->GetValue(); }),
            "B: value 3 is neither OnValue 7 nor OffValue -1");
  EXPECT_TRUE(t.boolean("Own")->GetValue());
  t.boolean("Own")->SetValue(false);
  EXPECT_EQ(t.boolean("Own")->ToString(), "0");
  t.integer("V")->ImposeMax(0);
  EXPECT_EQ(refusal<OutOfRangeException>([&] { t.boolean("B")->SetValue(true); }),
            "B > V: value 7 must be at most Max = 0");
  t.boolean("B")->SetValue(true, false);
  EXPECT_TRUE(t.boolean("B")->GetValue());
}

// Enumerations, their entries, Booleans and Commands as sources of values.
#include "TestMap.h"

using testing::ElementsAre;
using testing::HasSubstr;

namespace {

std::vector<std::string> symbolics(const CEnumerationPtr& node) {
  StringList_t list;
  node->GetSymbolics(list);
  std::vector<std::string> names;
  for (size_t i = 0; i < list.size(); ++i) names.emplace_back(list[i].c_str());
  return names;
}

// Entries with guards: Mono8 always, Mono12 while Deep is not 0, Bayer never implemented.
const char* const kFormats =
    "<Enumeration Name='Format'><EnumEntry Name='Mono8'><Value>8</Value></EnumEntry>"
    "<EnumEntry Name='Mono12'><Value>12</Value><pIsAvailable>Deep</pIsAvailable></EnumEntry>"
    "<EnumEntry "
    "Name='Bayer'><Value>20</Value><Symbolic>BayerRG</Symbolic><pIsImplemented>Never</pIsImplemented></EnumEntry>"
    "<pValue>Reg</pValue></Enumeration>"
    "<Integer Name='Deep'><Value>0</Value></Integer><Integer Name='Never'><Value>0</Value></Integer>"
    "<Integer Name='Reg'><Value>8</Value></Integer>";

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

  EXPECT_EQ(refusal<AccessException>([&] { format->SetIntValue(12); }), "Format: entry 'Mono12' is not available");
  EXPECT_THROW(format->FromString("Mono12"), AccessException);
  EXPECT_EQ(refusal<InvalidArgumentException>([&] { format->FromString("Mono9"); }), "Format: no entry named 'Mono9'");
  EXPECT_EQ(refusal<InvalidArgumentException>([&] { format->SetIntValue(77, false); }),
            "Format: no entry with value 77");
  EXPECT_THROW(format->FromString("mono8"), InvalidArgumentException);
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

TEST(Enumeration, EntriesByNameAndValue) {
  TestMap t(kFormats);
  const CEnumerationPtr format = t.enumeration("Format");
  EXPECT_EQ(format->GetEntryByName("BayerRG")->GetValue(), 20);
  EXPECT_EQ(format->GetEntryByName("Bayer"), nullptr) << "its Symbolic has replaced the name";
  EXPECT_EQ(format->GetEntry(12)->GetSymbolic(), "Mono12");
  EXPECT_EQ(format->GetEntry(13), nullptr);
}

TEST(Enumeration, SeveralEntriesOfOneValue) {
  TestMap t(
      "<Enumeration Name='E'><EnumEntry Name='First'><Value>1</Value><pIsAvailable>G</pIsAvailable></EnumEntry>"
      "<EnumEntry Name='Second'><Value>1</Value></EnumEntry>"
      "<EnumEntry Name='Lost'><Value>2</Value><pIsAvailable>G</pIsAvailable></EnumEntry>"
      "<EnumEntry Name='LostToo'><Value>2</Value><pIsAvailable>G</pIsAvailable></EnumEntry>"
      "<Value>1</Value></Enumeration><Integer Name='G'><Value>1</Value></Integer>");
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
  TestMap t(
      "<Enumeration Name='E'><EnumEntry Name='X'><Value>0x10</Value><NumericValue>1.5</NumericValue>"
      "<IsSelfClearing>Yes</IsSelfClearing></EnumEntry><EnumEntry Name='Y'><Value>-3</Value></EnumEntry>"
      "<Value>-3</Value></Enumeration>");
  const CEnumEntryPtr x = t.node("EnumEntry_E_X"), y = t.node("EnumEntry_E_Y");
  EXPECT_EQ(x->GetValue(), 16);
  EXPECT_EQ(x->GetNumericValue(), 1.5);
  EXPECT_TRUE(x->IsSelfClearing());
  EXPECT_EQ(y->GetNumericValue(), -3.0);
  EXPECT_FALSE(y->IsSelfClearing());
  EXPECT_EQ(x->ToString(), "16");
  EXPECT_THROW(x->FromString("16"), AccessException);
  EXPECT_THROW(x->FromString("16", false), AccessException);
}

TEST(Enumeration, AsSourceOfNumbersUsesNumericValues) {
  TestMap t(
      "<Enumeration Name='E'><EnumEntry Name='A'><Value>0</Value><NumericValue>1.5</NumericValue></EnumEntry>"
      "<EnumEntry Name='B'><Value>1</Value><NumericValue>20</NumericValue></EnumEntry>"
      "<EnumEntry Name='C'><Value>2</Value><NumericValue>1.7</NumericValue><pIsAvailable>G</pIsAvailable></EnumEntry>"
      "<Value>1</Value></Enumeration><Integer Name='G'><Value>1</Value></Integer>"
      "<Integer Name='I'><pValue>E</pValue></Integer><Float Name='F'><pValue>E</pValue></Float>");
  EXPECT_EQ(t.integer("I")->GetValue(), 20);
  t.integer("I")->SetValue(1);
  EXPECT_EQ(t.enumeration("E")->ToString(), "A");
  EXPECT_EQ(t.integer("I")->GetValue(), 2) << "1.5, rounded";
  t.real("F")->SetValue(1.69);
  EXPECT_EQ(t.enumeration("E")->ToString(), "C");
  t.integer("G")->SetValue(0);
  t.real("F")->SetValue(1.69);
  EXPECT_EQ(t.enumeration("E")->ToString(), "A") << "the nearest of those that are available";
  for (const char* entry : {"A", "B"}) t.node(std::string("EnumEntry_E_") + entry)->ImposeAccessMode(NA);
  EXPECT_THROW(t.real("F")->SetValue(1, false), AccessException);
}

TEST(Enumeration, WideValuesKeepTheirBitsAsNumbers) {
  TestMap t(
      "<Enumeration Name='E'><EnumEntry Name='A'><Value>9007199254740992</Value></EnumEntry>"
      "<EnumEntry Name='B'><Value>9007199254740993</Value></EnumEntry><Value>9007199254740992</Value></Enumeration>"
      "<Integer Name='I'><pValue>E</pValue></Integer>");
  t.integer("I")->SetValue(9007199254740993);
  EXPECT_EQ(t.enumeration("E")->ToString(), "B");
  EXPECT_EQ(t.integer("I")->GetValue(), 9007199254740993);
}

TEST(Enumeration, SelfClearingEntryIsAskedPastTheCache) {
  TestMap t(
      "<Enumeration Name='E'><EnumEntry Name='Off'><Value>0</Value></EnumEntry>"
      "<EnumEntry Name='Once'><Value>1</Value><IsSelfClearing>Yes</IsSelfClearing></EnumEntry>"
      "<pValue>R</pValue></Enumeration>" +
      reg("IntReg", "R", 0, 1) +
      "<IntSwissKnife Name='K'><pVariable Name='X'>E</pVariable><Formula>X</Formula></IntSwissKnife>");
  int fired = 0;
  t.enumeration("E")->FromString("Once");
  EXPECT_EQ(t.integer("K")->GetValue(), 1);
  Register(t.node("K"), [&](INode*) { ++fired; });
  t.port.counts();
  EXPECT_EQ(t.enumeration("E")->ToString(), "Once");
  EXPECT_EQ(t.enumeration("E")->ToString(), "Once");
  EXPECT_EQ(t.port.counts(), "2r0w");
  t.port.poke(0, {0});
  EXPECT_EQ(t.enumeration("E")->ToString(), "Off");
  EXPECT_EQ(t.integer("K")->GetValue(), 0) << "dependents forget silently";
  t.port.counts();
  EXPECT_EQ(t.enumeration("E")->ToString(), "Off");
  EXPECT_EQ(t.port.counts(), "0r0w");
  EXPECT_EQ(fired, 0);
}

TEST(Enumeration, OneBadEntryCostsOneEntry) {
  TestMap t(
      "<Enumeration Name='E'><EnumEntry Name='Bad'><Value>x</Value></EnumEntry>"
      "<EnumEntry Name='Good'><Value>1</Value></EnumEntry><Value>1</Value></Enumeration>");
  EXPECT_EQ(t.mode("E"), RW);
  EXPECT_THAT(symbolics(t.enumeration("E")), ElementsAre("Good"));
  EXPECT_EQ(t.mode("EnumEntry_E_Bad"), NI);
  EXPECT_THROW(t.value("EnumEntry_E_Bad")->ToString(), RuntimeException);
}

TEST(Enumeration, TopLevelEntriesOfSchema10) {
  TestMap t(
      "<EnumEntry Name='Lonely'><Value>4</Value></EnumEntry>"
      "<Enumeration Name='E'><pEnumEntry>Lonely</pEnumEntry><Value>4</Value></Enumeration>",
      0);
  EXPECT_EQ(t.enumeration("E")->ToString(), "Lonely");
  EXPECT_EQ(t.enumeration("E")->GetEntryByName("Lonely")->GetValue(), 4);
}

TEST(Boolean, ComparesWithItsTwoValues) {
  TestMap t(
      "<Boolean Name='B'><pValue>V</pValue><OnValue>7</OnValue><OffValue>-1</OffValue></Boolean>"
      "<Integer Name='V'><Value>7</Value><Max>7</Max></Integer><Boolean Name='Own'><Value>true</Value></Boolean>"
      "<Boolean Name='Plain'><pValue>V</pValue></Boolean>");
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
  t.node("V")->ImposeAccessMode(RW);
  t.integer("V")->ImposeMax(0);
  EXPECT_EQ(refusal<OutOfRangeException>([&] { t.boolean("B")->SetValue(true); }),
            "B > V: value 7 must be at most Max = 0");
  t.boolean("B")->SetValue(true, false);
  EXPECT_TRUE(t.boolean("B")->GetValue());
  EXPECT_THROW(t.boolean("Plain")->GetValue(), LogicalErrorException);
}

TEST(Boolean, OverOtherKindsOfNumbers) {
  TestMap t(
      "<Boolean Name='OverE'><pValue>E</pValue><OnValue>50</OnValue></Boolean>"
      "<Enumeration Name='E'><EnumEntry Name='No'><Value>0</Value></EnumEntry><EnumEntry Name='Yes'><Value>1</Value>"
      "<NumericValue>50</NumericValue></EnumEntry><Value>0</Value></Enumeration>"
      "<Boolean Name='OverB'><pValue>OverE</pValue></Boolean>");
  EXPECT_FALSE(t.boolean("OverB")->GetValue());
  t.boolean("OverB")->SetValue(true);
  EXPECT_EQ(t.enumeration("E")->ToString(), "Yes");
  EXPECT_TRUE(t.boolean("OverE")->GetValue());
  EXPECT_TRUE(t.boolean("OverB")->GetValue());
}

TEST(Command, WritesItsValueAndAsksPastTheCache) {
  TestMap t("<Command Name='C'><pValue>R</pValue><pCommandValue>V</pCommandValue></Command>" +
            reg("IntReg", "R", 0, 1) + reg("IntReg", "V", 1, 1));
  t.port.poke(1, {5});
  EXPECT_TRUE(t.command("C")->IsDone()) << "never executed: the register answers";
  t.port.counts();
  t.port.poke(1, {6});
  t.command("C")->Execute();
  EXPECT_EQ(t.port.memory[0], 6) << "the command value is read afresh";
  EXPECT_FALSE(t.command("C")->IsDone()) << "written through a cache, read from the device";
  EXPECT_EQ(t.value("C")->ToString(), "1");
  t.port.poke(0, {0});
  EXPECT_TRUE(t.command("C")->IsDone());
  EXPECT_EQ(t.value("C")->ToString(), "0");
  t.port.onWrite = [](int64_t, int64_t) { throw TIMEOUT_EXCEPTION("busy"); };
  EXPECT_THROW(t.command("C")->Execute(), TimeoutException);
  EXPECT_TRUE(t.command("C")->IsDone());
}

TEST(Command, WithoutReadableSourceIsAlwaysDone) {
  TestMap t(
      "<Command Name='C'><pValue>R</pValue><CommandValue>1</CommandValue></Command>" +
      reg("IntReg", "R", 0, 1, tag("AccessMode", "WO")) +
      "<Command Name='Own'><Value>0</Value><CommandValue>9</CommandValue></Command>"
      "<Command Name='Hidden'><Value>0</Value><CommandValue>9</CommandValue><pIsAvailable>Zero</pIsAvailable></Command>"
      "<Integer Name='Zero'><Value>0</Value></Integer>");
  EXPECT_EQ(t.mode("C"), WO);
  t.command("C")->Execute();
  EXPECT_TRUE(t.command("C")->IsDone());
  EXPECT_EQ(t.port.counts(), "0r1w");
  t.command("Own")->Execute();
  EXPECT_TRUE(t.command("Own")->IsDone());
  EXPECT_THROW(t.command("Hidden")->IsDone(), AccessException);
  EXPECT_THROW(t.command("Hidden")->Execute(), AccessException);
  EXPECT_THROW(t.value("Hidden")->FromString("x"), AccessException) << "the access mode comes before the text";
  EXPECT_THROW(t.value("Own")->FromString("0"), InvalidArgumentException);
  t.value("Own")->FromString("true");
}

// Which features a selector selects, and who selects a feature.
#include "NodeNames.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

Names selected(const TestMap& map, const std::string& name, bool selecting = false) {
  FeatureList_t list(3);  // whatever was in it goes
  const CSelectorPtr selector(map.node(name));
  selecting ? selector->GetSelectingFeatures(list) : selector->GetSelectedFeatures(list);
  return namesOf(list);
}

Names selecting(const TestMap& map, const std::string& name) { return selected(map, name, true); }

TEST(Selectors, SelectTheirTargetsAndWhatReadsThem) {
  TestMap map(R"(
    <Category Name="Root"><pFeature>A</pFeature><pFeature>AA</pFeature></Category>
    <Integer Name="Selector"><Value>0</Value><pSelected>A</pSelected><pSelected>B</pSelected></Integer>
    <Integer Name="AA"><pValue>A</pValue></Integer>
    <Integer Name="A"><Value>0</Value></Integer>
    <Integer Name="B"><Value>0</Value></Integer>
    <Integer Name="Beside"><Value>0</Value><pInvalidator>A</pInvalidator></Integer>)");
  EXPECT_THAT(selected(map, "Selector"), ElementsAre("A", "B", "AA"));
  for (const char* each : {"A", "B", "AA"}) EXPECT_THAT(selecting(map, each), ElementsAre("Selector")) << each;
  for (const char* each : {"Selector", "Root", "Beside", "Device"})
    EXPECT_THAT(selecting(map, each), IsEmpty()) << each;
  EXPECT_TRUE(CSelectorPtr(map.node("Selector"))->IsSelector());
  for (const char* each : {"A", "AA", "Root", "Device"}) {
    EXPECT_FALSE(CSelectorPtr(map.node(each))->IsSelector()) << each;
    EXPECT_THAT(selected(map, each), IsEmpty()) << each;
  }
}

TEST(Selectors, ReachThroughLimitsFormulasAndAddressesButNotThroughCategories) {
  TestMap map(
      "<Category Name=\"Root\"><pFeature>Group</pFeature></Category>"
      "<Category Name=\"Group\"><pFeature>Low</pFeature></Category>"
      "<Integer Name=\"Selector\"><Value>0</Value><pSelected>Group</pSelected><pSelected>Base</pSelected>"
      "</Integer>"
      "<IntSwissKnife Name=\"Low\"><pVariable Name=\"X\">Base</pVariable><Formula>X</Formula></IntSwissKnife>"
      "<Integer Name=\"Limited\"><Value>0</Value><pMin>Low</pMin></Integer>" +
      reg("IntReg", "Moved", 0, 4, "<pAddress>Limited</pAddress>") + reg("IntReg", "Base", 8, 4) +
      "<Integer Name=\"Guarded\"><pIsAvailable>Base</pIsAvailable><Value>0</Value></Integer>");
  EXPECT_THAT(selected(map, "Selector"), ElementsAre("Group", "Base", "Low", "Limited", "Moved"));
  EXPECT_THAT(selecting(map, "Group"), ElementsAre("Selector"));
  EXPECT_THAT(selecting(map, "Root"), IsEmpty());
  EXPECT_THAT(selecting(map, "Moved"), ElementsAre("Selector"));
  EXPECT_THAT(selecting(map, "Guarded"), IsEmpty());
}

TEST(Selectors, MayBeOfAnyKindWithoutRegardToAccess) {
  TestMap map(R"(
    <Integer Name="Number"><pIsImplemented>Zero</pIsImplemented><Value>0</Value><pSelected>Gain</pSelected></Integer>
    <Enumeration Name="Word"><EnumEntry Name="One"><Value>1</Value></EnumEntry><Value>1</Value>
      <pSelected>Gain</pSelected></Enumeration>
    <Boolean Name="Flag"><Value>false</Value><pSelected>Gain</pSelected></Boolean>
    <Integer Name="Outer"><Value>0</Value><pSelected>Number</pSelected></Integer>
    <Float Name="Gain"><pIsAvailable>Zero</pIsAvailable><Value>0</Value></Float>
    <Integer Name="Zero"><Value>0</Value></Integer>)" +
              reg("IntReg", "Register", 0, 4, "<pSelected>Gain</pSelected>"));
  EXPECT_THAT(selecting(map, "Gain"), ElementsAre("Number", "Word", "Flag", "Register")) << "Outer not: one by one";
  for (const char* each : {"Number", "Register"}) EXPECT_THAT(selected(map, each), ElementsAre("Gain"));
  EXPECT_THAT(selected(map, "Outer"), ElementsAre("Number"));
}

TEST(Selectors, DropAndCallBackWhatTheySelectAtEachWrite) {
  TestMap map("<Integer Name=\"Selector\"><Value>0</Value><pSelected>Gain</pSelected></Integer>" +
              reg("IntReg", "Gain", 0, 4, "<pIndex Offset=\"4\">Selector</pIndex>"));
  map.port.poke(0, {10, 0, 0, 0, 11});
  EXPECT_EQ(map.integer("Gain")->GetValue(), 10);
  CallLog log;
  log.watch(map, {"Gain"});
  for (int i = 0; i < 10; ++i) map.integer("Selector")->SetValue(i % 2);
  EXPECT_EQ(log.take().size(), 10U);
  EXPECT_EQ(map.integer("Gain")->GetValue(), 11);
}

}  // namespace

// Relations between nodes as lists: children, parents, dependents, ends of writing chains; and categories.
#include "NodeNames.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

Names children(const TestMap& map, const std::string& name, ELinkType type) {
  NodeList_t list(3);  // whatever was in it goes
  map.node(name)->GetChildren(list, type);
  return namesOf(list);
}

Names parents(const TestMap& map, const std::string& name) {
  NodeList_t list(3);
  map.node(name)->GetParents(list);
  return namesOf(list);
}

TEST(RelationLists, TellReadingWritingInvalidatingAndTheirOpposites) {
  TestMap map(R"(
    <Integer Name="TheNode"><pInvalidator>G</pInvalidator><pValue>A</pValue><pMin>B</pMin></Integer>
    <Integer Name="A"><pValue>C</pValue></Integer>
    <Integer Name="B"><Value>0</Value></Integer>
    <Integer Name="C"><Value>0</Value></Integer>
    <Integer Name="D"><pValue>TheNode</pValue></Integer>
    <Integer Name="E"><pValue>D</pValue></Integer>
    <Integer Name="F"><pInvalidator>TheNode</pInvalidator><Value>0</Value></Integer>
    <Integer Name="G"><pInvalidator>H</pInvalidator><Value>0</Value></Integer>
    <Integer Name="H"><Value>0</Value></Integer>)");
  EXPECT_THAT(children(map, "TheNode", ctWritingChildren), ElementsAre("A"));
  EXPECT_THAT(children(map, "TheNode", ctReadingChildren), ElementsAre("A", "B"));
  EXPECT_THAT(children(map, "TheNode", ctInvalidatingChildren), testing::UnorderedElementsAre("A", "B", "G"));
  EXPECT_THAT(children(map, "TheNode", ctTerminalNodes), ElementsAre("C"));
  EXPECT_THAT(children(map, "TheNode", ctParentNodes), ElementsAre("D"));
  EXPECT_THAT(children(map, "TheNode", ctDependingNodes), ElementsAre("D", "E", "F"));
  EXPECT_THAT(parents(map, "TheNode"), ElementsAre("D"));
  EXPECT_THAT(children(map, "C", ctTerminalNodes), ElementsAre("C")) << "a node that writes no further";
  EXPECT_THAT(children(map, "C", ctReadingChildren), IsEmpty());

  NodeList_t byDefault;
  map.node("TheNode")->GetChildren(byDefault);
  EXPECT_THAT(namesOf(byDefault), ElementsAre("A", "B"));
}

TEST(RelationLists, CountEveryLinkThatIsReadOnce) {
  TestMap map(R"(
    <Integer Name="Table"><pIndex>I</pIndex><pValueIndexed Index="1">V</pValueIndexed>
      <ValueIndexed Index="2">5</ValueIndexed><pValueIndexed Index="3">V</pValueIndexed>
      <pValueDefault>W</pValueDefault><pMin>L</pMin><pMax>L</pMax><pInc>K</pInc></Integer>
    <Integer Name="Copies"><pValueCopy>V</pValueCopy><pValue>W</pValue><pValueCopy>L</pValueCopy></Integer>
    <IntSwissKnife Name="K"><pVariable Name="X">I</pVariable><pVariable Name="Y">L</pVariable>
      <pVariable Name="Z">I</pVariable><Formula>1</Formula></IntSwissKnife>
    <Command Name="Go"><pValue>V</pValue><pCommandValue>W</pCommandValue></Command>
    <IntReg Name="Raw"><pAddress>I</pAddress><IntSwissKnife Name="Knife"><pVariable Name="X">V</pVariable>
      <Formula>X</Formula></IntSwissKnife><pIndex pOffset="L">W</pIndex><pLength>K</pLength>
      <pPort>Device</pPort></IntReg>
    <Port Name="Device"><pChunkID>Id</pChunkID></Port>
    <String Name="Id"><Value>00</Value></String>
    <Integer Name="I"><Value>1</Value></Integer>
    <Integer Name="V"><Value>1</Value></Integer>
    <Integer Name="W"><Value>1</Value></Integer>
    <Integer Name="L"><Value>1</Value></Integer>
    <Integer Name="Guarded"><pIsImplemented>I</pIsImplemented><pIsAvailable>I</pIsAvailable><pIsLocked>I</pIsLocked>
      <pError>Mode</pError><pAlias>V</pAlias><Value>0</Value><pSelected>W</pSelected></Integer>
    <Enumeration Name="Mode"><EnumEntry Name="Off"><Value>0</Value></EnumEntry>
      <EnumEntry Name="On"><Value>1</Value></EnumEntry><pValue>V</pValue></Enumeration>)");
  EXPECT_THAT(children(map, "Table", ctReadingChildren), ElementsAre("I", "V", "W", "L", "K"));
  EXPECT_THAT(children(map, "Table", ctWritingChildren), ElementsAre("V", "W"));
  EXPECT_THAT(children(map, "Table", ctTerminalNodes), ElementsAre("V", "W"));
  EXPECT_THAT(children(map, "Copies", ctReadingChildren), ElementsAre("W"));
  EXPECT_THAT(children(map, "Copies", ctWritingChildren), ElementsAre("V", "W", "L"));
  EXPECT_THAT(children(map, "K", ctReadingChildren), ElementsAre("I", "L"));
  EXPECT_THAT(children(map, "K", ctWritingChildren), IsEmpty());
  EXPECT_THAT(children(map, "Go", ctReadingChildren), ElementsAre("V", "W"));
  EXPECT_THAT(children(map, "Go", ctWritingChildren), ElementsAre("V"));
  EXPECT_THAT(children(map, "Raw", ctReadingChildren), ElementsAre("I", "_Raw_Knife", "W", "L", "K"));
  EXPECT_THAT(children(map, "Raw", ctInvalidatingChildren), ElementsAre("I", "_Raw_Knife", "W", "L", "K"));
  EXPECT_THAT(children(map, "Device", ctReadingChildren), ElementsAre("Id"));
  EXPECT_THAT(children(map, "Guarded", ctReadingChildren), IsEmpty());
  EXPECT_THAT(children(map, "Guarded", ctInvalidatingChildren), IsEmpty());
  EXPECT_THAT(children(map, "Mode", ctReadingChildren),
              testing::UnorderedElementsAre("EnumEntry_Mode_Off", "EnumEntry_Mode_On", "V"));
  EXPECT_THAT(parents(map, "EnumEntry_Mode_On"), ElementsAre("Mode"));
  EXPECT_THAT(parents(map, "Id"), ElementsAre("Device"));
  EXPECT_THAT(parents(map, "Device"), IsEmpty());
}

TEST(RelationLists, LeaveTheNodeOutOfItsOwnDependents) {
  TestMap map(R"(
    <Integer Name="A"><pInvalidator>B</pInvalidator><Value>0</Value></Integer>
    <Integer Name="B"><pInvalidator>A</pInvalidator><Value>0</Value></Integer>)");
  EXPECT_THAT(children(map, "A", ctDependingNodes), ElementsAre("B"));
  EXPECT_THAT(children(map, "B", ctDependingNodes), ElementsAre("A"));
}

TEST(RelationLists, TellAllNodesInTheOrderOfTheDescription) {
  TestMap map(R"(
    <Group Comment="g"><Integer Name="Z"><Value>0</Value></Integer></Group>
    <Enumeration Name="Mode"><EnumEntry Name="B"><Value>0</Value></EnumEntry>
      <EnumEntry Name="A"><Value>1</Value></EnumEntry><Value>0</Value></Enumeration>
    <IntReg Name="Raw"><IntSwissKnife Name="Knife"><Formula>4</Formula></IntSwissKnife><Length>4</Length>
      <pPort>Device</pPort></IntReg>)");
  NodeList_t all(7);
  map.map->GetNodes(all);
  EXPECT_THAT(namesOf(all),
              ElementsAre("Z", "Mode", "EnumEntry_Mode_B", "EnumEntry_Mode_A", "_Raw_Knife", "Raw", "Device"));
  EXPECT_EQ(map.map->GetNumNodes(), 7U);
}

TEST(Categories, ListTheirFeaturesOnceAndNoPorts) {
  TestMap map(R"(
    <Category Name="Root"><pFeature>B</pFeature><pFeature>Device</pFeature><pFeature>Sub</pFeature>
      <pFeature>A</pFeature><pFeature>B</pFeature></Category>
    <Category Name="Sub"><pFeature>Deep</pFeature></Category>
    <Category Name="Aside"><pFeature>Lost</pFeature></Category>
    <Integer Name="A"><pIsImplemented>Zero</pIsImplemented><Value>0</Value></Integer>
    <Integer Name="B"><Value>0</Value></Integer>
    <Integer Name="Zero"><Value>0</Value></Integer>
    <Integer Name="Deep"><Value>0</Value></Integer>
    <Integer Name="Lost"><Value>0</Value></Integer>)");
  FeatureList_t features(2);
  CCategoryPtr(map.node("Root"))->GetFeatures(features);
  EXPECT_THAT(namesOf(features), ElementsAre("B", "Sub", "A"));
  for (const char* each : {"A", "B", "Sub", "Deep"}) EXPECT_TRUE(map.node(each)->IsFeature()) << each;
  for (const char* each : {"Zero", "Lost", "Aside"}) EXPECT_FALSE(map.node(each)->IsFeature()) << each;
  EXPECT_EQ(map.node("Sub")->GetPrincipalInterfaceType(), intfICategory);
}

TEST(Categories, AreAsVisibleAsTheirMostVisibleFeature) {
  TestMap map(R"(
    <Category Name="Root"><Visibility>Invisible</Visibility><pFeature>Experts</pFeature><pFeature>Nobody</pFeature>
      </Category>
    <Category Name="Experts"><Visibility>Beginner</Visibility><pFeature>Secret</pFeature><pFeature>Level</pFeature>
      </Category>
    <Category Name="Nobody"/>
    <Integer Name="Level"><Visibility>Expert</Visibility><Value>0</Value></Integer>
    <Integer Name="Secret"><Visibility>Guru</Visibility><Value>0</Value></Integer>)");
  const auto visibility = [&](const char* name) { return map.node(name)->GetVisibility(); };
  EXPECT_EQ(visibility("Experts"), Expert);
  EXPECT_EQ(visibility("Nobody"), Invisible);
  EXPECT_EQ(visibility("Root"), Expert);
  map.node("Level")->ImposeVisibility(Beginner);
  EXPECT_EQ(visibility("Level"), Expert) << "imposing can only restrict";
  map.node("Level")->ImposeVisibility(Invisible);
  EXPECT_EQ(visibility("Level"), Invisible);
  EXPECT_EQ(visibility("Root"), Guru);
  map.node("Experts")->ImposeVisibility(Invisible);
  EXPECT_EQ(visibility("Experts"), Invisible);
  EXPECT_EQ(visibility("Root"), Invisible);
  EXPECT_EQ(visibility("Secret"), Guru);
}

}  // namespace

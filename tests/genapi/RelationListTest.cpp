// Relations between nodes as lists: children, parents, dependents, ends of writing chains; and categories.
#include "NodeNames.h"

namespace {

using testing::ElementsAre;

// The lists that are not empty: reading, writing, invalidating children, terminal, parent and depending nodes.
std::string relations(const TestMap& map, const std::string& name) {
  const std::pair<const char*, ELinkType> types[] = {{"r:", ctReadingChildren},      {"w:", ctWritingChildren},
                                                     {"i:", ctInvalidatingChildren}, {"t:", ctTerminalNodes},
                                                     {"p:", ctParentNodes},          {"d:", ctDependingNodes}};
  std::string text;
  for (const auto& [mark, type] : types) {
    NodeList_t list(3), parents(3);  // whatever was in it goes
    map.node(name)->GetChildren(list, type);
    map.node(name)->GetParents(parents);
    EXPECT_TRUE(type != ctParentNodes || namesOf(list) == namesOf(parents)) << name;
    if (!list.empty()) text += mark;
    for (const std::string& each : namesOf(list)) text += each + " ";
  }
  return text;
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
  EXPECT_EQ(relations(map, "TheNode"), "r:A B w:A i:G A B t:C p:D d:D E F ");
  EXPECT_EQ(relations(map, "C"), "t:C p:A d:TheNode A D E F ") << "a node that writes no further";
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
  const std::pair<const char*, const char*> cases[] = {
      {"Table", "r:I V W L K w:V W i:I V W L K t:V W "},
      {"Copies", "r:W w:V W L i:W t:V W L "},
      {"K", "r:I L i:I L t:K p:Table Raw d:Table Raw "},
      {"Go", "r:V W w:V i:V W t:V "},
      {"Raw", "r:I _Raw_Knife W L K i:I _Raw_Knife W L K t:Raw "},
      {"Device", "r:Id i:Id t:Device d:Raw "},
      {"Guarded", "t:Guarded d:Table Copies Go Raw W "},
      {"Mode", "r:EnumEntry_Mode_Off EnumEntry_Mode_On V w:V i:EnumEntry_Mode_Off EnumEntry_Mode_On V t:V "},
      {"EnumEntry_Mode_On", "t:EnumEntry_Mode_On p:Mode d:Mode "},
      {"Id", "t:Id p:Device d:Raw Device "},
  };
  for (const auto& [name, expected] : cases) EXPECT_EQ(relations(map, name), expected) << name;
}

TEST(RelationLists, LeaveTheNodeOutOfItsOwnDependents) {
  TestMap map(R"(
    <Integer Name="A"><pInvalidator>B</pInvalidator><Value>0</Value></Integer>
    <Integer Name="B"><pInvalidator>A</pInvalidator><Value>0</Value></Integer>)");
  EXPECT_EQ(relations(map, "A"), "i:B t:A d:B ");
  EXPECT_EQ(relations(map, "B"), "i:A t:B d:A ");
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

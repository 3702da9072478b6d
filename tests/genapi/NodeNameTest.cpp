// Names, flags and texts of nodes, and the device that the description speaks of.
#include "NodeNames.h"

namespace {

TEST(NodeNames, AreFoundPlainOrWithTheirNameSpace) {
  TestMap map(R"(
    <Integer Name="Width" NameSpace="Standard"><Value>0</Value></Integer>
    <Integer Name="Magic" NameSpace="Custom"><Value>0</Value></Integer>
    <Integer Name="Plain"><Value>0</Value></Integer>)");
  INodeMap* nodes = map.map;
  for (const char* each : {"Width", "Std::Width"}) EXPECT_EQ(nodes->GetNode(each), map.node("Width")) << each;
  for (const char* each : {"Magic", "Cust::Magic"}) EXPECT_EQ(nodes->GetNode(each), map.node("Magic")) << each;
  EXPECT_EQ(nodes->GetNode("Cust::Plain"), map.node("Plain"));
  for (const char* each : {"Cust::Width", "Std::Magic", "Std::", "::Width", "Foo::Width", "std::Width",
                           "Std::Std::Width", "width", " Width", "Widt", "Width2", "Std:Width", ""})
    EXPECT_EQ(nodes->GetNode(each), nullptr) << each;
  EXPECT_EQ(map.node("Width")->GetNameSpace(), Standard);
  EXPECT_EQ(map.node("Plain")->GetNameSpace(), Custom);
  EXPECT_STREQ(map.node("Width")->GetName(), "Width");
  EXPECT_STREQ(map.node("Width")->GetName(true), "Width") << "the same name in every list and text";
  EXPECT_STREQ(map.node("Magic")->GetName(true), "Magic");
}

TEST(NodeNames, ComeWithTheTextsOfTheDescription) {
  TestMap map(R"(
    <Integer Name="Full"><ToolTip> Short </ToolTip><Description>Long &amp; winding</Description>
      <DisplayName> The Full One </DisplayName><Visibility>Guru</Visibility><IsDeprecated>Yes</IsDeprecated>
      <EventID>9a0B</EventID><Streamable>Yes</Streamable><Value>0</Value></Integer>
    <Integer Name="Bare"><Value>0</Value></Integer>
    <Enumeration Name="Mode">
      <EnumEntry Name="Off"><Value>0</Value></EnumEntry>
      <EnumEntry Name="A"><DisplayName>First</DisplayName><Value>1</Value><Symbolic>One</Symbolic></EnumEntry>
      <EnumEntry Name="B"><Value>2</Value><Symbolic>Two</Symbolic></EnumEntry>
      <Value>0</Value></Enumeration>)");
  const auto told = [&](const char* name) {
    const INode* node = map.node(name);
    std::string all;
    for (const gcstring& each : {node->GetToolTip(), node->GetDescription(), node->GetDisplayName(), node->GetEventID(),
                                 node->GetDocuURL(), node->GetDeviceName()}) {
      all += std::string(each.c_str()) + "|";
    }
    for (const int64_t each : {int64_t{node->GetVisibility()}, int64_t{node->IsDeprecated()},
                               int64_t{node->IsStreamable()}, int64_t{node->IsFeature()}, node->GetPollingTime()}) {
      all += std::to_string(each) + " ";
    }
    return all;
  };
  EXPECT_EQ(told("Full"), "Short|Long & winding|The Full One|9a0B||Device|2 1 1 0 -1 ");
  EXPECT_EQ(told("Bare"), "||Bare|||Device|0 0 0 0 -1 ") << "no feature: there is no category Root";

  EXPECT_STREQ(map.node("EnumEntry_Mode_Off")->GetDisplayName(), "Off");
  EXPECT_STREQ(map.node("EnumEntry_Mode_A")->GetDisplayName(), "First");
  EXPECT_STREQ(map.node("EnumEntry_Mode_B")->GetDisplayName(), "Two");
  EXPECT_STREQ(CEnumEntryPtr(map.node("EnumEntry_Mode_A"))->GetSymbolic(), "One");
}

}  // namespace

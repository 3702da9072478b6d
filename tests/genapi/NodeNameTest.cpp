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
                           "Std::Std::Width", "width", " Width", "Widt", "Width2", "Std:Width", ""}) {
    EXPECT_EQ(nodes->GetNode(each), nullptr) << each;
  }
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
  const INode* full = map.node("Full");
  EXPECT_STREQ(full->GetToolTip(), "Short");
  EXPECT_STREQ(full->GetDescription(), "Long & winding");
  EXPECT_STREQ(full->GetDisplayName(), "The Full One");
  EXPECT_STREQ(full->GetEventID(), "9a0B");
  EXPECT_EQ(full->GetVisibility(), Guru);
  EXPECT_TRUE(full->IsDeprecated());
  EXPECT_TRUE(full->IsStreamable());
  const INode* bare = map.node("Bare");
  for (const gcstring& each : {bare->GetToolTip(), bare->GetDescription(), bare->GetEventID(), bare->GetDocuURL()}) {
    EXPECT_STREQ(each, "");
  }
  EXPECT_STREQ(bare->GetDisplayName(), "Bare");
  EXPECT_STREQ(bare->GetDeviceName(), "Device");
  EXPECT_EQ(bare->GetVisibility(), Beginner);
  EXPECT_FALSE(bare->IsDeprecated());
  EXPECT_FALSE(bare->IsStreamable());
  EXPECT_FALSE(bare->IsFeature()) << "there is no category Root";
  EXPECT_EQ(bare->GetPollingTime(), -1);

  EXPECT_STREQ(map.node("EnumEntry_Mode_Off")->GetDisplayName(), "Off");
  EXPECT_STREQ(map.node("EnumEntry_Mode_A")->GetDisplayName(), "First");
  EXPECT_STREQ(map.node("EnumEntry_Mode_B")->GetDisplayName(), "Two");
  EXPECT_STREQ(CEnumEntryPtr(map.node("EnumEntry_Mode_A"))->GetSymbolic(), "One");
}

TEST(NodeNames, OfEntriesThatStandAloneAreTheirOwn) {
  TestMap map(R"(
    <Enumeration Name="Mode"><pEnumEntry>Slow</pEnumEntry><pEnumEntry>EnumEntry_Mode_Fast</pEnumEntry>
      <Value>1</Value></Enumeration>
    <EnumEntry Name="Slow"><Value>0</Value></EnumEntry>
    <EnumEntry Name="EnumEntry_Mode_Fast"><Value>1</Value></EnumEntry>)",
              0);
  StringList_t symbolics;
  map.enumeration("Mode")->GetSymbolics(symbolics);
  EXPECT_THAT(namesOf(symbolics), testing::ElementsAre("Slow", "EnumEntry_Mode_Fast"));
  EXPECT_STREQ(map.value("Mode")->ToString(), "EnumEntry_Mode_Fast");
  map.value("Mode")->FromString("Slow");
  EXPECT_EQ(map.enumeration("Mode")->GetIntValue(), 0);
}

TEST(NodeMaps, TellOfTheirDevice) {
  CNodeMapFactory factory(gcstring(description("<Node Name=\"X\"/>").c_str()));
  EXPECT_FALSE(factory.IsEmpty());
  INodeMap* map = factory.CreateNodeMap("Left camera");
  EXPECT_TRUE(factory.IsLoaded());
  INodeMap* second = factory.CreateNodeMap();  // of the same description
  EXPECT_STREQ(map->GetDeviceName(), "Left camera");
  EXPECT_STREQ(map->GetNode("X")->GetDeviceName(), "Left camera");
  EXPECT_STREQ(second->GetDeviceName(), "Device");
  EXPECT_NE(map->GetNode("X"), second->GetNode("X"));

  const CDeviceInfoPtr device(map);
  EXPECT_STREQ(device->GetModelName(), "Model");
  EXPECT_STREQ(device->GetVendorName(), "Vendor");
  EXPECT_STREQ(device->GetToolTip(), "");
  EXPECT_STREQ(device->GetStandardNameSpace(), "None");
  EXPECT_STREQ(device->GetProductGuid(), "1F3C6A72-7842-4edd-9130-E2E90A2058BA");
  EXPECT_STREQ(device->GetVersionGuid(), "7645D2A1-A41E-4ac6-B486-1531FB7BECE6");
  const auto text = [](const Version_t& version) {
    return std::to_string(version.Major) + "." + std::to_string(version.Minor) + "." + std::to_string(version.SubMinor);
  };
  Version_t version;
  uint16_t build = 9;
  device->GetGenApiVersion(version, build);
  EXPECT_EQ(text(version), "3.4.2");
  EXPECT_EQ(build, 0);
  device->GetSchemaVersion(version);
  EXPECT_EQ(text(version), "1.1.0");
  device->GetDeviceVersion(version);
  EXPECT_EQ(text(version), "1.2.3");
  dynamic_cast<IDestroy*>(map)->Destroy();
  dynamic_cast<IDestroy*>(second)->Destroy();
}

}  // namespace

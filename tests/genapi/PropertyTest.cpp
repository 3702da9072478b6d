// The properties of nodes: what the description says of them, as texts.
#include <algorithm>

#include "NodeNames.h"

namespace {

// "value", or "value @ attribute"; tabs between several of either are shown as commas.
std::string property(const TestMap& map, const std::string& name, const std::string& property) {
  gcstring value = "before", attribute = "before";
  if (!map.node(name)->GetProperty(property.c_str(), value, attribute))
    return value.empty() && attribute.empty() ? "absent" : "absent, but a text";
  std::string text = std::string(value.c_str()) + (attribute.empty() ? "" : " @ ") + attribute.c_str();
  std::replace(text.begin(), text.end(), '\t', ',');
  return text;
}

// The properties as "Name=text" with blanks between them.
std::string properties(const TestMap& map, const std::string& name, const Names& wanted) {
  std::string all;
  for (const std::string& each : wanted) all += (all.empty() ? "" : " ") + each + "=" + property(map, name, each);
  return all;
}

TEST(Properties, TellWhatEachTypeCarries) {
  TestMap map(R"(
    <StructReg Comment="s"><Address>16</Address><Length>4</Length><pPort>Device</pPort><Endianess>BigEndian</Endianess>
      <StructEntry Name="Field"><Bit>3</Bit></StructEntry></StructReg>
    <Enumeration Name="Mode" NameSpace="Standard"><ToolTip>How</ToolTip><DisplayName> The mode </DisplayName>
      <Visibility>Guru</Visibility><EnumEntry Name="Off"><Value>0x10</Value></EnumEntry>
      <EnumEntry Name="On"><Value>1</Value></EnumEntry><Value>1</Value><Streamable>Yes</Streamable></Enumeration>
    <Integer Name="Table" MergePriority="1" ExposeStatic="No"><pIndex>Other</pIndex>
      <pValueIndexed Index="2">Other</pValueIndexed>
      <ValueIndexed Index="3">7</ValueIndexed><ValueIndexed Index="0x10">8</ValueIndexed>
      <ValueDefault>9</ValueDefault><Unit>mm</Unit></Integer>
    <Integer Name="Other"><Value>1</Value></Integer>
    <Float Name="Real"><Value>0.50</Value><Max>0x10</Max></Float>
    <String Name="Text"><Value>first</Value></String>
    <Category Name="Root"><pFeature>Mode</pFeature><pFeature>Text</pFeature></Category>)");
  const auto told = [&](const char* name, const Names& wanted) { return properties(map, name, wanted); };
  EXPECT_EQ(told("Field", {"NodeType", "Address", "Bit", "Endianess"}),
            "NodeType=MaskedIntReg Address=16 Bit=3 Endianess=BigEndian");
  EXPECT_EQ(
      told("Mode", {"NameSpace", "ToolTip", "DisplayName", "Visibility", "Streamable", "IsFeature", "pDependent"}),
      "NameSpace=Standard ToolTip=How DisplayName=The mode Visibility=Guru Streamable=Yes IsFeature=Yes "
      "pDependent=Root");
  EXPECT_EQ(told("EnumEntry_Mode_Off", {"pDependent", "Value"}), "pDependent=Root,Mode Value=16");
  EXPECT_EQ(told("Table", {"MergePriority", "ExposeStatic", "pIndex", "pValueIndexed", "ValueIndexed", "ValueDefault",
                           "Unit", "Representation"}),
            "MergePriority=1 ExposeStatic=No pIndex=Other pValueIndexed=Other @ 2 ValueIndexed=7,8 @ 3,16 "
            "ValueDefault=9 Unit=mm Representation=PureNumber");
  EXPECT_EQ(told("Real", {"Value", "Max"}), "Value=0.50 Max=16");
  EXPECT_EQ(told("Text", {"Value", "Representation"}), "Value=first Representation=absent");
  EXPECT_EQ(told("Root", {"pFeature", "pTerminal"}), "pFeature=Mode,Text pTerminal=absent");
  EXPECT_EQ(property(map, "Device", "NodeType"), "Port");
  map.text("Text")->SetValue("second");
  EXPECT_EQ(property(map, "Text", "Value"), "second") << "the present text";
}

}  // namespace

// The properties of nodes: what the description says of them, as texts.
#include "NodeNames.h"

namespace {

using testing::ElementsAre;

Names propertyNames(const TestMap& map, const std::string& name) {
  gcstring_vector names;
  names.push_back("whatever was in it goes");
  map.node(name)->GetPropertyNames(names);
  return namesOf(names);
}

struct Text {
  std::string value, attribute;
  bool operator==(const Text&) const = default;
};
void PrintTo(const Text& text, std::ostream* out) {
  *out << "'" << text.value << "' / '" << text.attribute << "'";
}

Text property(const TestMap& map, const std::string& name, const std::string& property) {
  gcstring value = "before", attribute = "before";
  if (!map.node(name)->GetProperty(property.c_str(), value, attribute)) return {"absent", ""};
  return {value.c_str(), attribute.c_str()};
}

TEST(Properties, OfARegisterWithEveryKindOfLink) {
  TestMap map(R"(
    <Integer Name="Selector"><Value>0</Value><pSelected>TheReg</pSelected></Integer>
    <IntReg Name="TheReg">
      <pIsImplemented>One</pIsImplemented>
      <pInvalidator>First</pInvalidator>
      <pInvalidator>Second</pInvalidator>
      <Address>0x100</Address>
      <Address>0xe00</Address>
      <pAddress>First</pAddress>
      <IntSwissKnife Name="Knife"><pVariable Name="X">First</pVariable><Formula>X</Formula></IntSwissKnife>
      <pAddress>Second</pAddress>
      <pIndex Offset="4">Index</pIndex>
      <pIndex>Index</pIndex>
      <pIndex pOffset="IndexOffset">Index</pIndex>
      <Length>128</Length>
      <AccessMode>RW</AccessMode>
      <pPort>Device</pPort>
      <Cachable>NoCache</Cachable>
      <Endianess>BigEndian</Endianess>
      <pSelected>Chosen</pSelected>
    </IntReg>
    <Integer Name="One"><Value>1</Value></Integer>
    <Integer Name="First"><Value>1</Value></Integer>
    <Integer Name="Second"><Value>1</Value></Integer>
    <Integer Name="Index"><Value>1</Value></Integer>
    <Integer Name="IndexOffset"><Value>1</Value></Integer>
    <Integer Name="Chosen"><Value>1</Value></Integer>
    <Integer Name="Above"><pValue>TheReg</pValue></Integer>
    <Integer Name="Highest"><pValue>Above</pValue></Integer>)");
  EXPECT_THAT(propertyNames(map, "TheReg"),
              ElementsAre("AccessMode", "Address", "Cachable", "DeviceName", "Endianess", "ExposeStatic",
                          "ImposedAccessMode", "IsDeprecated", "IsFeature", "Length", "Name", "NameSpace", "NodeType",
                          "Representation", "Sign", "Streamable", "Visibility", "pAddress", "pDependent", "pIndex",
                          "pInvalidator", "pIsImplemented", "pPort", "pSelected", "pSelecting", "pTerminal"));
  const std::pair<const char*, Text> texts[] = {
      {"AccessMode", {"RW", ""}},
      {"Address", {"256\t3584", ""}},
      {"Cachable", {"NoCache", ""}},
      {"DeviceName", {"Device", ""}},
      {"Endianess", {"BigEndian", ""}},
      {"ExposeStatic", {"Yes", ""}},
      {"ImposedAccessMode", {"RW", ""}},
      {"IsDeprecated", {"No", ""}},
      {"IsFeature", {"No", ""}},
      {"Length", {"128", ""}},
      {"Name", {"TheReg", ""}},
      {"NameSpace", {"Custom", ""}},
      {"NodeType", {"IntReg", ""}},
      {"Representation", {"PureNumber", ""}},
      {"Sign", {"Unsigned", ""}},
      {"Streamable", {"No", ""}},
      {"Visibility", {"Beginner", ""}},
      {"pAddress", {"First\t_TheReg_Knife\tSecond", ""}},
      {"pDependent", {"Highest\tAbove\tChosen", ""}},
      {"pIndex", {"Index\tIndex\tIndex", "4\t128\tIndexOffset"}},
      {"pInvalidator", {"First\tSecond", ""}},
      {"pIsImplemented", {"One", ""}},
      {"pPort", {"Device", ""}},
      {"pSelected", {"Chosen", ""}},
      {"pSelecting", {"Selector", ""}},
      {"pTerminal", {"TheReg", ""}},
  };
  for (const auto& [name, text] : texts) EXPECT_EQ(property(map, "TheReg", name), text) << name;
  for (const char* each : {"ToolTip", "pValue", "name", "", "Bit"}) {
    EXPECT_EQ(property(map, "TheReg", each), (Text{"absent", ""})) << each;
  }
}

TEST(Properties, OfAbsentThingsLeaveEmptyTexts) {
  TestMap map("<Node Name=\"X\"/>");
  gcstring value = "before", attribute = "before";
  EXPECT_FALSE(map.node("X")->GetProperty("Nothing", value, attribute));
  EXPECT_STREQ(value, "");
  EXPECT_STREQ(attribute, "");
}

TEST(Properties, OfFormulaNodes) {
  TestMap map(R"(
    <IntSwissKnife Name="Knife"><pVariable Name="A">X</pVariable><pVariable Name="B">Y</pVariable>
      <Formula> A + B </Formula></IntSwissKnife>
    <Converter Name="Scaled"><pVariable Name="A">X</pVariable><Constant Name="K">2.5</Constant>
      <Expression Name="T"> A * K </Expression><FormulaTo> FROM / T</FormulaTo><FormulaFrom>TO * T </FormulaFrom>
      <pValue>Y</pValue></Converter>
    <Integer Name="X"><Value>1</Value></Integer>
    <Integer Name="Y"><Value>1</Value></Integer>)");
  EXPECT_THAT(propertyNames(map, "Knife"),
              ElementsAre("DeviceName", "ExposeStatic", "Formula", "ImposedAccessMode", "InputDirection",
                          "IsDeprecated", "IsFeature", "Name", "NameSpace", "NodeType", "Representation", "Streamable",
                          "Visibility", "pVariable"));
  EXPECT_EQ(property(map, "Knife", "Formula"), (Text{" A + B ", ""}));
  EXPECT_EQ(property(map, "Knife", "InputDirection"), (Text{"None", ""}));
  EXPECT_EQ(property(map, "Knife", "NodeType"), (Text{"IntSwissKnife", ""}));
  EXPECT_EQ(property(map, "Knife", "pVariable"), (Text{"X\tY", "A\tB"}));

  EXPECT_EQ(property(map, "Scaled", "FormulaTo"), (Text{" FROM / T", ""}));
  EXPECT_EQ(property(map, "Scaled", "FormulaFrom"), (Text{"TO * T ", ""}));
  EXPECT_EQ(property(map, "Scaled", "Constant"), (Text{"2.5", "K"}));
  EXPECT_EQ(property(map, "Scaled", "Expression"), (Text{" A * K ", "T"}));
  EXPECT_EQ(property(map, "Scaled", "pValue"), (Text{"Y", ""}));
  EXPECT_EQ(property(map, "Scaled", "pTerminal"), (Text{"absent", ""}));
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
  struct {
    const char* node;
    const char* property;
    Text text;
  } const cases[] = {
      {"Field", "NodeType", {"MaskedIntReg", ""}},
      {"Field", "Address", {"16", ""}},
      {"Field", "Bit", {"3", ""}},
      {"Field", "Endianess", {"BigEndian", ""}},
      {"Mode", "NameSpace", {"Standard", ""}},
      {"Mode", "ToolTip", {"How", ""}},
      {"Mode", "DisplayName", {"The mode", ""}},
      {"Mode", "Visibility", {"Guru", ""}},
      {"Mode", "Streamable", {"Yes", ""}},
      {"Mode", "IsFeature", {"Yes", ""}},
      {"Mode", "pDependent", {"Root", ""}},
      {"EnumEntry_Mode_Off", "pDependent", {"Root\tMode", ""}},
      {"EnumEntry_Mode_Off", "Value", {"16", ""}},
      {"Table", "MergePriority", {"1", ""}},
      {"Table", "ExposeStatic", {"No", ""}},
      {"Table", "pIndex", {"Other", ""}},
      {"Table", "pValueIndexed", {"Other", "2"}},
      {"Table", "ValueIndexed", {"7\t8", "3\t16"}},
      {"Table", "ValueDefault", {"9", ""}},
      {"Table", "Unit", {"mm", ""}},
      {"Table", "Representation", {"PureNumber", ""}},
      {"Real", "Value", {"0.50", ""}},
      {"Real", "Max", {"16", ""}},
      {"Text", "Value", {"first", ""}},
      {"Text", "Representation", {"absent", ""}},
      {"Root", "pFeature", {"Mode\tText", ""}},
      {"Root", "pTerminal", {"absent", ""}},
      {"Device", "NodeType", {"Port", ""}},
  };
  for (const auto& each : cases) {
    EXPECT_EQ(property(map, each.node, each.property), each.text) << each.node << "." << each.property;
  }
  map.text("Text")->SetValue("second");
  EXPECT_EQ(property(map, "Text", "Value"), (Text{"second", ""})) << "the present text";
}

}  // namespace

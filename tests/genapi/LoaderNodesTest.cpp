// What nodes and properties a description becomes.
#include <gtest/gtest.h>

#include "LoaderSnippets.h"

using namespace loading;

namespace {

using Names = std::vector<std::string>;

const Property& property(const Loaded& description, std::string_view node, Element element) {
  const Property* const found = description->find(description->indexOf(node), element);
  if (found == nullptr) throw std::runtime_error("no such property");
  return *found;
}

TEST(LoaderNodes, GroupsVanishAndKeepTheOrder) {
  const Loaded description = load(
      "<Node Name='A'/><Group Comment='x'><Node Name='B'/><Group><Node Name='C'/></Group><Extension><Node Name='X'/>"
      "<other:thing/></Extension></Group><Node Name='D'/>");
  EXPECT_EQ(nodeNames(description), (Names{"A", "B", "C", "D"}));
  EXPECT_TRUE(notes(description).empty());
}

TEST(LoaderNodes, TextsAreTrimmedWhereBlanksMeanNothing) {
  const Loaded description = load(
      "<String Name='S'><DisplayName> The  name </DisplayName><ToolTip>\n a\r\n b </ToolTip><Value> padded </Value>"
      "</String><String Name='Empty'><Value/></String><String Name='Blank'><Value>  </Value></String>"
      "<SwissKnife Name='K'><Unit> mm </Unit><Formula> 1 + 2 </Formula></SwissKnife>"
      "<SwissKnife Name='NoFormula'><Formula/></SwissKnife>"
      "<Node Name='N'><ToolTip> </ToolTip><Description/><IsDeprecated/></Node>");
  const std::tuple<const char*, Element, const char*> texts[] = {
      {"S", Element::DisplayName, "The  name"}, {"S", Element::ToolTip, "a\n b"},
      {"S", Element::Value, " padded "},        {"Empty", Element::Value, ""},
      {"Blank", Element::Value, "  "},          {"K", Element::Unit, "mm"},
      {"K", Element::Formula, " 1 + 2 "},       {"NoFormula", Element::Formula, ""}};
  for (const auto& [node, element, text] : texts) EXPECT_EQ(property(description, node, element).value(), text) << node;
  EXPECT_EQ(elements(description, "N"), "");
  EXPECT_TRUE(description->findings().empty());
}

TEST(LoaderNodes, StructEntriesTakeOverWhatTheyDoNotSay) {
  const Loaded description =
      load(kPort +
           "<StructReg Comment='c'><ToolTip>common</ToolTip><Address>0x10</Address><Address>0x100</Address>"
           "<Length>4</Length><AccessMode>RW</AccessMode><pPort>Device</pPort><Endianess>BigEndian</Endianess>"
           "<pInvalidator>Plain</pInvalidator><Streamable>Yes</Streamable>"
           "<StructEntry Name='Plain'><Bit>3</Bit></StructEntry>"
           "<StructEntry Name='Own' NameSpace='Standard'><ToolTip>mine</ToolTip><pAddress>Plain</pAddress><LSB>7</LSB>"
           "<MSB>0</MSB><AccessMode>RO</AccessMode><Streamable>No</Streamable></StructEntry></StructReg>");
  EXPECT_EQ(nodeNames(description), (Names{"Device", "Plain", "Own"}));
  EXPECT_EQ(elements(description, "Plain"),
            "Bit=3 ToolTip=common Address=0x10 Address=0x100 Length=4 AccessMode=RW pPort=Device Endianess=BigEndian "
            "pInvalidator=Plain Streamable=Yes");
  EXPECT_EQ(elements(description, "Own"),
            "ToolTip=mine pAddress=Plain LSB=7 MSB=0 AccessMode=RO Streamable=No Length=4 pPort=Device "
            "Endianess=BigEndian pInvalidator=Plain");
  EXPECT_EQ(description->node(1).type, NodeType::MaskedIntReg);
  EXPECT_TRUE(description->node(1).streamable);
  EXPECT_FALSE(description->node(2).streamable);
  EXPECT_EQ(description->node(2).nameSpace, Standard);
  EXPECT_TRUE(description->findings().empty());
}

TEST(LoaderNodes, EntriesBecomeNodesBehindTheirEnumeration) {
  const Loaded description = load(
      "<Enumeration Name='Mode'><EnumEntry Name='Off' NameSpace='Standard'><Value>0</Value></EnumEntry>"
      "<EnumEntry Name='On'><DisplayName>Running</DisplayName><Value>1</Value><Symbolic>Run</Symbolic>"
      "<IsSelfClearing>Yes</IsSelfClearing></EnumEntry><Value>0</Value></Enumeration><Node Name='Next'/>");
  EXPECT_EQ(nodeNames(description), (Names{"Mode", "EnumEntry_Mode_Off", "EnumEntry_Mode_On", "Next"}));
  EXPECT_EQ(elements(description, "Mode"), "EnumEntry=EnumEntry_Mode_Off EnumEntry=EnumEntry_Mode_On Value=0");
  EXPECT_EQ(description->properties(0)[0].target, 1u);
  EXPECT_EQ(description->properties(0)[1].target, 2u);
  EXPECT_EQ(description->node(2).owner, 0u);
  EXPECT_EQ(description->entryName(2), "On");
  EXPECT_EQ(description->entryName(3), "Next");
  EXPECT_EQ(property(description, "EnumEntry_Mode_On", Element::Symbolic).value(), "Run");
  EXPECT_EQ(property(description, "EnumEntry_Mode_On", Element::IsSelfClearing).word, Yes);
}

TEST(LoaderNodes, KnivesInRegistersBecomeHiddenNodesBeforeThem) {
  const std::string knife =
      "<IntSwissKnife Name='$1'><pVariable Name='V'>I</pVariable><Formula>V*4</Formula></IntSwissKnife>";
  const Loaded description =
      load(kPort + "<Integer Name='I'><Value>0</Value></Integer>" +
           reg("IntReg", "R", filled(knife, "First") + "<pAddress>I</pAddress>" + filled(knife, "Second")) +
           "<StructReg>" + filled(knife, "Third") +
           "<Length>4</Length><pPort>Device</pPort><StructEntry Name='S'><Bit>0</Bit></StructEntry>"
           "<StructEntry Name='T'><Bit>1</Bit></StructEntry></StructReg>");
  EXPECT_EQ(nodeNames(description),
            (Names{"Device", "I", "_R_First", "_R_Second", "R", "_S_Third", "S", "_T_Third", "T"}));
  EXPECT_EQ(elements(description, "R"),
            "Address=0 Length=4 IntSwissKnife=_R_First pAddress=I IntSwissKnife=_R_Second pPort=Device");
  EXPECT_EQ(property(description, "T", Element::IntSwissKnife).target, description->indexOf("_T_Third"));
  const NodeRecord& hidden = description->node(2);
  EXPECT_EQ(hidden.type, NodeType::IntSwissKnife);
  EXPECT_EQ(hidden.visibility, Invisible);
  EXPECT_EQ(hidden.owner, 4u);
  EXPECT_EQ(elements(description, "_R_First"), "pVariable=I[V] Formula=V*4");
}

TEST(LoaderNodes, KeysOfAConfigurationRomBecomeNodes) {
  const Loaded description =
      load(kPort +
           "<ConfRom Name='Rom'><TextDesc Name='Vendor'>0x81</TextDesc><IntKey Name='Id'>3</IntKey>"
           "<Address>0xF0000400</Address><Length>1024</Length><pPort>Device</pPort><Unit>5</Unit></ConfRom>"
           "<IntKey Name='Free'><p1212Parser>Rom</p1212Parser><Key>7</Key></IntKey>");
  EXPECT_EQ(nodeNames(description), (Names{"Device", "Rom", "Vendor", "Id", "Free"}));
  EXPECT_EQ(elements(description, "Vendor"), "p1212Parser=Rom Key=0x81");
  EXPECT_EQ(property(description, "Vendor", Element::p1212Parser).target, 1u);
  EXPECT_EQ(property(description, "Id", Element::Key).integer, 3);
  EXPECT_EQ(property(description, "Rom", Element::IntKey).target, 3u);
  EXPECT_EQ(description->node(2).owner, 1u);
  EXPECT_EQ(property(description, "Free", Element::p1212Parser).target, 1u);
}

}  // namespace

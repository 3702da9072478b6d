// What nodes and properties a description becomes.
#include <gtest/gtest.h>

#include <cmath>

#include "LoaderSnippets.h"

using namespace loading;

namespace {

using Names = std::vector<std::string>;

const Property& property(const Loaded& description, std::string_view node, Element element) {
  const Property* const found = description->find(description->indexOf(node), element);
  if (found == nullptr) throw std::runtime_error("no such property");
  return *found;
}

std::string targetName(const Loaded& description, const Property& link) {
  return std::string(description->node(link.target).name());
}

TEST(LoaderNodes, GroupsVanishAndKeepTheOrder) {
  const Loaded description = load(
      "<Node Name='A'/><Group Comment='x'><Node Name='B'/><Group><Node Name='C'/></Group><Extension><Node Name='X'/>"
      "<other:thing/></Extension></Group><Node Name='D'/>");
  EXPECT_EQ(nodeNames(description), (Names{"A", "B", "C", "D"}));
  EXPECT_TRUE(notes(description).empty());
}

TEST(LoaderNodes, EveryNodeTypeIsKnown) {
  for (size_t i = 0; i < kNodeTypes; ++i) {
    const std::string type(nodeTypeName(static_cast<NodeType>(i)));
    const Loaded description = load("<" + type + " Name='N'/>");
    ASSERT_EQ(description->nodeCount(), 1u) << type;
    EXPECT_EQ(description->node(0).type, static_cast<NodeType>(i));
  }
  EXPECT_EQ(load("<DcamLock Name='N'/>")->node(0).type, NodeType::AdvFeatureLock);
}

TEST(LoaderNodes, AttributesAndFlagsStandInTheRecord) {
  const Loaded description = load(
      "<Node Name='Plain'/>\n<Integer Name=' Set ' NameSpace='Standard' MergePriority='-1' ExposeStatic='No'>"
      "<Visibility> Guru </Visibility><IsDeprecated>Yes</IsDeprecated><ImposedAccessMode>RO</ImposedAccessMode>"
      "<Streamable>Yes</Streamable><Value>1</Value></Integer>");
  const NodeRecord& plain = description->node(0);
  EXPECT_EQ(plain.nameSpace, Custom);
  EXPECT_EQ(plain.visibility, Beginner);
  EXPECT_EQ(plain.imposedAccessMode, RW);
  EXPECT_EQ(plain.mergePriority, 0);
  EXPECT_TRUE(plain.exposeStatic);
  EXPECT_FALSE(plain.streamable || plain.deprecated || plain.defective);
  EXPECT_EQ(plain.owner, kNoNode);
  const NodeRecord& set = description->node(description->indexOf("Set"));
  EXPECT_EQ(set.nameSpace, Standard);
  EXPECT_EQ(set.visibility, Guru);
  EXPECT_EQ(set.imposedAccessMode, RO);
  EXPECT_EQ(set.mergePriority, -1);
  EXPECT_FALSE(set.exposeStatic);
  EXPECT_TRUE(set.streamable && set.deprecated);
  EXPECT_EQ(description->lineOf(0), 1u);
  EXPECT_EQ(description->lineOf(1), 2u);
}

TEST(LoaderNodes, NumbersAreReadOnce) {
  const auto integer = [](const char* text) {
    return property(load("<Integer Name='N'><Value>" + std::string(text) + "</Value></Integer>"), "N", Element::Value)
        .integer;
  };
  EXPECT_EQ(integer(" 0815\n"), 815);
  EXPECT_EQ(integer("-42"), -42);
  EXPECT_EQ(integer("0xFFFFFFFFFFFFFFFF"), -1);
  EXPECT_EQ(integer("-0X10"), -16);
  EXPECT_EQ(integer("-9223372036854775808"), INT64_MIN);
  const auto real = [](const char* text) {
    return property(load("<Float Name='N'><Value>" + std::string(text) + "</Value></Float>"), "N", Element::Value).real;
  };
  EXPECT_EQ(real("-2E-3"), -0.002);
  EXPECT_EQ(real("0x10"), 16.0);
  EXPECT_TRUE(std::isinf(real("INF")));

  const Loaded description = load(
      "<Float Name='F'><Value>1</Value><Min>-1.5</Min><Max>2.5</Max><Inc>.5</Inc><DisplayPrecision>3</DisplayPrecision>"
      "</Float><Boolean Name='B'><Value>true</Value><OnValue>0x2</OnValue><OffValue>1</OffValue></Boolean>"
      "<IntSwissKnife Name='K'><Constant Name='C'>0x7FFFFFFFFFFFFFFF</Constant><Formula>C</Formula></IntSwissKnife>"
      "<SwissKnife Name='S'><Constant Name='C'>1e3</Constant><Formula>C</Formula></SwissKnife>"
      "<Enumeration Name='E'><EnumEntry Name='X'><Value>3</Value><NumericValue>1.5</NumericValue></EnumEntry>"
      "<Value>3</Value><PollingTime>250</PollingTime></Enumeration>"
      "<Integer Name='I'><Value>0</Value></Integer>"
      "<Float Name='T'><pIndex>I</pIndex><ValueIndexed Index='0x10'>0.5</ValueIndexed><ValueDefault>2</ValueDefault>"
      "</Float>");
  EXPECT_EQ(property(description, "F", Element::Min).real, -1.5);
  EXPECT_EQ(property(description, "F", Element::Max).real, 2.5);
  EXPECT_EQ(property(description, "F", Element::Inc).real, 0.5);
  EXPECT_EQ(property(description, "F", Element::DisplayPrecision).integer, 3);
  EXPECT_EQ(property(description, "B", Element::Value).integer, 1);
  EXPECT_EQ(property(description, "B", Element::OnValue).integer, 2);
  EXPECT_EQ(property(description, "K", Element::Constant).integer, INT64_MAX);
  EXPECT_EQ(property(description, "S", Element::Constant).real, 1000.0);
  EXPECT_EQ(property(description, "EnumEntry_E_X", Element::NumericValue).real, 1.5);
  EXPECT_EQ(property(description, "E", Element::PollingTime).integer, 250);
  EXPECT_EQ(property(description, "T", Element::ValueIndexed).real, 0.5);
  EXPECT_EQ(property(description, "T", Element::Index).integer, 16);
  EXPECT_EQ(property(description, "T", Element::ValueDefault).real, 2.0);
}

TEST(LoaderNodes, WordsBecomeEnumerators) {
  const Loaded description =
      load(kPort +
           reg("IntReg", "R",
               "<AccessMode>WO</AccessMode><Cachable>No</Cachable><Sign>Signed</Sign><Endianess>BigEndian</Endianess>"
               "<Representation>MACAddress</Representation>") +
           "<Converter Name='C'><FormulaTo>FROM</FormulaTo><FormulaFrom>TO</FormulaFrom><pValue>R</pValue>"
           "<DisplayNotation>Scientific</DisplayNotation><Slope>Varying</Slope><IsLinear>Yes</IsLinear></Converter>");
  EXPECT_EQ(property(description, "R", Element::AccessMode).word, WO);
  EXPECT_EQ(property(description, "R", Element::Cachable).word, NoCache);
  EXPECT_EQ(property(description, "R", Element::Sign).word, Signed);
  EXPECT_EQ(property(description, "R", Element::Endianess).word, BigEndian);
  EXPECT_EQ(property(description, "R", Element::Representation).word, MACAddress);
  EXPECT_EQ(property(description, "C", Element::DisplayNotation).word, fnScientific);
  EXPECT_EQ(property(description, "C", Element::Slope).word, Varying);
  EXPECT_EQ(property(description, "C", Element::IsLinear).word, Yes);
}

TEST(LoaderNodes, TextsAreTrimmedWhereBlanksMeanNothing) {
  const Loaded description = load(
      "<String Name='S'><DisplayName> The  name </DisplayName><ToolTip>\n a\r\n b </ToolTip><Value> padded </Value>"
      "</String><String Name='Empty'><Value/></String><String Name='Blank'><Value>  </Value></String>"
      "<SwissKnife Name='K'><Unit> mm </Unit><Formula> 1 + 2 </Formula></SwissKnife>"
      "<SwissKnife Name='NoFormula'><Formula/></SwissKnife>"
      "<Node Name='N'><ToolTip> </ToolTip><Description/><IsDeprecated/></Node>");
  EXPECT_EQ(property(description, "S", Element::DisplayName).value(), "The  name");
  EXPECT_EQ(property(description, "S", Element::ToolTip).value(), "a\n b");
  EXPECT_EQ(property(description, "S", Element::Value).value(), " padded ");
  EXPECT_EQ(property(description, "Empty", Element::Value).value(), "");
  EXPECT_EQ(property(description, "Blank", Element::Value).value(), "  ");
  EXPECT_EQ(property(description, "K", Element::Unit).value(), "mm");
  EXPECT_EQ(property(description, "K", Element::Formula).value(), " 1 + 2 ");
  EXPECT_EQ(property(description, "NoFormula", Element::Formula).value(), "");
  EXPECT_EQ(elements(description, "N"), "");
  EXPECT_TRUE(description->findings().empty());
}

TEST(LoaderNodes, ElementsKeepTheirOrderAndLinksTheirTargets) {
  const Loaded description = load(
      kPort + reg("IntReg", "A") + reg("IntReg", "B") +
      "<Integer Name='I'><pValueCopy>B</pValueCopy><pValue> A </pValue><pValueCopy>A</pValueCopy><Min>1</Min></Integer>"
      "<SwissKnife Name='K'><pVariable Name='X.Max'>I</pVariable><pVariable Name='Y'>A</pVariable>"
      "<Expression Name='Z'>X.Max</Expression><Formula>Z</Formula></SwissKnife>" +
      reg("IntReg", "R", "<pIndex Offset='0x4'>I</pIndex><pIndex pOffset='A'>B</pIndex><pIndex>A</pIndex>"));
  EXPECT_EQ(elements(description, "I"), "pValueCopy=B pValue=A pValueCopy=A Min=1");
  EXPECT_EQ(elements(description, "K"), "pVariable=I[X.Max] pVariable=A[Y] Expression=X.Max[Z] Formula=Z");
  EXPECT_EQ(elements(description, "R"),
            "Address=0 Length=4 pIndex=I Offset=0x4 pIndex=B pOffset=A pIndex=A pPort=Device");
  for (const char* node : {"I", "K", "R"}) {
    for (const Property& link : description->properties(description->indexOf(node))) {
      if (elementName(link.element)[0] == 'p') {
        EXPECT_EQ(targetName(description, link), link.value()) << node;
      }
    }
  }
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

TEST(LoaderNodes, EntriesThatStandAloneKeepTheirName) {
  const Loaded description = load(
      "<EnumEntry Name='Off'><Value>0</Value></EnumEntry><Enumeration Name='Mode'><pEnumEntry>Off</pEnumEntry>"
      "<pEnumEntry>On</pEnumEntry><Value>0</Value></Enumeration><EnumEntry Name='On'><Value>1</Value></EnumEntry>",
      "1_0");
  EXPECT_EQ(nodeNames(description), (Names{"Off", "Mode", "On"}));
  EXPECT_EQ(elements(description, "Mode"), "EnumEntry=Off EnumEntry=On Value=0");
  EXPECT_EQ(description->node(0).owner, 1u);
  EXPECT_EQ(description->node(2).owner, 1u);
  EXPECT_EQ(description->entryName(2), "On");
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

TEST(LoaderNodes, ListsOfNodesThatOthersLookFor) {
  const Loaded description = load(
      "<Port Name='Device'><EventID>9001</EventID></Port><Port Name='Chunk'><ChunkID>00aF</ChunkID></Port>"
      "<String Name='Id'><Value>12</Value></String><Port Name='Named'><pChunkID>Id</pChunkID></Port>"
      "<Integer Name='I'><EventID>1</EventID><Value>0</Value></Integer>" +
      reg("IntReg", "R", "<PollingTime>100</PollingTime>"));
  const auto names = [&](std::span<const NodeIndex> nodes) {
    Names result;
    for (NodeIndex node : nodes) result.emplace_back(description->node(node).name());
    return result;
  };
  EXPECT_EQ(names(description->chunkPorts()), (Names{"Chunk", "Named"}));
  EXPECT_EQ(names(description->eventNodes()), (Names{"Device", "I"}));
  EXPECT_EQ(names(description->polledNodes()), (Names{"R"}));
}

TEST(LoaderNodes, NamesAreFoundAndUnknownOnesAreNot) {
  std::string nodes;
  for (int i = 0; i < 1000; ++i) nodes += "<Node Name='N" + std::to_string(i) + "'/>";
  const Loaded description = load(nodes);
  for (NodeIndex i = 0; i < 1000; ++i) EXPECT_EQ(description->indexOf("N" + std::to_string(i)), i);
  for (const char* unknown : {"", "N", "N1000", "n1", "N01"}) EXPECT_EQ(description->indexOf(unknown), kNoNode);
  EXPECT_EQ(load("")->indexOf("N"), kNoNode);
}

TEST(LoaderNodes, EveryElementNameIsKnownByItsName) {
  for (size_t i = 1; i < static_cast<size_t>(Element::Offset); ++i) {
    const Element element = static_cast<Element>(i);
    std::string padded(elementName(element));
    EXPECT_EQ(elementOf(padded), element) << padded;
    padded += std::string(1 + kElementNamePadding, '\0');
    EXPECT_EQ(elementAt(padded.c_str()), element) << padded;
    padded[0] = 'X';
    EXPECT_EQ(elementAt(padded.c_str()), Element::Unknown) << padded;
  }
  for (const char* other : {"", "Offset", "pOffset", "Index", "value", "Values", "Valu"}) {
    EXPECT_EQ(elementOf(other), Element::Unknown) << other;
  }
}

}  // namespace

// What is wrong with a description, and what follows from it: no map, one unusable node, or just a note.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "LoaderSnippets.h"

using namespace loading;

namespace {

struct Case {
  std::string nodes, expected;
};

// Faults that leave no map, in either version. The text begins with the line of the place.
TEST(LoaderFaults, FatalFaultsNameLineNodeElementAndReason) {
  const std::string integer = "<Integer Name='I'>$1</Integer>";
  const Case cases[] = {
      {"\n<Integer><Value>1</Value></Integer>", ":2: Integer: Name: missing"},
      {"<Integer Name=' '><Value>1</Value></Integer>", ":1: Integer: Name: missing"},
      {"<Node Name='a b'/>", ":1: Node 'a b': Name: blanks, '/', ':' and control characters cannot stand in a name"},
      {"<Node Name='" + std::string(600, 'n') + "'/>",
       ":1: Node '" + std::string(40, 'n') + "...': Name: longer than 512 bytes"},
      {"\n<Node Name='A'/>\n<Port Name='A'/>", ":3: Port 'A': Name: already the name of the Node in line 2"},
      {filled(integer, "<pValue>\nNowhere</pValue>"), ":2: Integer 'I': pValue: no node named 'Nowhere'"},
      {"\n\n<IntSwissKnife Name='WidthMax'>\n<pVariable Name='W'>SensorW</pVariable><Formula>W</Formula>"
       "</IntSwissKnife>",
       ":4: IntSwissKnife 'WidthMax': pVariable: no node named 'SensorW'"},
      {kPort + "<Integer Name='I'><Value>1</Value></Integer>" +
           reg("IntReg", "R", "<pIndex pOffset='Nowhere'>I</pIndex>"),
       ":1: IntReg 'R': pOffset: no node named 'Nowhere'"},
      {reg("IntReg", "R"), ":1: IntReg 'R': pPort: no node named 'Device'"},
      {"<Integer Name='Device'><Value>1</Value></Integer>" + reg("IntReg", "R"),
       ":1: IntReg 'R': pPort: 'Device' is a node of type Integer"},
      {"<Category Name='C'/>" + filled(integer, "<pValue>C</pValue>"),
       ":1: Integer 'I': pValue: 'C' is a node of type Category"},
      {"<Integer Name='I'><Value>1</Value></Integer><String Name='S'><pValue>I</pValue></String>",
       ":1: String 'S': pValue: 'I' is a node of type Integer"},
      {"<String Name='S'><Value/></String>" + filled(integer, "<Value>1</Value><pMax>S</pMax>"),
       ":1: Integer 'I': pMax: 'S' is a node of type String"},
      {"<Command Name='C'><Value>0</Value><CommandValue>1</CommandValue></Command>"
       "<Node Name='N'><pIsAvailable>C</pIsAvailable></Node>",
       ":1: Node 'N': pIsAvailable: 'C' is a node of type Command"},
      {"<Boolean Name='B'><Value>1</Value><OnValue>0</OnValue></Boolean>",
       ":1: Boolean 'B': OnValue: OnValue and OffValue are both 0"},
      {"<Integer Name='A'><Value>1</Value><pSelected>B</pSelected></Integer>"
       "<Integer Name='B'><Value>1</Value><pSelected>A</pSelected></Integer>",
       ": nodes 'A' -> 'B' -> 'A' form a selector cycle"},
      {filled(integer, "<Value>1</Value><pSelected>I</pSelected>"), ": nodes 'I' -> 'I' form a selector cycle"},
      {"<Category Name='Root'><pFeature>A</pFeature></Category><Category Name='A'><pFeature>Root</pFeature></Category>",
       ": nodes 'Root' -> 'A' -> 'Root' form a feature cycle"},
      {"<Integer Name='A'><pValue>B</pValue></Integer><Integer Name='B'><pValue>C</pValue></Integer>"
       "<Integer Name='C'><Value>1</Value></Integer><Integer Name='D'><pValue>E</pValue></Integer>"
       "<Integer Name='E'><pValue>C</pValue><pValueCopy>D</pValueCopy></Integer>",
       ": nodes 'D' -> 'E' -> 'D' form a value cycle"},
  };
  for (const Case& c : cases)
    for (const char* version : {"1_0", "1_1"}) EXPECT_EQ(fault(c.nodes, version), "<description>" + c.expected);
  for (const char* link : {"pIsLocked", "pInvalidator"}) {
    EXPECT_EQ(fault(filled(integer, "<Value>1</Value>" + filled("<$1>I</$1>", link)), "1_0"), "")
        << "no cycle: " << link;
  }
}

// What values, limits, addresses, ports and rights hang on has to be there, whatever the version.
TEST(LoaderFaults, NecessaryLinksLeadSomewhere) {
  const std::string integer = "<Integer Name='N'>$1</Integer>";
  const std::string table = "<Integer Name='I'><Value>0</Value></Integer><Integer Name='N'><pIndex>I</pIndex>";
  const std::pair<const char*, std::string> cases[] = {
      {"pValueCopy", integer + "<Integer Name='I'><Value>0</Value></Integer>"},
      {"pMin", filled(integer, "<Value>1</Value>$1")},
      {"pMax", filled(integer, "<Value>1</Value>$1")},
      {"pInc", filled(integer, "<Value>1</Value>$1")},
      {"pIndex", filled(integer, "$1<ValueIndexed Index='0'>1</ValueIndexed><ValueDefault>0</ValueDefault>")},
      {"pValueIndexed", table + "$1<ValueDefault>0</ValueDefault></Integer>"},
      {"pValueDefault", table + "<ValueIndexed Index='0'>1</ValueIndexed>$1</Integer>"},
      {"pLength", kPort + "<Register Name='N'><Address>0</Address>$1<pPort>Device</pPort></Register>"},
      {"pCommandValue", "<Command Name='N'><Value>0</Value>$1</Command>"},
      {"pChunkID", "<Port Name='N'>$1</Port>"},
      {"pIsImplemented", "<Node Name='N'>$1</Node>"},
      {"pIsLocked", "<Node Name='N'>$1</Node>"},
      {"pAddress", kPort + reg("IntReg", "N", "$1")},
      {"pEnumEntry", "<Enumeration Name='N'>$1<Value>0</Value></Enumeration>"},
      {"pIsAvailable", "<Category Name='N'>$1</Category>"},
      {"p1212Parser", "<TextDesc Name='N'>$1<Key>1</Key></TextDesc>"},
  };
  for (const auto& [element, nodes] : cases) {
    const std::string attribute = element == std::string("pValueIndexed") ? " Index='0'" : "";
    std::string given = "<" + std::string(element) + attribute + ">Nowhere</" + element + ">";
    if (element == std::string("pValueCopy")) given += "<pValue>I</pValue>";
    for (const char* version : {"1_0", "1_1"}) {
      EXPECT_THAT(fault(filled(nodes, given), version),
                  testing::EndsWith(std::string("'N': ") + element + ": no node named 'Nowhere'"));
    }
  }
}

TEST(LoaderFaults, ReadingInCirclesIsRefusedSinceSchema11) {
  const std::string nodes =
      "<Integer Name='A'><Value>1</Value><pMax>KnifeOfB</pMax></Integer>"
      "<Integer Name='B'><Value>1</Value><pMax>KnifeOfA</pMax></Integer>"
      "<IntSwissKnife Name='KnifeOfA'><pVariable Name='X'>A</pVariable><Formula>10-X</Formula></IntSwissKnife>"
      "<IntSwissKnife Name='KnifeOfB'><pVariable Name='X'>B</pVariable><Formula>10-X</Formula></IntSwissKnife>";
  EXPECT_EQ(fault(nodes, "1_0"), "");
  EXPECT_EQ(fault(nodes, "1_1"),
            "<description>: nodes 'A' -> 'KnifeOfB' -> 'B' -> 'KnifeOfA' -> 'A' form a dependency cycle");
  const std::string throughAddress = kPort +
                                     "<IntReg Name='R'><IntSwissKnife Name='K'><pVariable Name='X'>R</pVariable>"
                                     "<Formula>X</Formula></IntSwissKnife><Length>4</Length>"
                                     "<pPort>Device</pPort></IntReg>";
  EXPECT_EQ(fault(throughAddress), "<description>: nodes '_R_K' -> 'R' -> '_R_K' form a dependency cycle");
}

TEST(LoaderFaults, LongCyclesAreCutShort) {
  std::string nodes;
  for (int i = 0; i < 10000; ++i) {
    nodes += "<Integer Name='N" + std::to_string(i) + "'><pValue>N" + std::to_string((i + 1) % 10000) +
             "</pValue></Integer>";
  }
  const std::string text = fault(nodes);
  EXPECT_EQ(text.substr(0, 37), "<description>: nodes 'N0' -> 'N1' -> ");
  EXPECT_NE(text.find("'N11' -> ... -> 'N0' form a value cycle"), text.npos);
}

// Faults that cost one node.
TEST(LoaderFaults, DefectiveNodesDoNotKeepTheOthersFromLoading) {
  const std::string integer = "<Integer Name='N'>$1</Integer>";
  const auto number = [&](const char* value) { return filled(integer, "<Value>" + std::string(value) + "</Value>"); };
  const auto intReg = [](const char* more) { return kPort + reg("IntReg", "N", more); };
  const auto bits = [](const char* more) { return kPort + reg("MaskedIntReg", "N", more); };
  const Case cases[] = {
      {filled(integer, ""), "1: Integer 'N': Value, pValue or pIndex: missing"},
      {filled(integer, "<Value/>"), "1: Integer 'N': Value, pValue or pIndex: missing"},
      {number("1.5"), "1: Integer 'N': Value: '1.5' is not an integer"},
      {number("a very long text that does not stop before the end"),
       "1: Integer 'N': Value: 'a very long text that does not stop befo...' is not an integer"},
      {"<Float Name='N'><Value>1,5</Value></Float>", "1: Float 'N': Value: '1,5' is not a number"},
      {filled(integer, "<Value>1</Value><ValidValueSet>1;x;3</ValidValueSet>"),
       "1: Integer 'N': ValidValueSet: '1;x;3' is not a list of integers"},
      {"<Boolean Name='N'><Value>yes</Value></Boolean>", "1: Boolean 'N': Value: 'yes' is neither true nor false"},
      {filled(integer, "<pIndex>Other</pIndex><ValueIndexed>1</ValueIndexed><ValueDefault>0</ValueDefault>"),
       "1: Integer 'N': ValueIndexed: Index: missing"},
      {filled(integer, "<pIndex>Other</pIndex><ValueIndexed Index='x'>1</ValueIndexed><ValueDefault>0</ValueDefault>"),
       "1: Integer 'N': Index: 'x' is not an integer"},
      {filled(integer, "<pIndex>Other</pIndex><ValueIndexed Index='0'>1</ValueIndexed>"),
       "1: Integer 'N': ValueDefault or pValueDefault: missing"},
      {kPort + "<IntReg Name='N'><Length>4</Length><pPort>Device</pPort></IntReg>", "1: IntReg 'N': Address: missing"},
      {kPort + "<IntReg Name='N'><Address>0</Address><pPort>Device</pPort></IntReg>", "1: IntReg 'N': Length: missing"},
      {"<Register Name='N'><Address>0</Address><Length>4</Length></Register>", "1: Register 'N': pPort: missing"},
      {"<ConfRom Name='N'/>", "1: ConfRom 'N': pPort: missing"},
      {"<AdvFeatureLock Name='N'/>", "1: AdvFeatureLock 'N': pPort: missing"},
      {"<SmartFeature Name='N'/>", "1: SmartFeature 'N': pPort: missing"},
      {kPort + reg("StringReg", "N", "<Length>0</Length>"), "1: StringReg 'N': Length: 0 bytes are no register"},
      {intReg("<Length>9</Length>"), "1: IntReg 'N': Length: 9 bytes are not between 1 and 8"},
      {intReg("<AccessMode>R</AccessMode>"), "1: IntReg 'N': AccessMode: unknown word 'R'"},
      {intReg("<AccessMode>NI</AccessMode>"), "1: IntReg 'N': AccessMode: unknown word 'NI'"},
      {"<Node Name='N'><ImposedAccessMode>NA</ImposedAccessMode></Node>",
       "1: Node 'N': ImposedAccessMode: unknown word 'NA'"},
      {intReg("<Sign>signed</Sign>"), "1: IntReg 'N': Sign: unknown word 'signed'"},
      {intReg("<Endianess>Big</Endianess>"), "1: IntReg 'N': Endianess: unknown word 'Big'"},
      {intReg("<Cachable>Yes</Cachable>"), "1: IntReg 'N': Cachable: unknown word 'Yes'"},
      {"<Converter Name='N'><FormulaTo>FROM</FormulaTo><FormulaFrom>TO</FormulaFrom><pValue>Other</pValue>"
       "<Slope>Up</Slope></Converter>",
       "1: Converter 'N': Slope: unknown word 'Up'"},
      {bits(""), "1: MaskedIntReg 'N': Bit or LSB and MSB: missing"},
      {bits("<MSB>3</MSB>"), "1: MaskedIntReg 'N': LSB: missing"},
      {bits("<LSB>0</LSB>"), "1: MaskedIntReg 'N': MSB: missing"},
      {bits("<Bit>32</Bit>"), "1: MaskedIntReg 'N': Bit: bit 32 lies outside the register of 4 bytes"},
      {bits("<LSB>24</LSB><MSB>40</MSB>"), "1: MaskedIntReg 'N': MSB: bit 40 lies outside the register of 4 bytes"},
      {bits("<Bit>-1</Bit>"), "1: MaskedIntReg 'N': Bit: bit -1 lies outside the register of 4 bytes"},
      {"<Command Name='N'><Value>0</Value></Command>", "1: Command 'N': CommandValue or pCommandValue: missing"},
      {"<Enumeration Name='N'><Value>0</Value></Enumeration>", "1: Enumeration 'N': EnumEntry: missing"},
      {"<String Name='N'/>", "1: String 'N': Value or pValue: missing"},
      {"<SwissKnife Name='N'/>", "1: SwissKnife 'N': Formula: missing"},
      {"<IntConverter Name='N'><FormulaTo>FROM</FormulaTo><pValue>Other</pValue></IntConverter>",
       "1: IntConverter 'N': FormulaFrom: missing"},
      {"<IntSwissKnife Name='N'><pVariable>Other</pVariable><Formula>1</Formula></IntSwissKnife>",
       "1: IntSwissKnife 'N': pVariable: Name: missing"},
      {"<Port Name='N'><ChunkID>0x12</ChunkID></Port>", "1: Port 'N': ChunkID: '0x12' is not a hex number"},
      {"<Node Name='N'><EventID>9g</EventID></Node>", "1: Node 'N': EventID: '9g' is not a hex number"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.expected);
    const Loaded description = load(c.nodes + "<Integer Name='Other'><Value>1</Value></Integer>");
    const NodeIndex node = description->indexOf("N");
    EXPECT_TRUE(description->node(node).defective);
    EXPECT_EQ(description->defectText(node), c.expected);
    EXPECT_EQ(defects(description).size(), 1u);
    EXPECT_FALSE(description->node(description->indexOf("Other")).defective);
    EXPECT_EQ(description->defectText(description->indexOf("Other")), "");
  }
}

TEST(LoaderFaults, AnEntryWithoutValueCostsOnlyTheEntry) {
  const Loaded description = load(
      "<Enumeration Name='E'>\n<EnumEntry Name='Good'><Value>1</Value></EnumEntry>\n<EnumEntry Name='Bad'/>"
      "<Value>1</Value></Enumeration>");
  EXPECT_EQ(defects(description), std::vector<std::string>{"3: EnumEntry 'EnumEntry_E_Bad': Value: missing"});
}

// Things that are only noted.
TEST(LoaderFaults, NotesHaveNoEffectOnTheNode) {
  const std::string integer = "<Integer Name='N'><Value>1</Value>$1</Integer>";
  const Case cases[] = {
      {"<Category Name='N'><pFeature>Nowhere</pFeature></Category>",
       "1: Category 'N': pFeature: no node named 'Nowhere'"},
      {filled(integer, "<pError>N</pError>"), "1: Integer 'N': pError: 'N' is a node of type Integer"},
      {filled(integer, "<Sparkle><Value>2</Value></Sparkle>"), "1: Integer 'N': Sparkle: unknown element"},
      {filled(integer, "<Length>2</Length>"), "1: Integer 'N': Length: has no meaning here"},
      {filled(integer, "<Min>0</Min><Min>5</Min>"), "1: Integer 'N': Min: given twice, the first one counts"},
      {filled(integer, "<Min>0</Min><pMin>N</pMin>"), "1: Integer 'N': pMin: left out, Min counts"},
      {filled(integer, "<Visibility>beginner</Visibility>"), "1: Integer 'N': Visibility: unknown word 'beginner'"},
      {filled(integer, "<Representation>Hex</Representation>"), "1: Integer 'N': Representation: unknown word 'Hex'"},
      {filled(integer, "<Streamable>true</Streamable>"), "1: Integer 'N': Streamable: unknown word 'true'"},
      {"<Node Name='N' NameSpace='Mine'/>", "1: Node 'N': NameSpace: unknown word 'Mine'"},
      {"<Node Name='N' MergePriority='2'/>", "1: Node 'N': MergePriority: unknown word '2'"},
      {"<Node Name='_12.a'/>", "1: Node '_12.a': Name: unusual name '_12.a'"},
      {"\n<Sparkle/>", "2: Sparkle: unknown element"},
      {"\n<Node Name='N'><ToolTip>a &amp; b &uuml; c</ToolTip></Node>",
       "2: Node 'N': unknown reference '&uuml;' stays as written"},
      {"<Node Name='N'><ToolTip>a <b>c</b></ToolTip></Node>", "1: Node 'N': b: unknown element"},
      {kPort + reg("MaskedIntReg", "N", "<LSB>0</LSB><MSB>11</MSB><Endianess>BigEndian</Endianess>"),
       "1: MaskedIntReg 'N': LSB: LSB and MSB are in the wrong order for BigEndian, taken the other way round"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.expected);
    const Loaded description = load(c.nodes);
    EXPECT_EQ(notes(description), std::vector<std::string>{c.expected});
    EXPECT_TRUE(defects(description).empty());
  }
  for (const std::string link : {"pSelected", "pInvalidator", "pAlias", "pCastAlias", "pError", "pBlockPolling"}) {
    const Loaded description = load(filled(integer, "<" + link + ">Nowhere</" + link + ">"));
    EXPECT_EQ(notes(description), std::vector<std::string>{"1: Integer 'N': " + link + ": no node named 'Nowhere'"});
    EXPECT_TRUE(defects(description).empty());
  }
  EXPECT_EQ(elements(load(filled(integer, "<pSelected>No</pSelected><Min>0</Min><pAlias>N</pAlias>")), "N"),
            "Value=1 Min=0 pAlias=N");
  EXPECT_EQ(elements(load(filled(integer, "<Min>0</Min><Min>5</Min><pMin>N</pMin>")), "N"), "Value=1 Min=0");
}

}  // namespace

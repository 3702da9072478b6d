// What is wrong with a description, and what follows from it: no map, one unusable node, or just a note.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "LoaderSnippets.h"

using namespace loading;

namespace {

struct Case {
  const char* what;
  std::string nodes;
  std::string expected;
};

// Faults that leave no map. The text begins with the line of the place.
TEST(LoaderFaults, FatalFaultsNameLineNodeElementAndReason) {
  const std::string integer = "<Integer Name='I'>$1</Integer>";
  const Case cases[] = {
      {"no name", "\n<Integer><Value>1</Value></Integer>", "<description>:2: Integer: Name: missing"},
      {"empty name", "<Integer Name=' '><Value>1</Value></Integer>", "<description>:1: Integer: Name: missing"},
      {"blank in name", "<Node Name='a b'/>",
       "<description>:1: Node 'a b': Name: blanks, '/', ':' and control characters cannot stand in a name"},
      {"long name", "<Node Name='" + std::string(600, 'n') + "'/>",
       "<description>:1: Node '" + std::string(40, 'n') + "...': Name: longer than 512 bytes"},
      {"name twice", "\n<Node Name='A'/>\n<Port Name='A'/>",
       "<description>:3: Port 'A': Name: already the name of the Node in line 2"},
      {"value link", filled(integer, "<pValue>\nNowhere</pValue>"),
       "<description>:2: Integer 'I': pValue: no node named 'Nowhere'"},
      {"variable link",
       "\n\n<IntSwissKnife Name='WidthMax'>\n<pVariable Name='W'>SensorW</pVariable><Formula>W</Formula>"
       "</IntSwissKnife>",
       "<description>:4: IntSwissKnife 'WidthMax': pVariable: no node named 'SensorW'"},
      {"limit link", filled(integer, "<Value>1</Value><pMin>Nowhere</pMin>"),
       "<description>:1: Integer 'I': pMin: no node named 'Nowhere'"},
      {"address link", kPort + reg("IntReg", "R", "<pAddress>Nowhere</pAddress>"),
       "<description>:1: IntReg 'R': pAddress: no node named 'Nowhere'"},
      {"offset link",
       kPort + "<Integer Name='I'><Value>1</Value></Integer>" +
           reg("IntReg", "R", "<pIndex pOffset='Nowhere'>I</pIndex>"),
       "<description>:1: IntReg 'R': pOffset: no node named 'Nowhere'"},
      {"port link", reg("IntReg", "R"), "<description>:1: IntReg 'R': pPort: no node named 'Device'"},
      {"guard link", "<Node Name='N'><pIsLocked>Nowhere</pIsLocked></Node>",
       "<description>:1: Node 'N': pIsLocked: no node named 'Nowhere'"},
      {"entry link", "<Enumeration Name='E'><pEnumEntry>Nowhere</pEnumEntry><Value>0</Value></Enumeration>",
       "<description>:1: Enumeration 'E': pEnumEntry: no node named 'Nowhere'"},
      {"port of a wrong kind", "<Integer Name='Device'><Value>1</Value></Integer>" + reg("IntReg", "R"),
       "<description>:1: IntReg 'R': pPort: 'Device' is a node of type Integer"},
      {"value of a wrong kind", "<Category Name='C'/>" + filled(integer, "<pValue>C</pValue>"),
       "<description>:1: Integer 'I': pValue: 'C' is a node of type Category"},
      {"text needs text", "<Integer Name='I'><Value>1</Value></Integer><String Name='S'><pValue>I</pValue></String>",
       "<description>:1: String 'S': pValue: 'I' is a node of type Integer"},
      {"number needs number", "<String Name='S'><Value/></String>" + filled(integer, "<Value>1</Value><pMax>S</pMax>"),
       "<description>:1: Integer 'I': pMax: 'S' is a node of type String"},
      {"guard of a wrong kind",
       "<Command Name='C'><Value>0</Value><CommandValue>1</CommandValue></Command>"
       "<Node Name='N'><pIsAvailable>C</pIsAvailable></Node>",
       "<description>:1: Node 'N': pIsAvailable: 'C' is a node of type Command"},
      {"Boolean without difference", "<Boolean Name='B'><Value>1</Value><OnValue>0</OnValue></Boolean>",
       "<description>:1: Boolean 'B': OnValue: OnValue and OffValue are both 0"},
      {"selector cycle",
       "<Integer Name='A'><Value>1</Value><pSelected>B</pSelected></Integer>"
       "<Integer Name='B'><Value>1</Value><pSelected>A</pSelected></Integer>",
       "<description>: nodes 'A' -> 'B' -> 'A' form a selector cycle"},
      {"selector of itself", filled(integer, "<Value>1</Value><pSelected>I</pSelected>"),
       "<description>: nodes 'I' -> 'I' form a selector cycle"},
      {"category cycle",
       "<Category Name='Root'><pFeature>A</pFeature></Category><Category Name='A'><pFeature>Root</pFeature></Category>",
       "<description>: nodes 'Root' -> 'A' -> 'Root' form a feature cycle"},
      {"value cycle",
       "<Integer Name='A'><pValue>B</pValue></Integer><Integer Name='B'><pValue>C</pValue></Integer>"
       "<Integer Name='C'><Value>1</Value></Integer><Integer Name='D'><pValue>E</pValue></Integer>"
       "<Integer Name='E'><pValue>C</pValue><pValueCopy>D</pValueCopy></Integer>",
       "<description>: nodes 'D' -> 'E' -> 'D' form a value cycle"},
  };
  for (const Case& c : cases) EXPECT_EQ(fault(c.nodes), c.expected) << c.what;
}

// What values, limits, addresses, ports and rights hang on has to be there, whatever the version.
TEST(LoaderFaults, NecessaryLinksLeadSomewhere) {
  const std::string integer = "<Integer Name='N'>$1</Integer>";
  const std::string table = "<Integer Name='I'><Value>0</Value></Integer><Integer Name='N'><pIndex>I</pIndex>";
  const std::pair<const char*, std::string> cases[] = {
      {"pValueCopy", integer + "<Integer Name='I'><Value>0</Value></Integer>"},
      {"pMax", filled(integer, "<Value>1</Value>$1")},
      {"pInc", filled(integer, "<Value>1</Value>$1")},
      {"pIndex", filled(integer, "$1<ValueIndexed Index='0'>1</ValueIndexed><ValueDefault>0</ValueDefault>")},
      {"pValueIndexed", table + "$1<ValueDefault>0</ValueDefault></Integer>"},
      {"pValueDefault", table + "<ValueIndexed Index='0'>1</ValueIndexed>$1</Integer>"},
      {"pLength", kPort + "<Register Name='N'><Address>0</Address>$1<pPort>Device</pPort></Register>"},
      {"pCommandValue", "<Command Name='N'><Value>0</Value>$1</Command>"},
      {"pChunkID", "<Port Name='N'>$1</Port>"},
      {"pIsImplemented", "<Node Name='N'>$1</Node>"},
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

TEST(LoaderFaults, CyclesThatNoVersionAllows) {
  const auto two = [](const char* open, const char* link, const char* close) {
    std::string nodes;
    for (const char* each : {"A", "B"}) {
      nodes += std::string("<") + open + " Name='" + each + "'><" + link + ">" + (*each == 'A' ? 'B' : 'A') + "</" +
               link + ">" + close + "</" + open + ">";
    }
    return nodes;
  };
  for (const char* version : {"1_0", "1_1"}) {
    EXPECT_THAT(fault(two("Integer", "pSelected", "<Value>1</Value>"), version),
                testing::EndsWith("form a selector cycle"));
    EXPECT_THAT(fault(two("Integer", "pValue", ""), version), testing::EndsWith("form a value cycle"));
    EXPECT_THAT(fault(two("Category", "pFeature", ""), version), testing::EndsWith("form a feature cycle"));
    EXPECT_EQ(fault(two("Integer", "pIsLocked", "<Value>1</Value>"), version), "");
    EXPECT_EQ(fault(two("Integer", "pInvalidator", "<Value>1</Value>"), version), "");
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
      {"no value", filled(integer, ""), "1: Integer 'N': Value, pValue or pIndex: missing"},
      {"empty value", filled(integer, "<Value/>"), "1: Integer 'N': Value, pValue or pIndex: missing"},
      {"fraction", number("1.5"), "1: Integer 'N': Value: '1.5' is not an integer"},
      {"no hex digits", number("0x"), "1: Integer 'N': Value: '0x' is not an integer"},
      {"17 hex digits", number("0x12345678901234567"),
       "1: Integer 'N': Value: '0x12345678901234567' is not an integer"},
      {"beyond 64 bits", number("9223372036854775808"),
       "1: Integer 'N': Value: '9223372036854775808' is not an integer"},
      {"long value", number("a very long text that does not stop before the end"),
       "1: Integer 'N': Value: 'a very long text that does not stop befo...' is not an integer"},
      {"decimal comma", "<Float Name='N'><Value>1,5</Value></Float>", "1: Float 'N': Value: '1,5' is not a number"},
      {"set", filled(integer, "<Value>1</Value><ValidValueSet>1;x;3</ValidValueSet>"),
       "1: Integer 'N': ValidValueSet: '1;x;3' is not a list of integers"},
      {"Boolean word", "<Boolean Name='N'><Value>yes</Value></Boolean>",
       "1: Boolean 'N': Value: 'yes' is neither true nor false"},
      {"no index",
       filled(integer, "<pIndex>I</pIndex><ValueIndexed>1</ValueIndexed><ValueDefault>0</ValueDefault>") +
           "<Integer Name='I'><Value>0</Value></Integer>",
       "1: Integer 'N': ValueIndexed: Index: missing"},
      {"bad index",
       filled(integer, "<pIndex>I</pIndex><ValueIndexed Index='x'>1</ValueIndexed><ValueDefault>0</ValueDefault>") +
           "<Integer Name='I'><Value>0</Value></Integer>",
       "1: Integer 'N': Index: 'x' is not an integer"},
      {"no default",
       filled(integer, "<pIndex>I</pIndex><ValueIndexed Index='0'>1</ValueIndexed>") +
           "<Integer Name='I'><Value>0</Value></Integer>",
       "1: Integer 'N': ValueDefault or pValueDefault: missing"},
      {"no address", kPort + "<IntReg Name='N'><Length>4</Length><pPort>Device</pPort></IntReg>",
       "1: IntReg 'N': Address: missing"},
      {"no length", kPort + "<IntReg Name='N'><Address>0</Address><pPort>Device</pPort></IntReg>",
       "1: IntReg 'N': Length: missing"},
      {"no port", "<Register Name='N'><Address>0</Address><Length>4</Length></Register>",
       "1: Register 'N': pPort: missing"},
      {"no bytes", kPort + reg("StringReg", "N", "<Length>0</Length>"),
       "1: StringReg 'N': Length: 0 bytes are no register"},
      {"nine bytes", intReg("<Length>9</Length>"), "1: IntReg 'N': Length: 9 bytes are not between 1 and 8"},
      {"access word", intReg("<AccessMode>R</AccessMode>"), "1: IntReg 'N': AccessMode: unknown word 'R'"},
      {"access NI", intReg("<AccessMode>NI</AccessMode>"), "1: IntReg 'N': AccessMode: unknown word 'NI'"},
      {"imposed word", "<Node Name='N'><ImposedAccessMode>NA</ImposedAccessMode></Node>",
       "1: Node 'N': ImposedAccessMode: unknown word 'NA'"},
      {"sign word", intReg("<Sign>signed</Sign>"), "1: IntReg 'N': Sign: unknown word 'signed'"},
      {"byte order word", intReg("<Endianess>Big</Endianess>"), "1: IntReg 'N': Endianess: unknown word 'Big'"},
      {"caching word", intReg("<Cachable>Yes</Cachable>"), "1: IntReg 'N': Cachable: unknown word 'Yes'"},
      {"slope word",
       "<Integer Name='I'><Value>0</Value></Integer><Converter Name='N'><FormulaTo>FROM</FormulaTo><FormulaFrom>TO"
       "</FormulaFrom><pValue>I</pValue><Slope>Up</Slope></Converter>",
       "1: Converter 'N': Slope: unknown word 'Up'"},
      {"no bits", bits(""), "1: MaskedIntReg 'N': Bit or LSB and MSB: missing"},
      {"one bit end", bits("<LSB>0</LSB>"), "1: MaskedIntReg 'N': MSB: missing"},
      {"bit outside", bits("<Bit>32</Bit>"), "1: MaskedIntReg 'N': Bit: bit 32 lies outside the register of 4 bytes"},
      {"bits outside", bits("<LSB>24</LSB><MSB>40</MSB>"),
       "1: MaskedIntReg 'N': MSB: bit 40 lies outside the register of 4 bytes"},
      {"negative bit", bits("<Bit>-1</Bit>"), "1: MaskedIntReg 'N': Bit: bit -1 lies outside the register of 4 bytes"},
      {"no command value", "<Command Name='N'><Value>0</Value></Command>",
       "1: Command 'N': CommandValue or pCommandValue: missing"},
      {"no entries", "<Enumeration Name='N'><Value>0</Value></Enumeration>", "1: Enumeration 'N': EnumEntry: missing"},
      {"no text", "<String Name='N'/>", "1: String 'N': Value or pValue: missing"},
      {"no formula", "<SwissKnife Name='N'/>", "1: SwissKnife 'N': Formula: missing"},
      {"no formula back",
       "<Integer Name='I'><Value>0</Value></Integer><IntConverter Name='N'><FormulaTo>FROM</FormulaTo>"
       "<pValue>I</pValue></IntConverter>",
       "1: IntConverter 'N': FormulaFrom: missing"},
      {"variable without a name",
       "<Integer Name='I'><Value>0</Value></Integer><IntSwissKnife Name='N'><pVariable>I</pVariable><Formula>1"
       "</Formula></IntSwissKnife>",
       "1: IntSwissKnife 'N': pVariable: Name: missing"},
      {"chunk ID", "<Port Name='N'><ChunkID>0x12</ChunkID></Port>", "1: Port 'N': ChunkID: '0x12' is not a hex number"},
      {"event ID", "<Node Name='N'><EventID>9g</EventID></Node>", "1: Node 'N': EventID: '9g' is not a hex number"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
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
  EXPECT_FALSE(description->node(description->indexOf("E")).defective);
  EXPECT_FALSE(description->node(description->indexOf("EnumEntry_E_Good")).defective);
  EXPECT_EQ(description->defectText(description->indexOf("EnumEntry_E_Bad")),
            "3: EnumEntry 'EnumEntry_E_Bad': Value: missing");
}

// Things that are only noted.
TEST(LoaderFaults, NotesHaveNoEffectOnTheNode) {
  const std::string integer = "<Integer Name='N'><Value>1</Value>$1</Integer>";
  const auto link = [&](const std::string& element) {
    return filled(integer, "<" + element + ">Nowhere</" + element + ">");
  };
  const Case cases[] = {
      {"feature", "<Category Name='N'><pFeature>Nowhere</pFeature></Category>",
       "1: Category 'N': pFeature: no node named 'Nowhere'"},
      {"selected", link("pSelected"), "1: Integer 'N': pSelected: no node named 'Nowhere'"},
      {"invalidator", link("pInvalidator"), "1: Integer 'N': pInvalidator: no node named 'Nowhere'"},
      {"alias", link("pAlias"), "1: Integer 'N': pAlias: no node named 'Nowhere'"},
      {"cast alias", link("pCastAlias"), "1: Integer 'N': pCastAlias: no node named 'Nowhere'"},
      {"error", link("pError"), "1: Integer 'N': pError: no node named 'Nowhere'"},
      {"polling", link("pBlockPolling"), "1: Integer 'N': pBlockPolling: no node named 'Nowhere'"},
      {"error of a wrong kind", filled(integer, "<pError>N</pError>"),
       "1: Integer 'N': pError: 'N' is a node of type Integer"},
      {"unknown element", filled(integer, "<Sparkle><Value>2</Value></Sparkle>"),
       "1: Integer 'N': Sparkle: unknown element"},
      {"element of other nodes", filled(integer, "<Length>2</Length>"), "1: Integer 'N': Length: has no meaning here"},
      {"given twice", filled(integer, "<Min>0</Min><Min>5</Min>"),
       "1: Integer 'N': Min: given twice, the first one counts"},
      {"alternatives", filled(integer, "<Min>0</Min><pMin>N</pMin>"), "1: Integer 'N': pMin: left out, Min counts"},
      {"visibility word", filled(integer, "<Visibility>beginner</Visibility>"),
       "1: Integer 'N': Visibility: unknown word 'beginner'"},
      {"representation word", filled(integer, "<Representation>Hex</Representation>"),
       "1: Integer 'N': Representation: unknown word 'Hex'"},
      {"streamable word", filled(integer, "<Streamable>true</Streamable>"),
       "1: Integer 'N': Streamable: unknown word 'true'"},
      {"name space word", "<Node Name='N' NameSpace='Mine'/>", "1: Node 'N': NameSpace: unknown word 'Mine'"},
      {"unusual name", "<Node Name='_12.a'/>", "1: Node '_12.a': Name: unusual name '_12.a'"},
      {"unknown node", "\n<Sparkle/>", "2: Sparkle: unknown element"},
      {"unknown reference", "\n<Node Name='N'><ToolTip>a &amp; b &uuml; c</ToolTip></Node>",
       "2: Node 'N': unknown reference '&uuml;' stays as written"},
      {"no element", "<Node Name='N'><ToolTip>a <b>c</b></ToolTip></Node>", "1: Node 'N': b: unknown element"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    const Loaded description = load(c.nodes);
    EXPECT_EQ(notes(description), std::vector<std::string>{c.expected});
    EXPECT_TRUE(defects(description).empty());
  }
  EXPECT_EQ(elements(load(filled(integer, "<pSelected>No</pSelected><Min>0</Min><pAlias>N</pAlias>")), "N"),
            "Value=1 Min=0 pAlias=N");
  EXPECT_EQ(elements(load(filled(integer, "<Min>0</Min><Min>5</Min><pMin>N</pMin>")), "N"), "Value=1 Min=0");
}

TEST(LoaderFaults, WrongBitOrderIsPutRight) {
  const auto bits = [](const char* endianess, const char* lsb, const char* msb) {
    return load(kPort + reg("MaskedIntReg", "N",
                            filled("<Endianess>$1</Endianess>", endianess) + filled("<LSB>$1</LSB>", lsb) +
                                filled("<MSB>$1</MSB>", msb)));
  };
  const auto ends = [](const Loaded& description) {
    const NodeIndex node = description->indexOf("N");
    return std::pair(description->find(node, Element::LSB)->integer, description->find(node, Element::MSB)->integer);
  };
  EXPECT_EQ(ends(bits("LittleEndian", "4", "11")), std::pair(int64_t{4}, int64_t{11}));
  EXPECT_EQ(ends(bits("LittleEndian", "11", "4")), std::pair(int64_t{4}, int64_t{11}));
  EXPECT_EQ(ends(bits("BigEndian", "11", "0")), std::pair(int64_t{11}, int64_t{0}));
  EXPECT_EQ(ends(bits("BigEndian", "0", "11")), std::pair(int64_t{11}, int64_t{0}));
  EXPECT_EQ(
      notes(bits("BigEndian", "0", "11")),
      std::vector<std::string>{
          "1: MaskedIntReg 'N': LSB: LSB and MSB are in the wrong order for BigEndian, taken the other way round"});
  EXPECT_TRUE(notes(bits("BigEndian", "11", "0")).empty());
}

}  // namespace

// Who may read and write what: guards, imposed modes, sources, ports, categories, cycles.
#include "TestMap.h"

using testing::HasSubstr;

namespace {

const std::string kOff = tag("pIsAvailable", "Zero"), kGone = tag("pIsImplemented", "Zero");

}  // namespace

TEST(AccessMode, FollowsGuardsSourcesAndTheRuleOfItsType) {
  const auto guarded = [](const std::string& guards) { return held("A", 0, guards); };
  const auto guard = [&](const std::string& kind, const std::string& by) { return guarded(tag("pIs" + kind, by)); };
  const auto table = [](const std::string& index, const std::string& cells) {
    return "<Integer Name='A'>" + tag("pIndex", index) + cells + "</Integer>";
  };
  const auto place = [](const std::string& elements, const std::string& port = "Device") {
    return "<IntReg Name='A'>" + elements + tag("pPort", port) + "</IntReg>";
  };
  const std::string both = "<FormulaTo>FROM</FormulaTo><FormulaFrom>TO</FormulaFrom>";
  const std::string fixed = "<Address>0</Address><Length>1</Length>", zero = "<ValueDefault>0</ValueDefault>";
  const std::pair<EAccessMode, std::vector<std::string>> cases[] = {
      {NI,
       {guarded(kGone + kOff), knife("A", "Ni", "1"), "<Port Name='A'/>", place(fixed, "Unplugged"),
        "<Command Name='A'><Value>1</Value><pCommandValue>Ni</pCommandValue></Command>",
        "<SwissKnife Name='A'><pVariable Name='X'>Na</pVariable><pVariable Name='Y'>Ni</pVariable><Formula>1</Formula>"
        "</SwissKnife>",
        over("A", "Na", "<pVariable Name='X'>Ni</pVariable>" + both, "IntConverter"),
        place("<Address>0</Address><pLength>Ni</pLength>"),
        // a source that is not implemented wins over guards
        over("A", "Ni", kOff), over("A", "Ni", tag("pIsAvailable", "Na")),
        over("A", "Ni", "<pCommandValue>Na</pCommandValue>", "Command")}},
      {NA,
       {// what cannot be asked makes the node NA, not NI
        guard("Available", "Wo"), guard("Available", "Na"), guard("Implemented", "Ni"), guard("Implemented", "Wo"),
        guard("Locked", "Wo"), guarded(kOff + tag("pIsLocked", "Wo")), guarded(tag("pBlockPolling", "Wo")),
        "<Command Name='A'><Value>1</Value><pCommandValue>Na</pCommandValue></Command>",
        knife("A", "Wo", "1"),  // also where the formula does not use it
        over("A", "Rw", "<pVariable Name='X'>Wo</pVariable>" + both, "Converter"),
        table("Wo", "<ValueIndexed Index='0'>1</ValueIndexed>" + zero),
        place("<pAddress>Wo</pAddress><Length>1</Length>"),
        place("<Address>0</Address><pIndex pOffset='Na'>Rw</pIndex><Length>1</Length>"),
        "<Port Name='A'><ChunkID>12</ChunkID></Port>", "<Port Name='A'><pChunkID>Text</pChunkID></Port>"}},
      {RO,
       {// a float that is not zero; a Boolean says 1, whatever its OnValue
        guard("Locked", "Minus"), guard("Locked", "Half"), guard("Locked", "Bool"),
        over("A", "Text", tag("pIsLocked", "One"), "String")}},
      {WO, {table("Ro", "<pValueIndexed Index='0'>Wo</pValueIndexed>" + zero)}},
      {RW,
       {"<Node Name='A'/>", guard("Locked", "Enum"),  // integer value 0, numeric value 5
        guarded(tag("pBlockPolling", "One")),         // its value is a matter of polling
        held("A", 1, "<pMin>Ni</pMin><pMax>Na</pMax><pInc>Wo</pInc>"),
        table("Ro", "<ValueIndexed Index='0'>5</ValueIndexed><pValueDefault>Ni</pValueDefault>")}}};
  for (const auto& [expected, nodes] : cases) {
    for (const std::string& node : nodes) {
      TestMap t(
          node + held("One", 1) + held("Zero") + held("Minus", -1) + held("Na", 0, kOff) + held("Ni", 0, kGone) +
          reg("IntReg", "Rw", 0, 1) + reg("IntReg", "Ro", 0, 1, tag("AccessMode", "RO")) +
          reg("IntReg", "Wo", 0, 1, tag("AccessMode", "WO")) +
          "<Float Name='Half'><Value>0.25</Value></Float><Port Name='Unplugged'/>"
          "<Boolean Name='Bool'><pValue>Zero</pValue><OnValue>0</OnValue><OffValue>1</OffValue></Boolean>"
          "<Enumeration Name='Enum'><EnumEntry Name='X'><Value>0</Value><NumericValue>5</NumericValue></EnumEntry>"
          "<Value>0</Value></Enumeration><String Name='Text'><Value>12</Value></String>");
      EXPECT_EQ(t.mode("A"), expected) << node;
      EXPECT_EQ(t.mode("A"), expected) << "asked again: " << node;
      if (expected != NI || node.find(tag("pValue", "Ni")) == std::string::npos) continue;
      t.integer("Zero")->SetValue(1);
      EXPECT_NE(t.mode("A"), NI) << "it comes back with its guards: " << node;
    }
  }
}

TEST(AccessMode, OfThePortLimitsItsRegisters) {
  TestMap t(reg("IntReg", "R", 0, 1) + over("A", "R") + "<Port Name=\"Device\"><pIsAvailable>G</pIsAvailable></Port>" +
            held("G", 1));
  for (const EAccessMode mode : {RW, RO, WO, NA, NI}) {
    t.port.mode = mode;
    EXPECT_EQ(t.mode("Device"), mode) << "the port is asked each time";
    t.port.InvalidateNode();
    EXPECT_EQ(t.mode("R"), mode);
    EXPECT_EQ(t.mode("A"), mode);
  }
  t.port.mode = RO;
  EXPECT_EQ(t.mode("A"), NI) << "registers keep what they were told";
  t.port.InvalidateNode();
  const uint8_t byte = 1;
  EXPECT_THROW(t.bytes("R")->Set(&byte, 1), AccessException);
  EXPECT_EQ(t.integer("R")->GetValue(), 0);
  t.integer("G")->SetValue(0);
  EXPECT_EQ(t.mode("R"), NA);
}

TEST(AccessMode, ImposingOnlyNarrows) {
  TestMap t(over("A", "R") + reg("IntReg", "R", 0, 1, tag("AccessMode", "RO")));
  EXPECT_EQ(t.mode("A"), RO);
  for (const auto& [imposed, expected] : {std::pair{RW, RO}, {WO, NA}, {NI, NI}, {RO, RO}}) {
    t.node("R")->ImposeAccessMode(imposed);
    EXPECT_EQ(t.mode("A"), expected) << "a later wish replaces the earlier one";
  }
  TestMap described(held("I", 0, tag("ImposedAccessMode", "RO")));
  described.node("I")->ImposeAccessMode(RW);
  EXPECT_EQ(described.mode("I"), RO) << "what the description imposes stays";
  TestMap fixed("<IntSwissKnife Name='K'><Formula>1</Formula></IntSwissKnife>");
  fixed.node("K")->ImposeVisibility(Guru);
  EXPECT_EQ(fixed.mode("K"), RO) << "another thing was imposed";
}

TEST(AccessMode, ReadingIsAlwaysCheckedAndWritingWhenVerified) {
  TestMap t(reg("IntReg", "Wo", 0, 1, tag("AccessMode", "WO")) + reg("IntReg", "Ro", 1, 1, tag("AccessMode", "RO")) +
            held("Locked", 0, tag("pIsLocked", "One")) + held("One", 1) + knife("K", "One"));
  EXPECT_THROW(t.integer("Wo")->GetValue(false), AccessException);
  EXPECT_THROW(t.integer("Ro")->SetValue(1), AccessException);
  t.integer("Ro")->SetValue(1, false);
  EXPECT_EQ(t.port.memory[1], 1);
  t.integer("Locked")->SetValue(3, false);
  EXPECT_EQ(t.integer("Locked")->GetValue(), 3);
  EXPECT_THROW(t.value("Locked")->FromString("nonsense"), AccessException) << "before the text is looked at";
  EXPECT_THROW(t.value("Locked")->FromString("nonsense", false), InvalidArgumentException);
  for (const bool verify : {true, false}) {
    EXPECT_THROW(t.integer("K")->SetValue(1, verify), AccessException);
    EXPECT_THROW(t.value("K")->FromString("1", verify), AccessException);
  }
}

TEST(AccessMode, CategoriesAreReadOnlyOrNotThere) {
  const auto category = [](const std::string& name, const std::string& content) {
    return "<Category Name='" + name + "'>" + content + "</Category>";
  };
  const std::string off = tag("pFeature", "Off"), gone = tag("pFeature", "Gone");
  TestMap t(category("Root", tag("pFeature", "Some")) + category("Some", off + gone) + category("None", gone) +
            category("Nested", tag("pFeature", "None")) + category("Empty", "") + category("Guarded", kGone + off) +
            category("Unreadable", tag("pIsImplemented", "Off")) + category("Unmoved", kOff + tag("pIsLocked", "One")) +
            held("Off", 0, kOff) + held("Gone", 0, kGone) + held("Zero") + held("One", 1));
  for (const char* name : {"Root", "Some", "Empty", "Unreadable", "Unmoved"}) EXPECT_EQ(t.mode(name), RO) << name;
  for (const char* name : {"None", "Nested", "Guarded"}) EXPECT_EQ(t.mode(name), NI) << name;
  t.integer("Zero")->SetValue(1);
  EXPECT_EQ(t.mode("Gone"), RW);
  for (const char* name : {"None", "Nested", "Guarded"}) EXPECT_EQ(t.mode(name), NI) << "kept: " << name;
  t.map->InvalidateNodes();
  for (const char* name : {"None", "Nested", "Guarded"}) EXPECT_EQ(t.mode(name), RO) << name;
  EXPECT_EQ(t.value("Empty")->ToString(), "Empty");
  EXPECT_THROW(t.value("Empty")->FromString("x"), AccessException);
}

TEST(AccessMode, AskingACategoryBeforeThePortIsConnected) {
  TestMap t("<Category Name='C'><pFeature>R</pFeature></Category>" + reg("IntReg", "R", 0, 1));
  t.map->Connect(static_cast<IPort*>(nullptr));
  EXPECT_EQ(t.mode("C"), NI);
  t.map->Connect(&t.port);
  EXPECT_EQ(t.mode("C"), RO);
  t.node("R")->ImposeAccessMode(NI);
  EXPECT_EQ(t.mode("C"), NI);
}

// Two features that lock each other: neither order of questions may leave a wrong answer behind.
TEST(AccessMode, FeaturesThatLockEachOther) {
  const std::string nodes = held("A", 0, "<pIsLocked>KA</pIsLocked>") + held("B", 0, "<pIsLocked>KB</pIsLocked>") +
                            knife("KA", "B") + knife("KB", "A");
  for (const int minor : {0, 1}) {
    for (const bool firstA : {true, false}) {
      TestMap t(nodes, minor);
      EXPECT_EQ(t.mode(firstA ? "A" : "B"), RW);
      EXPECT_EQ(t.mode(firstA ? "B" : "A"), RW);
      t.integer("A")->SetValue(1);
      EXPECT_EQ(t.mode("B"), RO);
      EXPECT_EQ(t.mode("A"), RW);
      EXPECT_THROW(t.integer("B")->SetValue(1), AccessException);
      t.integer("A")->SetValue(0);
      t.integer("B")->SetValue(1);
      EXPECT_EQ(t.mode("A"), RO);
      EXPECT_EQ(t.mode("B"), RW);
    }
  }
  for (const std::string first : {"A", "B"}) {
    TestMap t("<Integer Name='A'><pIsAvailable>Zero</pIsAvailable><pIsLocked>B</pIsLocked><Value>0</Value></Integer>" +
              held("B", 0, "<pIsLocked>A</pIsLocked>") + held("Zero"));
    t.mode(first);
    EXPECT_EQ(t.mode("A"), NA) << first << " asked first";
    EXPECT_EQ(t.mode("B"), NA) << first << " asked first";
  }
  TestMap own(held("A", 1, "<pIsLocked>A</pIsLocked>") + held("B", 0, "<pIsAvailable>B</pIsAvailable>"));
  EXPECT_EQ(own.mode("A"), RO) << "guarded by itself";
  EXPECT_EQ(own.mode("B"), NA);
}

TEST(AccessMode, IsComputedOnceUnlessAnythingUncachedDecides) {
  TestMap t(held("Plain", 0, "<pIsLocked>G</pIsLocked>") + held("Fresh", 0, "<pIsLocked>N</pIsLocked>") +
            over("OverFresh", "Fresh") + over("OverNever", "N") + knife("KnifeOfFresh", "Fresh") +
            held("Limited", 0, "<pMax>Fresh</pMax>") +
            "<Integer Name='Table'><pIndex>N</pIndex><pValueIndexed Index='0'>Wo</pValueIndexed>"
            "<ValueDefault>0</ValueDefault></Integer>"
            "<Enumeration Name='E'><EnumEntry Name='X'><Value>0</Value><pIsAvailable>N</pIsAvailable></EnumEntry>"
            "<Value>0</Value></Enumeration>" +
            reg("IntReg", "G", 0, 1) + reg("IntReg", "N", 1, 1, tag("Cachable", "NoCache")) +
            reg("IntReg", "Wo", 2, 1, tag("AccessMode", "WO")) +
            reg("IntReg", "Self", 3, 1, "<Cachable>NoCache</Cachable><pIsLocked>G</pIsLocked>") +
            "<Port Name='Guarded'><pIsAvailable>N</pIsAvailable></Port>"
            "<IntReg Name='Behind'><Address>0</Address><Length>1</Length><pPort>Guarded</pPort></IntReg>");
  for (const char* name : {"Plain", "N", "G", "Self", "OverNever", "Limited"})
    EXPECT_EQ(t.node(name)->IsAccessModeCacheable(), Yes) << name;
  for (const char* name : {"Fresh", "OverFresh", "KnifeOfFresh", "EnumEntry_E_X", "E", "Table", "Behind"})
    EXPECT_EQ(t.node(name)->IsAccessModeCacheable(), No) << name;
  EXPECT_EQ(t.mode("Plain"), RW);
  EXPECT_EQ(t.mode("Plain"), RW);
  EXPECT_EQ(t.port.counts(), "1r0w");
  EXPECT_EQ(t.mode("OverFresh"), RW);
  EXPECT_EQ(t.mode("E"), NA);
  EXPECT_EQ(t.mode("Table"), WO);
  t.port.poke(0, {1, 1});
  EXPECT_EQ(t.mode("OverFresh"), RO);
  EXPECT_EQ(t.mode("E"), RW);
  EXPECT_EQ(t.mode("Table"), RW);
  EXPECT_EQ(t.mode("Plain"), RW) << "its lock may be cached";
  t.node("G")->InvalidateNode();
  EXPECT_EQ(t.mode("Plain"), RO);
  EXPECT_EQ(t.mode("Self"), RO);
}

TEST(AccessMode, QueriesCallNobodyBackAndFailAsTheirGuard) {
  TestMap t(held("A", 0, "<pIsLocked>G</pIsLocked>") + reg("IntReg", "G", 0, 1));
  int fired = 0;
  for (const char* name : {"A", "G"}) Register(t.node(name), [&](INode*) { ++fired; });
  t.port.onRead = [](int64_t, int64_t) { throw TIMEOUT_EXCEPTION("no answer from the lock"); };
  EXPECT_EQ(refusal<TimeoutException>([&] { t.mode("A"); }), "no answer from the lock");
  EXPECT_EQ(refusal<TimeoutException>([&] { IsWritable(t.node("A")); }), "no answer from the lock");
  t.port.onRead = nullptr;
  EXPECT_EQ(t.mode("A"), RW) << "nothing was kept";
  t.port.poke(0, {1});
  t.integer("G")->GetValue(false, true);
  EXPECT_EQ(t.mode("A"), RO);
  EXPECT_EQ(fired, 0);
}

// Guards as reasons: MessageTest.
TEST(AccessMode, RefusalsSayWhatDecided) {
  TestMap t(
      over("Gain", "GainReg", "", "Float") + reg("IntReg", "GainReg", 0, 2, tag("AccessMode", "RO")) +
      "<Port Name='Far'/><IntReg Name='Remote'><Address>0</Address><Length>1</Length><pPort>Far</pPort></IntReg>" +
      held("Chosen", 0, "<ImposedAccessMode>WO</ImposedAccessMode>"));
  EXPECT_EQ(refusal<AccessException>([&] { t.real("Gain")->SetValue(1); }),
            "Gain: not writable: access mode is RO, 'GainReg' is RO");
  EXPECT_THAT(refusal<AccessException>([&] { t.integer("Remote")->GetValue(); }), HasSubstr("'Far' is not connected"));
  EXPECT_THAT(refusal<AccessException>([&] { t.integer("Chosen")->GetValue(); }), HasSubstr("ImposedAccessMode is WO"));
  t.node("Gain")->ImposeAccessMode(WO);
  EXPECT_THAT(refusal<AccessException>([&] { t.real("Gain")->GetValue(); }), HasSubstr("WO was imposed"));
}

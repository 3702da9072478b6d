// Who may read and write what: guards, imposed modes, sources, ports, categories, cycles.
#include "TestMap.h"

using testing::HasSubstr;

namespace {

// A node that holds its value.
std::string held(const std::string& name, const std::string& more, int64_t value = 0) {
  return "<Integer Name='" + name + "'><Value>" + std::to_string(value) + "</Value>" + more + "</Integer>";
}

}  // namespace

TEST(AccessMode, CombinesWishSourceAndLock) {
  const char* const modes[] = {"RW", "RO", "WO"};
  for (const char* const imposed : modes) {
    for (const char* const source : modes) {
      for (const bool locked : {false, true}) {
        TestMap t("<Integer Name='A'><pIsLocked>L</pIsLocked>" + tag("ImposedAccessMode", imposed) +
                  "<pValue>R</pValue></Integer>" + held("L", "", locked) +
                  reg("IntReg", "R", 0, 1, tag("AccessMode", source)));
        const std::string both = std::string(imposed) + source;
        EAccessMode expected = both == "RWRW"                         ? RW
                               : both == "ROWO" || both == "WORO"     ? NA
                               : both.find("RO") != std::string::npos ? RO
                                                                      : WO;
        if (locked) expected = expected == RW ? RO : expected == WO ? NA : expected;
        EXPECT_EQ(t.mode("A"), expected) << both << locked;
        EXPECT_EQ(IsReadable(t.mode("A")), expected == RO || expected == RW);
      }
    }
  }
}

TEST(AccessMode, Guards) {
  struct Case {
    std::string guards;
    EAccessMode expected;
  };
  const Case cases[] = {
      {"<pIsImplemented>Zero</pIsImplemented><pIsAvailable>Zero</pIsAvailable>", NI},
      {"<pIsImplemented>Zero</pIsImplemented><pIsAvailable>One</pIsAvailable>", NI},
      {"<pIsImplemented>One</pIsImplemented><pIsAvailable>Zero</pIsAvailable>", NA},
      {"<pIsImplemented>One</pIsImplemented><pIsAvailable>One</pIsAvailable>", RW},
      {"<pIsAvailable>WriteOnly</pIsAvailable>", NA},
      {"<pIsAvailable>Missing</pIsAvailable>", NA},
      {"<pIsImplemented>Absent</pIsImplemented>", NA},  // what cannot be asked makes the node NA, not NI
      {"<pIsImplemented>WriteOnly</pIsImplemented>", NA},
      {"<pIsLocked>WriteOnly</pIsLocked>", NA},
      {"<pIsLocked>One</pIsLocked>", RO},
      {"<pIsLocked>Minus</pIsLocked>", RO},
      {"<pIsLocked>Zero</pIsLocked>", RW},
      {"<pIsLocked>Half</pIsLocked>", RO},               // a float that is not zero
      {"<pIsLocked>Bool</pIsLocked>", RO},               // a Boolean says 1, whatever its OnValue
      {"<pIsLocked>Enum</pIsLocked>", RW},               // integer value 0, numeric value 5
      {"<pBlockPolling>One</pBlockPolling>", RW},        // its value is a matter of polling
      {"<pBlockPolling>WriteOnly</pBlockPolling>", NA},  // but it has to be readable
      {"<pIsAvailable>Zero</pIsAvailable><pIsLocked>WriteOnly</pIsLocked>", NA},
  };
  for (const Case& each : cases) {
    TestMap t(held("A", each.guards) + held("Zero", "") + held("One", "", 1) + held("Minus", "", -1) +
              held("Missing", "<pIsAvailable>Zero</pIsAvailable>") +
              held("Absent", "<pIsImplemented>Zero</pIsImplemented>") +
              "<Float Name='Half'><Value>0.25</Value></Float>"
              "<Boolean Name='Bool'><pValue>Zero</pValue><OnValue>0</OnValue><OffValue>1</OffValue></Boolean>"
              "<Enumeration Name='Enum'><EnumEntry Name='X'><Value>0</Value><NumericValue>5</NumericValue></EnumEntry>"
              "<Value>0</Value></Enumeration>" +
              reg("IntReg", "WriteOnly", 0, 1, tag("AccessMode", "WO")));
    EXPECT_EQ(t.mode("A"), each.expected) << each.guards;
  }
}

TEST(AccessMode, NotImplementedSourceWinsOverGuards) {
  TestMap t(
      "<Integer Name='A'><pIsAvailable>Zero</pIsAvailable><pValue>S</pValue></Integer>"
      "<Integer Name='B'><pIsAvailable>Unreadable</pIsAvailable><pValue>S</pValue></Integer>" +
      held("S", "<pIsImplemented>Zero</pIsImplemented>") + held("Zero", "") +
      held("Unreadable", "<pIsAvailable>Zero</pIsAvailable>", 1));
  EXPECT_EQ(t.mode("A"), NI);
  EXPECT_EQ(t.mode("B"), NI);
  t.integer("Zero")->SetValue(1);
  EXPECT_EQ(t.mode("A"), RW) << "it comes back with its guards";
  EXPECT_EQ(t.mode("B"), RW);
}

TEST(AccessMode, EachTypeHasItsOwnRule) {
  struct Case {
    std::string node;
    EAccessMode expected;
  };
  const std::string formula = "<Formula>1</Formula>", both = "<FormulaTo>FROM</FormulaTo><FormulaFrom>TO</FormulaFrom>";
  const Case cases[] = {
      {"<Node Name='A'/>", RW},
      {"<Float Name='A'><Value>1</Value></Float>", RW},
      {"<Command Name='A'><Value>1</Value><CommandValue>1</CommandValue></Command>", RW},
      {"<Command Name='A'><Value>1</Value><pCommandValue>Na</pCommandValue></Command>", NA},
      {"<Command Name='A'><Value>1</Value><pCommandValue>Ni</pCommandValue></Command>", NI},
      {"<Command Name='A'><pValue>Ni</pValue><pCommandValue>Na</pCommandValue></Command>", NI},
      {"<Command Name='A'><pValue>Ro</pValue><CommandValue>1</CommandValue></Command>", RO},
      {"<IntSwissKnife Name='A'><pVariable Name='X'>Rw</pVariable>" + formula + "</IntSwissKnife>", RO},
      {"<IntSwissKnife Name='A'><pVariable Name='X'>Wo</pVariable>" + formula + "</IntSwissKnife>", NA},
      {"<SwissKnife Name='A'><pVariable Name='X'>Na</pVariable><pVariable Name='Y'>Ni</pVariable>" + formula +
           "</SwissKnife>",
       NI},
      {"<Converter Name='A'>" + both + "<pValue>Rw</pValue></Converter>", RW},
      {"<Converter Name='A'>" + both + "<pValue>Wo</pValue></Converter>", WO},
      {"<Converter Name='A'><pVariable Name='X'>Wo</pVariable>" + both + "<pValue>Rw</pValue></Converter>", NA},
      {"<IntConverter Name='A'><pVariable Name='X'>Ni</pVariable>" + both + "<pValue>Na</pValue></IntConverter>", NI},
      {"<Integer Name='A'><Value>1</Value><pMin>Ni</pMin><pMax>Na</pMax><pInc>Wo</pInc></Integer>", RW},
      {"<Integer Name='A'><pIndex>Wo</pIndex><ValueIndexed "
       "Index='0'>1</ValueIndexed><ValueDefault>0</ValueDefault></Integer>",
       NA},
      {"<Integer Name='A'><pIndex>Ni</pIndex><ValueIndexed "
       "Index='0'>1</ValueIndexed><ValueDefault>0</ValueDefault></Integer>",
       NA},
      {"<Integer Name='A'><pIndex>Ro</pIndex><pValueIndexed "
       "Index='0'>Wo</pValueIndexed><ValueDefault>0</ValueDefault></Integer>",
       WO},
      {"<Integer Name='A'><pIndex>Ro</pIndex><ValueIndexed "
       "Index='0'>5</ValueIndexed><pValueDefault>Ni</pValueDefault></Integer>",
       RW},
      {"<IntReg Name='A'><pAddress>Wo</pAddress><Length>1</Length><pPort>Device</pPort></IntReg>", NA},
      {"<IntReg Name='A'><Address>0</Address><pLength>Ni</pLength><pPort>Device</pPort></IntReg>", NI},
      {"<IntReg Name='A'><Address>0</Address><pIndex "
       "pOffset='Na'>Rw</pIndex><Length>1</Length><pPort>Device</pPort></IntReg>",
       NA},
      {"<IntReg Name='A'><Address>0</Address><Length>1</Length><pPort>Device</pPort></IntReg>", RO},
      {"<Port Name='A'/>", NI},
      {"<Port Name='A'><ChunkID>12</ChunkID></Port>", NA},
      {"<Port Name='A'><pChunkID>Text</pChunkID></Port>", NA},
      {"<IntReg Name='A'><Address>0</Address><Length>1</Length><pPort>Unplugged</pPort></IntReg>", NI},
      {"<String Name='A'><pValue>Text</pValue><pIsLocked>One</pIsLocked></String>", RO},
  };
  for (const Case& each : cases) {
    TestMap t(each.node + held("One", "", 1) + reg("IntReg", "Rw", 0, 1) +
              reg("IntReg", "Ro", 0, 1, tag("AccessMode", "RO")) + reg("IntReg", "Wo", 0, 1, tag("AccessMode", "WO")) +
              held("Zero", "") + held("Na", "<pIsAvailable>Zero</pIsAvailable>") +
              held("Ni", "<pIsImplemented>Zero</pIsImplemented>") +
              "<Port Name='Unplugged'/><String Name='Text'><Value>12</Value></String>");
    EXPECT_EQ(t.mode("A"), each.expected) << each.node;
    EXPECT_EQ(t.mode("A"), each.expected) << "asked again: " << each.node;
  }
}

TEST(AccessMode, OfThePortLimitsItsRegisters) {
  TestMap t(reg("IntReg", "R", 0, 1) +
            "<Integer Name='A'><pValue>R</pValue></Integer>"
            "<Port Name=\"Device\"><pIsAvailable>G</pIsAvailable></Port>" +
            held("G", "", 1));
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
  TestMap t("<Integer Name='A'><pValue>R</pValue></Integer>" + reg("IntReg", "R", 0, 1, tag("AccessMode", "RO")));
  EXPECT_EQ(t.mode("A"), RO);
  t.node("R")->ImposeAccessMode(RW);
  EXPECT_EQ(t.mode("A"), RO);
  t.node("R")->ImposeAccessMode(WO);
  EXPECT_EQ(t.mode("A"), NA);
  t.node("R")->ImposeAccessMode(NI);
  EXPECT_EQ(t.mode("A"), NI);
  t.node("R")->ImposeAccessMode(RO);
  EXPECT_EQ(t.mode("A"), RO) << "a later wish replaces the earlier one";
}

TEST(AccessMode, ReadingIsAlwaysCheckedAndWritingWhenVerified) {
  TestMap t(reg("IntReg", "Wo", 0, 1, tag("AccessMode", "WO")) + reg("IntReg", "Ro", 1, 1, tag("AccessMode", "RO")) +
            held("Locked", "<pIsLocked>One</pIsLocked>") + held("One", "", 1) +
            "<IntSwissKnife Name='K'><Formula>1</Formula></IntSwissKnife>");
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
  TestMap t(
      "<Category Name='Root'><pFeature>Some</pFeature></Category>"
      "<Category Name='Some'><pFeature>Off</pFeature><pFeature>Gone</pFeature></Category>"
      "<Category Name='None'><pFeature>Gone</pFeature></Category><Category "
      "Name='Nested'><pFeature>None</pFeature></Category>"
      "<Category Name='Empty'/><Category "
      "Name='Guarded'><pIsImplemented>Zero</pIsImplemented><pFeature>Off</pFeature></Category>"
      "<Category Name='Unreadable'><pIsImplemented>Off</pIsImplemented></Category>"
      "<Category Name='Unmoved'><pIsAvailable>Zero</pIsAvailable><pIsLocked>One</pIsLocked></Category>" +
      held("Off", "<pIsAvailable>Zero</pIsAvailable>") + held("Gone", "<pIsImplemented>Zero</pIsImplemented>") +
      held("Zero", "") + held("One", "", 1));
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
  const std::string nodes =
      held("A", "<pIsLocked>KA</pIsLocked>") + held("B", "<pIsLocked>KB</pIsLocked>") +
      "<IntSwissKnife Name='KA'><pVariable Name='X'>B</pVariable><Formula>X</Formula></IntSwissKnife>"
      "<IntSwissKnife Name='KB'><pVariable Name='X'>A</pVariable><Formula>X</Formula></IntSwissKnife>";
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
}

TEST(AccessMode, NodeGuardedByItself) {
  TestMap t(held("A", "<pIsLocked>A</pIsLocked>", 1) + held("B", "<pIsAvailable>B</pIsAvailable>", 0));
  EXPECT_EQ(t.mode("A"), RO);
  EXPECT_EQ(t.mode("B"), NA);
}

TEST(AccessMode, IsComputedOnceUnlessAnythingUncachedDecides) {
  TestMap t(
      held("Plain", "<pIsLocked>G</pIsLocked>") + held("Fresh", "<pIsLocked>N</pIsLocked>") +
      "<Integer Name='OverFresh'><pValue>Fresh</pValue></Integer>"
      "<IntSwissKnife Name='KnifeOfFresh'><pVariable Name='X'>Fresh</pVariable><Formula>X</Formula></IntSwissKnife>"
      "<Integer Name='Table'><pIndex>N</pIndex><pValueIndexed "
      "Index='0'>Wo</pValueIndexed><ValueDefault>0</ValueDefault></Integer>"
      "<Enumeration Name='E'><EnumEntry Name='X'><Value>0</Value><pIsAvailable>N</pIsAvailable></EnumEntry>"
      "<Value>0</Value></Enumeration>" +
      reg("IntReg", "G", 0, 1) + reg("IntReg", "N", 1, 1, tag("Cachable", "NoCache")) +
      reg("IntReg", "Wo", 2, 1, tag("AccessMode", "WO")) +
      reg("IntReg", "Self", 3, 1, "<Cachable>NoCache</Cachable><pIsLocked>G</pIsLocked>") +
      "<Port Name='Guarded'><pIsAvailable>N</pIsAvailable></Port>"
      "<IntReg Name='Behind'><Address>0</Address><Length>1</Length><pPort>Guarded</pPort></IntReg>");
  for (const char* name : {"Plain", "N", "G", "Self"}) EXPECT_EQ(t.node(name)->IsAccessModeCacheable(), Yes) << name;
  for (const char* name : {"Fresh", "OverFresh", "KnifeOfFresh", "EnumEntry_E_X", "E", "Table", "Behind"}) {
    EXPECT_EQ(t.node(name)->IsAccessModeCacheable(), No) << name;
  }
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

TEST(AccessMode, FailureOfAGuardIsTheDevicesOwn) {
  TestMap t(held("A", "<pIsLocked>G</pIsLocked>") + reg("IntReg", "G", 0, 1));
  t.port.onRead = [](int64_t, int64_t) { throw TIMEOUT_EXCEPTION("no answer from the lock"); };
  EXPECT_EQ(refusal<TimeoutException>([&] { t.mode("A"); }), "no answer from the lock");
  EXPECT_EQ(refusal<TimeoutException>([&] { IsWritable(t.node("A")); }), "no answer from the lock");
  t.port.onRead = nullptr;
  EXPECT_EQ(t.mode("A"), RW) << "nothing was kept";
}

TEST(AccessMode, QueriesCallNobodyBack) {
  TestMap t(held("A", "<pIsLocked>G</pIsLocked>") + reg("IntReg", "G", 0, 1));
  int fired = 0;
  Register(t.node("A"), [&](INode*) { ++fired; });
  Register(t.node("G"), [&](INode*) { ++fired; });
  t.mode("A");
  t.port.poke(0, {1});
  t.integer("G")->GetValue(false, true);
  EXPECT_EQ(t.mode("A"), RO);
  EXPECT_EQ(fired, 0);
}

TEST(AccessMode, RefusalsSayWhatDecided) {
  TestMap t(
      held("ExposureTime", "<pIsLocked>TLParamsLocked</pIsLocked>") + held("TLParamsLocked", "", 1) +
      held("TriggerDelay", "<pIsAvailable>TriggerOn</pIsAvailable>") + held("TriggerOn", "") +
      "<Float Name='Gain'><pValue>GainReg</pValue></Float>" + reg("IntReg", "GainReg", 0, 2, tag("AccessMode", "RO")) +
      "<Port Name='Far'/><IntReg Name='Remote'><Address>0</Address><Length>1</Length><pPort>Far</pPort></IntReg>" +
      held("Chosen", "<ImposedAccessMode>WO</ImposedAccessMode>"));
  EXPECT_EQ(refusal<AccessException>([&] { t.integer("ExposureTime")->SetValue(1); }),
            "ExposureTime: not writable: access mode is RO, locked by 'TLParamsLocked' (value 1)");
  EXPECT_EQ(refusal<AccessException>([&] { t.integer("TriggerDelay")->GetValue(); }),
            "TriggerDelay: not readable: access mode is NA, 'TriggerOn' is 0");
  EXPECT_EQ(refusal<AccessException>([&] { t.real("Gain")->SetValue(1); }),
            "Gain: not writable: access mode is RO, 'GainReg' is RO");
  EXPECT_THAT(refusal<AccessException>([&] { t.integer("Remote")->GetValue(); }), HasSubstr("'Far' is not connected"));
  EXPECT_THAT(refusal<AccessException>([&] { t.integer("Chosen")->GetValue(); }), HasSubstr("ImposedAccessMode is WO"));
  t.node("Gain")->ImposeAccessMode(WO);
  EXPECT_THAT(refusal<AccessException>([&] { t.real("Gain")->GetValue(); }), HasSubstr("WO was imposed"));
}

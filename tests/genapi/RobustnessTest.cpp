// Hostile shapes and ports that do more than move bytes.
#include <stdexcept>

#include "TestMap.h"

using testing::HasSubstr;

namespace {

// N0 .. N(count-1), each reading the next one; the last stands alone.
std::string chain(int count, const std::string& type, const std::string& link, const std::string& more = "",
                  const std::string& last = "Integer") {
  std::string nodes;
  for (int i = 0; i + 1 < count; ++i) {
    const std::string attribute = link == "pVariable" ? " Name='X'" : "";
    nodes += "<" + type + " Name='N" + std::to_string(i) + "'>" + more + "<" + link + attribute + ">N" +
             std::to_string(i + 1) + "</" + link + "></" + type + ">";
  }
  return nodes + "<" + last + " Name='N" + std::to_string(count - 1) + "'>" +
         (last == "Category" ? "" : "<Value>1</Value>") + "</" + last + ">";
}

// Every public question about a value: none may crash, and no other exceptions may come than the engine's.
void askEverything(INode* node) {
  const auto ask = [&](auto&& question) {
    try {
      question();
    } catch (const GenericException&) {
    }
  };
  ask([&] { node->GetAccessMode(); });
  ask([&] { node->GetVisibility(); });
  ask([&] { node->GetCachingMode(); });
  ask([&] { node->IsAccessModeCacheable(); });
  ask([&] { node->InvalidateNode(); });
  for (const ELinkType type : {ctParentNodes, ctReadingChildren, ctWritingChildren, ctInvalidatingChildren,
                               ctDependingNodes, ctTerminalNodes}) {
    NodeList_t list;
    ask([&] { node->GetChildren(list, type); });
  }
  gcstring_vector names;
  ask([&] { node->GetPropertyNames(names); });
  if (auto* value = dynamic_cast<IValue*>(node)) {
    ask([&] { value->ToString(); });
    ask([&] { value->ToString(true, true); });
    ask([&] { value->FromString("1"); });
    ask([&] { value->FromString("1", false); });
  }
  const auto askNumber = [&](auto* number) {
    ask([&] { number->GetMin(); });
    ask([&] { number->GetMax(); });
    ask([&] { number->GetInc(); });
    ask([&] { number->GetIncMode(); });
    ask([&] { number->GetListOfValidValues(); });
    ask([&] { number->GetUnit(); });
    ask([&] { number->GetRepresentation(); });
  };
  if (auto* integer = dynamic_cast<IInteger*>(node)) askNumber(integer);
  if (auto* real = dynamic_cast<IFloat*>(node)) {
    askNumber(real);
    ask([&] { real->HasInc(); });
    ask([&] { real->GetDisplayNotation(); });
    ask([&] { real->GetDisplayPrecision(); });
  }
  if (auto* bytes = dynamic_cast<IRegister*>(node)) {
    ask([&] { bytes->GetAddress(); });
    ask([&] { bytes->GetLength(); });
  }
  if (auto* text = dynamic_cast<IString*>(node)) ask([&] { text->GetMaxLength(); });
  if (auto* command = dynamic_cast<ICommand*>(node)) {
    ask([&] { command->Execute(); });
    ask([&] { command->IsDone(); });
  }
}

}  // namespace

TEST(Robustness, DeepChainsAreRefusedWithoutACrash) {
  constexpr int kDeep = 20000;
  const std::string both = "<FormulaTo>FROM</FormulaTo><FormulaFrom>TO</FormulaFrom>";
  const std::string value = "<Value>0</Value>";
  const std::pair<std::string, std::string> chains[] = {
      {"Integer", chain(kDeep, "Integer", "pValue")},
      {"Float", chain(kDeep, "Float", "pValue")},
      {"Boolean", chain(kDeep, "Boolean", "pValue")},
      {"Converter", chain(kDeep, "Converter", "pValue", both + "<IsLinear>Yes</IsLinear>")},
      {"IntConverter", chain(kDeep, "IntConverter", "pValue", both)},
      {"String", chain(kDeep, "String", "pValue", "", "String")},
      {"pMax", chain(kDeep, "Integer", "pMax", value)},
      {"pInc", chain(kDeep, "Float", "pInc", value)},
      {"pIsLocked", chain(kDeep, "Integer", "pIsLocked", value)},
      {"knives", chain(kDeep, "IntSwissKnife", "pVariable", "<Formula>1</Formula>")},
      {"categories", chain(kDeep, "Category", "pFeature", "", "Category")},
      {"invalidators", chain(kDeep, "Integer", "pInvalidator", value)},
      {"selectors", chain(kDeep, "Integer", "pSelected", value)},
      {"tables",
       chain(kDeep, "Integer", "pValueDefault", "<pIndex>I</pIndex><ValueIndexed Index='1'>1</ValueIndexed>") +
           "<Integer Name='I'><Value>0</Value></Integer>"},
  };
  for (const auto& [what, nodes] : chains) {
    SCOPED_TRACE(what);
    TestMap t(nodes);
    askEverything(t.node("N0"));
    askEverything(t.node("N" + std::to_string(kDeep - 100)));
    // The map is as good as before: what lies within reach works.
    EXPECT_EQ(t.mode("N" + std::to_string(kDeep - 1)), what == "categories" ? RO : RW);
    if (what != "Integer") continue;
    EXPECT_THAT(refusal<LogicalErrorException>([&] { t.integer("N0")->GetValue(); }),
                HasSubstr("depend on each other"));
    EXPECT_THROW(t.integer("N0")->SetValue(2, false), LogicalErrorException);
    for (const int reachable : {1, 400}) EXPECT_EQ(t.integer("N" + std::to_string(kDeep - reachable))->GetValue(), 1);
  }
}

TEST(Robustness, NodesOverDefectiveOnesAnswerOrRefuse) {
  const std::string both = "<FormulaTo>FROM</FormulaTo><FormulaFrom>TO</FormulaFrom>";
  const std::string defective[] = {"<IntReg Name='Bad'><Address>0</Address><Length>4</Length></IntReg>",
                                   "<IntSwissKnife Name='Bad'/>",
                                   "<Converter Name='Bad'>" + both + "</Converter>",
                                   "<IntConverter Name='Bad'><pValue>Good</pValue></IntConverter>",
                                   "<Integer Name='Bad'/>",
                                   "<Integer Name='Bad'><pIndex>Good</pIndex></Integer>",
                                   "<Boolean Name='Bad'/>",
                                   "<Enumeration Name='Bad'/>"};
  for (const std::string& bad : defective) {
    TestMap t("<Integer Name='Good'><Value>0</Value></Integer>" + bad +
              "<IntReg Name='R'><pAddress>Bad</pAddress><pIndex pOffset='Bad'>Good</pIndex><pLength>Bad</pLength>"
              "<pPort>Device</pPort></IntReg><Integer Name='I'><pValue>Bad</pValue></Integer>"
              "<Float Name='F'><pValue>Bad</pValue></Float><Converter Name='C'>" +
              both + "<pValue>Bad</pValue></Converter><IntConverter Name='D'>" + both +
              "<pValue>Bad</pValue></IntConverter><SwissKnife Name='K'><pVariable Name='V.Max'>Bad</pVariable>"
              "<Formula>V.Max</Formula></SwissKnife><Integer Name='T'><pIndex>Bad</pIndex>"
              "<ValueIndexed Index='0'>1</ValueIndexed><ValueDefault>2</ValueDefault></Integer>"
              "<Float Name='L'><Value>0</Value><pMin>Bad</pMin><pInc>Bad</pInc></Float>"
              "<Command Name='X'><pValue>Bad</pValue><pCommandValue>Bad</pCommandValue></Command>");
    NodeList_t nodes;
    t.map->GetNodes(nodes);
    for (INode* node : nodes) askEverything(node);
    EXPECT_THROW(t.bytes("R")->GetLength(), GenericException) << bad;
    EXPECT_THROW(t.integer("T")->GetValue(), AccessException) << bad;
  }
}

TEST(Robustness, ValuesThatReadEachOtherEnd) {
  TestMap t(
      "<IntSwissKnife Name='A'><pVariable Name='X'>B</pVariable><Formula>X + 1</Formula></IntSwissKnife>"
      "<IntSwissKnife Name='B'><pVariable Name='X'>A</pVariable><Formula>X + 1</Formula></IntSwissKnife>"
      "<IntReg "
      "Name='R'><pAddress>R</pAddress><Length>1</Length><AccessMode>RW</AccessMode><pPort>Device</pPort></IntReg>"
      "<IntReg "
      "Name='L'><Address>0</Address><pLength>L</pLength><AccessMode>RW</AccessMode><pPort>Device</pPort></IntReg>",
      0);
  for (const char* name : {"A", "B", "R", "L"}) {
    EXPECT_THROW(t.integer(name)->GetValue(), LogicalErrorException) << name;
    askEverything(t.node(name));
  }
}

TEST(Robustness, PortMayReadOtherNodesWhileItIsRead) {
  TestMap t(reg("IntReg", "R", 0, 1) + "<Integer Name='A'><pValue>R</pValue></Integer>" + reg("IntReg", "Key", 1, 1) +
            "<Integer Name='OverKey'><pValue>Key</pValue></Integer>");
  t.port.onRead = [&](int64_t address, int64_t) {
    if (address == 0) t.port.memory[0] = static_cast<uint8_t>(t.integer("OverKey")->GetValue() + 1);
  };
  t.port.poke(1, {40});
  EXPECT_EQ(t.integer("A")->GetValue(), 41);
  EXPECT_EQ(t.integer("A")->GetValue(), 41);
  EXPECT_EQ(t.port.counts(), "2r0w");
  EXPECT_EQ(t.integer("OverKey")->GetValue(), 40);
}

TEST(Robustness, WhatThePortChangesWhileItIsReadIsNotOverlooked) {
  TestMap t(reg("IntReg", "R", 0, 4) + "<Integer Name='A'><pValue>R</pValue></Integer>" + reg("IntReg", "Part", 0, 1) +
            "<IntSwissKnife Name='K'><pVariable Name='X'>A</pVariable><Formula>X</Formula></IntSwissKnife>");
  // The bytes of R are taken before the port writes a part of them through the map.
  class Late : public BytePort {
   public:
    void Read(void* buffer, int64_t address, int64_t length) override {
      BytePort::Read(buffer, address, length);
      if (onceRead) std::exchange(onceRead, nullptr)();
    }
    std::function<void()> onceRead;
  } late;
  t.map->Connect(&late);
  late.onceRead = [&] { t.integer("Part")->SetValue(9); };
  EXPECT_EQ(t.integer("K")->GetValue(), 0);
  EXPECT_EQ(t.integer("K")->GetValue(), 9);
  EXPECT_EQ(t.integer("A")->GetValue(), 9);
  EXPECT_EQ(t.integer("R")->GetValue(), 9);
  t.node("R")->InvalidateNode();
  late.onceRead = [&] { t.node("A")->InvalidateNode(); };
  EXPECT_EQ(t.integer("K")->GetValue(), 9);
  late.poke(0, {3});
  EXPECT_EQ(t.integer("K")->GetValue(), 3) << "invalidated while it was computed";
  late.onceRead = [&] { t.map->Connect(&t.port); };
  t.node("R")->InvalidateNode();
  t.port.poke(0, {77});
  t.integer("K")->GetValue();
  EXPECT_EQ(t.integer("K")->GetValue(), 77) << "another device was connected meanwhile";
}

TEST(Robustness, PortMayUseTheNodesThatAreBeingWritten) {
  TestMap t(reg("IntReg", "R", 0, 1) + "<Integer Name='A'><pValue>R</pValue></Integer>" + reg("IntReg", "Log", 1, 1));
  int fired = 0;
  Register(t.node("A"), [&](INode*) { ++fired; });
  int depth = 0;
  t.port.onWrite = [&](int64_t address, int64_t) {
    if (address != 0 || depth) return;
    ++depth;
    EXPECT_EQ(t.integer("A")->GetValue(), 0) << "not written yet";
    t.integer("Log")->SetValue(1);
    EXPECT_EQ(t.mode("A"), RW);
  };
  t.integer("A")->SetValue(5);
  EXPECT_EQ(t.integer("A")->GetValue(), 5);
  EXPECT_EQ(t.integer("R")->GetValue(), 5);
  EXPECT_EQ(fired, 1) << "one operation, one call";
  t.port.onWrite = [&](int64_t address, int64_t) {
    if (address == 0 && depth-- > 0) t.integer("A")->SetValue(8);
  };
  t.integer("A")->SetValue(6);
  EXPECT_EQ(t.integer("A")->GetValue(), 6) << "the outer write comes last";
}

TEST(Robustness, PortMayEndCallbacksWhileItIsUsed) {
  TestMap t(reg("IntReg", "R", 0, 1));
  int fired = 0;
  CallbackHandleType handle = Register(t.node("R"), [&](INode*) { ++fired; });
  t.port.onWrite = [&](int64_t, int64_t) { EXPECT_TRUE(t.node("R")->DeregisterCallback(handle)); };
  t.integer("R")->SetValue(1);
  EXPECT_EQ(fired, 0);
}

TEST(Robustness, RetiredPlacesDuringAReadAreNotMissed) {
  // While R is read, the port walks so many other places through the map that R's own is retired.
  TestMap t(reg("IntReg", "R", 0, 2) +
            "<IntReg Name='T'><Address>2</Address><pIndex Offset='2'>I</pIndex><Length>2</Length>"
            "<pPort>Device</pPort></IntReg><Integer Name='I'><Value>0</Value></Integer>");
  t.port.memory.resize(2 * 66010);
  bool walked = false;
  t.port.onRead = [&](int64_t address, int64_t) {
    if (address != 0 || std::exchange(walked, true)) return;
    for (int64_t index = 0; index < 66000; ++index) {
      t.integer("I")->SetValue(index);
      t.integer("T")->GetValue();
    }
  };
  t.port.poke(0, {5});
  EXPECT_EQ(t.integer("R")->GetValue(), 5);
  EXPECT_EQ(t.integer("R")->GetValue(), 5);
}

// Hostile shapes and ports that do more than move bytes.
#include <stdexcept>

#include "TestMap.h"

using testing::HasSubstr;

namespace {

// N0 .. N(count-1), each reading the next one; the last stands alone.
std::string chain(int count, const std::string& type, const std::string& link, const std::string& more,
                  const std::string& last) {
  std::string nodes;
  for (int i = 0; i + 1 < count; ++i) {
    std::string one = more;
    one = "<" + type + " Name='N" + std::to_string(i) + "'>" + one + "<" + link + ">N" + std::to_string(i + 1) + "</" +
          link + "></" + type + ">";
    nodes += one;
  }
  return nodes + last;
}

std::string lastOf(int count, const std::string& text) {
  return "<" + text.substr(0, text.find(' ')) + " Name='N" + std::to_string(count - 1) + "'>" +
         text.substr(text.find(' ') + 1) + "</" + text.substr(0, text.find(' ')) + ">";
}

// Every public question about a value: none may crash; LogicalErrorException is the only failure expected.
void askEverything(INode* node) {
  const auto ask = [&](auto&& question) {
    try {
      question();
    } catch (const LogicalErrorException&) {
    } catch (const AccessException&) {
    } catch (const RuntimeException&) {
    } catch (const OutOfRangeException&) {
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
  if (auto* integer = dynamic_cast<IInteger*>(node)) {
    ask([&] { integer->GetMin(); });
    ask([&] { integer->GetMax(); });
    ask([&] { integer->GetInc(); });
    ask([&] { integer->GetIncMode(); });
    ask([&] { integer->GetListOfValidValues(); });
    ask([&] { integer->GetUnit(); });
    ask([&] { integer->GetRepresentation(); });
  }
  if (auto* real = dynamic_cast<IFloat*>(node)) {
    ask([&] { real->GetMin(); });
    ask([&] { real->HasInc(); });
    ask([&] { real->GetInc(); });
    ask([&] { real->GetIncMode(); });
    ask([&] { real->GetListOfValidValues(); });
    ask([&] { real->GetUnit(); });
    ask([&] { real->GetRepresentation(); });
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
  const std::pair<std::string, std::string> chains[] = {
      {"Integer", chain(kDeep, "Integer", "pValue", "", lastOf(kDeep, "Integer <Value>1</Value>"))},
      {"Float", chain(kDeep, "Float", "pValue", "", lastOf(kDeep, "Integer <Value>1</Value>"))},
      {"Boolean", chain(kDeep, "Boolean", "pValue", "", lastOf(kDeep, "Integer <Value>1</Value>"))},
      {"Converter", chain(kDeep, "Converter", "pValue", both + "<IsLinear>Yes</IsLinear>",
                          lastOf(kDeep, "Integer <Value>1</Value>"))},
      {"IntConverter", chain(kDeep, "IntConverter", "pValue", both, lastOf(kDeep, "Integer <Value>1</Value>"))},
      {"String", chain(kDeep, "String", "pValue", "", lastOf(kDeep, "String <Value>1</Value>"))},
      {"pMax", chain(kDeep, "Integer", "pMax", "<Value>0</Value>", lastOf(kDeep, "Integer <Value>1</Value>"))},
      {"pInc", chain(kDeep, "Float", "pInc", "<Value>0</Value>", lastOf(kDeep, "Integer <Value>1</Value>"))},
      {"pIsLocked",
       chain(kDeep, "Integer", "pIsLocked", "<Value>0</Value>", lastOf(kDeep, "Integer <Value>1</Value>"))},
      {"knives",
       chain(kDeep, "IntSwissKnife", "pVariable", "<Formula>1</Formula>", lastOf(kDeep, "Integer <Value>1</Value>"))},
      {"categories", chain(kDeep, "Category", "pFeature", "", lastOf(kDeep, "Category "))},
      {"invalidators",
       chain(kDeep, "Integer", "pInvalidator", "<Value>0</Value>", lastOf(kDeep, "Integer <Value>1</Value>"))},
      {"selectors",
       chain(kDeep, "Integer", "pSelected", "<Value>0</Value>", lastOf(kDeep, "Integer <Value>1</Value>"))},
      {"tables", chain(kDeep, "Integer", "pValueDefault", "<pIndex>I</pIndex><ValueIndexed Index='1'>1</ValueIndexed>",
                       lastOf(kDeep, "Integer <Value>1</Value>")) +
                     "<Integer Name='I'><Value>0</Value></Integer>"},
  };
  for (const auto& [what, nodes] : chains) {
    std::string named = nodes;
    if (what == "knives") {
      for (size_t at = 0; (at = named.find("<pVariable>", at)) != std::string::npos;)
        named.replace(at, 11, "<pVariable Name='X'>");
    }
    SCOPED_TRACE(what);
    TestMap t(named);
    askEverything(t.node("N0"));
    askEverything(t.node("N" + std::to_string(kDeep - 100)));
    // The map is as good as before: what lies within reach works.
    EXPECT_EQ(t.mode("N" + std::to_string(kDeep - 1)), what == "categories" ? RO : RW);
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

TEST(Robustness, DepthIsRefusedByName) {
  TestMap t(chain(10000, "Integer", "pValue", "", lastOf(10000, "Integer <Value>1</Value>")));
  EXPECT_THAT(refusal<LogicalErrorException>([&] { t.integer("N0")->GetValue(); }), HasSubstr("depend on each other"));
  EXPECT_THROW(t.integer("N0")->SetValue(2, false), LogicalErrorException);
  EXPECT_EQ(t.integer("N9999")->GetValue(), 1);
  EXPECT_EQ(t.integer("N9600")->GetValue(), 1);
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

TEST(Robustness, ExceptionsOfThePortPassUnchanged) {
  struct Foreign {
    int code;
  };
  TestMap t(
      "<Float Name='Top'><pValue>C</pValue></Float><Converter Name='C'><pVariable Name='V'>R2</pVariable>"
      "<FormulaTo>FROM</FormulaTo><FormulaFrom>TO + V</FormulaFrom><pValue>R</pValue></Converter>" +
      reg("IntReg", "R", 0, 1) + reg("IntReg", "R2", 1, 1) +
      "<Boolean Name='B'><pValue>R</pValue></Boolean>"
      "<Enumeration Name='E'><EnumEntry Name='X'><Value>0</Value></EnumEntry><pValue>R</pValue></Enumeration>"
      "<Integer Name='L'><Value>0</Value><pMax>R</pMax></Integer>" +
      reg("StringReg", "S", 2, 4));
  t.port.onRead = [](int64_t, int64_t) { throw Foreign{42}; };
  for (const char* name : {"Top", "C", "R", "B", "E", "S"}) {
    try {
      t.value(name)->ToString();
      ADD_FAILURE() << name;
    } catch (const Foreign& foreign) {
      EXPECT_EQ(foreign.code, 42) << name;
    }
  }
  EXPECT_THROW(t.integer("L")->SetValue(1), Foreign);
  t.port.onRead = [](int64_t, int64_t) { throw std::runtime_error("cable"); };
  EXPECT_EQ(refusal<std::runtime_error>([&] { t.real("Top")->GetValue(); }), "cable");
  t.port.onRead = [](int64_t, int64_t) { throw OUT_OF_RANGE_EXCEPTION("the port's own words"); };
  EXPECT_EQ(refusal<OutOfRangeException>([&] { t.real("Top")->GetValue(); }), "the port's own words");
  EXPECT_EQ(refusal<OutOfRangeException>([&] { t.real("Top")->GetMax(); }), "the port's own words")
      << "also where a limit is computed from a variable";
  t.port.onRead = nullptr;
  t.port.onWrite = [](int64_t, int64_t) { throw Foreign{7}; };
  EXPECT_THROW(t.real("Top")->SetValue(1), Foreign);
  EXPECT_THROW(t.boolean("B")->SetValue(true), Foreign);
  EXPECT_THROW(t.enumeration("E")->SetIntValue(0), Foreign);
  t.port.onWrite = nullptr;
  t.real("Top")->SetValue(3);
  EXPECT_EQ(t.real("Top")->GetValue(), 3.0);
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

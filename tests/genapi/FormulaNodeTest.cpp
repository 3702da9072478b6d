// Formulas as nodes use them: what their variables stand for, and how defects and failures are told.
#include <optional>

#include "NodeNames.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

// Whatever a formula may look at.
const std::string kVariables = R"(
  <Integer Name="Width"><Visibility>Guru</Visibility><ImposedAccessMode>RO</ImposedAccessMode><Value>48</Value>
    <Min>16</Min><Max>1024</Max><Inc>8</Inc></Integer>
  <Float Name="Gain"><Value>2.5</Value><Min>-1.5</Min><Max>7.5</Max><Inc>0.5</Inc></Float>
  <Boolean Name="Flag"><Value>true</Value><OnValue>77</OnValue><OffValue>3</OffValue></Boolean>
  <Enumeration Name="Mode">
    <EnumEntry Name="Slow"><Value>5</Value><NumericValue>0.5</NumericValue></EnumEntry>
    <EnumEntry Name="Fast"><Value>9</Value><NumericValue>1.5</NumericValue><Symbolic>Quick</Symbolic></EnumEntry>
    <Value>9</Value></Enumeration>)";

std::string formulaNode(const std::string& type, const std::string& variables, const std::string& formula) {
  return "<" + type + " Name=\"X\">" + variables + tag("Formula", formula) + "</" + type + ">" + kVariables;
}

std::string variable(const std::string& name, const std::string& node) {
  return "<pVariable Name=\"" + name + "\">" + node + "</pVariable>";
}

TEST(FormulaNodes, TakeWhatTheirVariablesStandFor) {
  struct Case {
    const char* variable;
    double value;
    std::optional<int64_t> whole = {};  // in an integer formula, where that is another number
  };
  const std::pair<const char*, std::vector<Case>> cases[] = {
      {"Width",
       {{"V", 48},
        {"V.Value", 48},
        {"V.Min", 16},
        {"V.Max", 1024},
        {"V.Inc", 8},
        {"V.AccessMode", RO},
        {"V.Visibility", Guru},
        {"V.CachingMode", WriteThrough}}},
      {"Gain",
       {{"V", 2.5, 3}, {"V.Min", -1.5, -1}, {"V.Max", 7.5, 7}, {"V.Inc", 0.5, 1}, {"V.CachingMode", WriteAround}}},
      {"Flag", {{"V", 1}}},
      {"Mode", {{"V", 9}, {"V.Entry.Slow", 5}, {"V.Entry.Quick", 9}}}};
  for (const auto& [node, variables] : cases) {
    for (const Case& each : variables) {
      SCOPED_TRACE(std::string(each.variable) + " of " + node);
      const std::string declared = variable(each.variable, node);
      TestMap real(formulaNode("SwissKnife", declared, each.variable));
      EXPECT_EQ(real.real("X")->GetValue(), each.value);
      TestMap integer(formulaNode("IntSwissKnife", declared, each.variable));
      EXPECT_EQ(integer.integer("X")->GetValue(), each.whole.value_or(static_cast<int64_t>(each.value)));
    }
  }
}

TEST(FormulaNodes, RefuseEntriesThatDoNotExistWhenTheyAreEvaluated) {
  for (const auto& [name, node] : {std::pair{"V.Entry.Fast", "Mode"}, std::pair{"V.Entry.Slow", "Width"}}) {
    TestMap map(formulaNode("IntSwissKnife", variable(name, node), name));
    EXPECT_TRUE(map.map->ParseSwissKnifes()) << name << " is no defect of the formula";
    EXPECT_THAT(refusal<RuntimeException>([&, m = &map] { m->integer("X")->GetValue(); }),
                testing::AllOf(HasSubstr(node), HasSubstr("entry")));
  }
}

TEST(FormulaNodes, UseConstantsAndExpressionsOfExpressions) {
  TestMap sound(formulaNode("IntSwissKnife", variable("W", "Width") + R"(<Constant Name="K">0x10</Constant>
                      <Expression Name="Sum">W + K</Expression><Expression Name="Twice">2 * Sum</Expression>
                      <Expression Name="Unused">W * W</Expression>)",
                            "Twice"));
  EXPECT_EQ(sound.integer("X")->GetValue(), 2 * (48 + 16));
}

TEST(FormulaNodes, TakeNamesLiterallySinceSchema11) {
  const std::string nodes = formulaNode("IntSwissKnife", variable("Wide", "Width"), "WIDE + wide");
  TestMap folded(nodes, 0);
  EXPECT_EQ(folded.integer("X")->GetValue(), 96);
  TestMap literal(nodes, 1);
  EXPECT_THROW(literal.integer("X")->GetValue(), LogicalErrorException);
  for (const int minor : {0, 1}) {
    TestMap suffix(formulaNode("IntSwissKnife", variable("w.MAX", "Width"), "w.MAX"), minor);
    EXPECT_EQ(suffix.map->ParseSwissKnifes(), minor == 0) << "a suffix is a part of the name";
    if (minor == 0) {
      EXPECT_EQ(suffix.integer("X")->GetValue(), 1024);
    }
  }
}

TEST(FormulaNodes, AreReadOnlyNumbers) {
  TestMap map(R"(<IntSwissKnife Name="Int"><Formula>7</Formula><Unit>px</Unit><Representation>HexNumber</Representation>
      </IntSwissKnife>
    <SwissKnife Name="Real"><Formula>7.25</Formula><Unit>dB</Unit><DisplayNotation>Fixed</DisplayNotation>
      <DisplayPrecision>1</DisplayPrecision></SwissKnife>)");
  EXPECT_EQ(map.mode("Real"), RO);
  for (const bool verify : {true, false}) {
    EXPECT_THROW(map.real("Real")->SetValue(7, verify), AccessException);
    EXPECT_THROW(map.value("Real")->FromString("7", verify), AccessException);
  }
  EXPECT_STREQ(map.integer("Int")->GetUnit(), "px");
  EXPECT_STREQ(map.value("Int")->ToString(), "0x7");
  EXPECT_EQ(map.integer("Int")->GetIncMode(), fixedIncrement);
  EXPECT_EQ(map.real("Real")->GetIncMode(), noIncrement);
  EXPECT_THROW(map.real("Real")->GetInc(), RuntimeException);
  EXPECT_STREQ(map.real("Real")->GetUnit(), "dB");
  EXPECT_STREQ(map.value("Real")->ToString(), "7.2");
}

TEST(FormulaNodes, ReadVariablesWithoutCheckingTheirRange) {
  TestMap map(
      knife("X", "A") + over("A", "Raw", "<Max>5</Max>") + reg("IntReg", "Raw", 0, 4) +
      "<IntSwissKnife Name='Limit'><pVariable Name='A.Max'>A</pVariable><Formula>A.Max</Formula></IntSwissKnife>");
  map.port.poke(0, {200});
  EXPECT_THROW(map.integer("A")->GetValue(true), OutOfRangeException);
  EXPECT_EQ(map.integer("X")->GetValue(true), 200);
  EXPECT_EQ(map.integer("Limit")->GetValue(), 5);
  map.integer("A")->ImposeMax(4);
  EXPECT_EQ(map.integer("Limit")->GetValue(), 4);
}

TEST(FormulaNodes, WithDefectsAreUsableOtherwise) {
  TestMap map(R"(
    <SwissKnife Name="Bad"><ToolTip>still here</ToolTip><pVariable Name="A">Base</pVariable><Formula>A +</Formula>
      <Unit>mm</Unit></SwissKnife>
    <IntSwissKnife Name="Empty"><Formula>  </Formula></IntSwissKnife>
    <Converter Name="HalfBad"><FormulaTo>FROM * TO</FormulaTo><FormulaFrom>TO</FormulaFrom><pValue>Base</pValue>
    </Converter>
    <IntConverter Name="BothBad"><FormulaTo>TO</FormulaTo><FormulaFrom>SIN(TO)</FormulaFrom><pValue>Base</pValue>
    </IntConverter>
    <IntSwissKnife Name="Suffix"><pVariable Name="B.Colour">Base</pVariable><Formula>1</Formula></IntSwissKnife>
    <IntSwissKnife Name="Good"><Formula>1</Formula></IntSwissKnife>
    <IntReg Name="Raw"><IntSwissKnife Name="Knife"><Formula>1 2</Formula></IntSwissKnife><Length>4</Length>
      <pPort>Device</pPort></IntReg>
    <Integer Name="Base"><Value>4</Value></Integer>)");
  const auto* findings = dynamic_cast<IFindings*>(map.map);
  std::vector<Finding> before;
  findings->GetFindings(before);
  EXPECT_TRUE(before.empty()) << "formulas are compiled when they are used";

  EXPECT_EQ(map.mode("Bad"), RO);
  EXPECT_STREQ(map.node("Bad")->GetToolTip(), "still here");
  EXPECT_STREQ(map.real("Bad")->GetUnit(), "mm");
  for (const char* each : {"Bad", "Empty", "BothBad", "Suffix", "Raw", "Bad", "Raw"})
    EXPECT_THROW(map.value(each)->ToString(), LogicalErrorException) << each << ", each time";
  EXPECT_EQ(map.real("HalfBad")->GetValue(), 4);
  EXPECT_THROW(map.real("HalfBad")->SetValue(1), LogicalErrorException) << "TO means nothing on the way to the device";
  EXPECT_EQ(map.integer("Base")->GetValue(), 4);

  gcstring_vector errors;
  EXPECT_FALSE(map.map->ParseSwissKnifes(&errors));
  EXPECT_FALSE(map.map->ParseSwissKnifes());
  EXPECT_THAT(namesOf(errors), ElementsAre(HasSubstr("SwissKnife 'Bad': "), HasSubstr("IntSwissKnife 'Empty': "),
                                           HasSubstr("Converter 'HalfBad': "), HasSubstr("IntConverter 'BothBad': "),
                                           HasSubstr("IntConverter 'BothBad': "), HasSubstr("IntSwissKnife 'Suffix': "),
                                           HasSubstr("IntSwissKnife '_Raw_Knife': ")));
  EXPECT_EQ(refusal<LogicalErrorException>([&] { map.real("Bad")->GetValue(); }), errors[0].c_str());

  std::vector<Finding> after;
  findings->GetFindings(after);
  ASSERT_EQ(after.size(), errors.size());
  EXPECT_EQ(after[0].Severity, svDefect);
  EXPECT_STREQ(after[0].Node, "Bad");
  EXPECT_NE(after[0].Line, 0U);

  TestMap sound(formulaNode("SwissKnife", "", "1"));
  gcstring_vector none;
  EXPECT_TRUE(sound.map->ParseSwissKnifes(&none));
  EXPECT_TRUE(none.empty());
}

}  // namespace

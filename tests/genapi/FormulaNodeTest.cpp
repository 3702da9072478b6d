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

std::string knife(const std::string& type, const std::string& variables, const std::string& formula) {
  return "<" + type + " Name=\"X\">" + variables + tag("Formula", formula) + "</" + type + ">" + kVariables;
}

std::string variable(const std::string& name, const std::string& node) {
  return "<pVariable Name=\"" + name + "\">" + node + "</pVariable>";
}

TEST(FormulaNodes, TakeWhatTheirVariablesStandFor) {
  struct {
    const char* variable;
    const char* node;
    double value;
    std::optional<int64_t> whole = {};  // in an integer formula, where that is another number
  } const cases[] = {
      {"V", "Width", 48},
      {"V.Value", "Width", 48},
      {"V.Min", "Width", 16},
      {"V.Max", "Width", 1024},
      {"V.Inc", "Width", 8},
      {"V.AccessMode", "Width", RO},
      {"V.Visibility", "Width", Guru},
      {"V.CachingMode", "Width", WriteThrough},
      {"V", "Gain", 2.5, 3},
      {"V.Min", "Gain", -1.5, -1},
      {"V.Max", "Gain", 7.5, 7},
      {"V.Inc", "Gain", 0.5, 1},
      {"V.CachingMode", "Gain", WriteAround},
      {"V", "Flag", 1},
      {"V", "Mode", 9},
      {"V.Entry.Slow", "Mode", 5},
      {"V.Entry.Quick", "Mode", 9},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(std::string(each.variable) + " of " + each.node);
    const std::string declared = variable(each.variable, each.node);
    TestMap real(knife("SwissKnife", declared, each.variable));
    EXPECT_EQ(real.real("X")->GetValue(), each.value);
    TestMap integer(knife("IntSwissKnife", declared, each.variable));
    EXPECT_EQ(integer.integer("X")->GetValue(), each.whole.value_or(static_cast<int64_t>(each.value)));
  }
}

TEST(FormulaNodes, RefuseEntriesThatDoNotExistWhenTheyAreEvaluated) {
  for (const auto& [name, node] : {std::pair{"V.Entry.Fast", "Mode"}, std::pair{"V.Entry.Slow", "Width"}}) {
    TestMap map(knife("IntSwissKnife", variable(name, node), name));
    EXPECT_TRUE(map.map->ParseSwissKnifes()) << name << " is no defect of the formula";
    EXPECT_THAT(refusal<RuntimeException>([&, m = &map] { m->integer("X")->GetValue(); }),
                testing::AllOf(HasSubstr(node), HasSubstr("entry")));
  }
}

TEST(FormulaNodes, UseConstantsAndExpressionsOfExpressions) {
  TestMap sound(knife("IntSwissKnife", variable("W", "Width") + R"(<Constant Name="K">0x10</Constant>
                      <Expression Name="Sum">W + K</Expression><Expression Name="Twice">2 * Sum</Expression>
                      <Expression Name="Unused">W * W</Expression>)",
                      "Twice"));
  EXPECT_EQ(sound.integer("X")->GetValue(), 2 * (48 + 16));
  TestMap cyclic(
      knife("IntSwissKnife", R"(<Expression Name="A">B</Expression><Expression Name="B">A</Expression>)", "A"));
  EXPECT_THROW(cyclic.integer("X")->GetValue(), LogicalErrorException);
  EXPECT_FALSE(cyclic.map->ParseSwissKnifes());
  TestMap shadowed(knife("SwissKnife", variable("E", "Gain") + variable("ROUND", "Width"), "E + ROUND + ROUND(1.4)"));
  EXPECT_EQ(shadowed.real("X")->GetValue(), 51.5) << "declared names win, functions stand before brackets";
}

TEST(FormulaNodes, TakeNamesLiterallySinceSchema11) {
  const std::string nodes = knife("IntSwissKnife", variable("Wide", "Width"), "WIDE + wide");
  TestMap folded(nodes, 0);
  EXPECT_EQ(folded.integer("X")->GetValue(), 96);
  TestMap literal(nodes, 1);
  EXPECT_THROW(literal.integer("X")->GetValue(), LogicalErrorException);
  for (const int minor : {0, 1}) {
    TestMap suffix(knife("IntSwissKnife", variable("w.MAX", "Width"), "w.MAX"), minor);
    EXPECT_EQ(suffix.map->ParseSwissKnifes(), minor == 0) << "a suffix is a part of the name";
    if (minor == 0) {
      EXPECT_EQ(suffix.integer("X")->GetValue(), 1024);
    }
  }
}

TEST(FormulaNodes, AreReadOnlyNumbersWithTheRangeOfTheirType) {
  TestMap map(R"(<IntSwissKnife Name="Int"><Formula>7</Formula><Unit>px</Unit><Representation>HexNumber</Representation>
      </IntSwissKnife>
    <SwissKnife Name="Real"><Formula>7.25</Formula><Unit>dB</Unit><DisplayNotation>Fixed</DisplayNotation>
      <DisplayPrecision>1</DisplayPrecision></SwissKnife>)");
  EXPECT_EQ(map.mode("Int"), RO);
  EXPECT_EQ(map.mode("Real"), RO);
  EXPECT_THROW(map.integer("Int")->SetValue(7), AccessException);
  EXPECT_THROW(map.integer("Int")->SetValue(7, false), AccessException);
  EXPECT_THROW(map.value("Int")->FromString("7"), AccessException);
  EXPECT_THROW(map.value("Int")->FromString("x"), AccessException);
  EXPECT_THROW(map.real("Real")->SetValue(7), AccessException);
  EXPECT_THROW(map.value("Real")->FromString("7", false), AccessException);

  EXPECT_EQ(map.integer("Int")->GetMin(), INT64_MIN);
  EXPECT_EQ(map.integer("Int")->GetMax(), INT64_MAX);
  EXPECT_EQ(map.integer("Int")->GetInc(), 1);
  EXPECT_EQ(map.integer("Int")->GetIncMode(), fixedIncrement);
  EXPECT_STREQ(map.integer("Int")->GetUnit(), "px");
  EXPECT_STREQ(map.value("Int")->ToString(), "0x7");
  EXPECT_EQ(map.real("Real")->GetMin(), -std::numeric_limits<double>::max());
  EXPECT_EQ(map.real("Real")->GetMax(), std::numeric_limits<double>::max());
  EXPECT_FALSE(map.real("Real")->HasInc());
  EXPECT_EQ(map.real("Real")->GetIncMode(), noIncrement);
  EXPECT_THROW(map.real("Real")->GetInc(), RuntimeException);
  EXPECT_STREQ(map.real("Real")->GetUnit(), "dB");
  EXPECT_STREQ(map.value("Real")->ToString(), "7.2");
}

TEST(FormulaNodes, HaveTheRightsThatTheirVariablesLeave) {
  TestMap map(R"(
    <IntSwissKnife Name="X"><pVariable Name="A">A</pVariable><pVariable Name="B">B</pVariable><Formula>1</Formula>
      </IntSwissKnife>
    <IntConverter Name="C"><pVariable Name="A">A</pVariable><FormulaTo>FROM</FormulaTo><FormulaFrom>TO</FormulaFrom>
      <pValue>B</pValue></IntConverter>
    <Integer Name="A"><pIsImplemented>There</pIsImplemented><Value>0</Value></Integer>
    <Integer Name="B"><Value>0</Value></Integer>
    <Integer Name="There"><Value>1</Value></Integer>)");
  EXPECT_EQ(map.mode("X"), RO);
  EXPECT_EQ(map.mode("C"), RW);
  map.node("A")->ImposeAccessMode(WO);
  EXPECT_EQ(map.mode("X"), NA) << "also where the formula does not use it";
  EXPECT_EQ(map.mode("C"), NA);
  EXPECT_THROW(map.integer("X")->GetValue(), AccessException);
  map.integer("There")->SetValue(0);
  EXPECT_EQ(map.mode("X"), NI);
  EXPECT_EQ(map.mode("C"), NI);
}

TEST(FormulaNodes, ReadVariablesWithoutCheckingTheirRange) {
  TestMap map(
      "<IntSwissKnife Name=\"X\"><pVariable Name=\"A\">A</pVariable><Formula>A</Formula></IntSwissKnife>"
      "<Integer Name=\"A\"><pValue>Raw</pValue><Max>5</Max></Integer>" +
      reg("IntReg", "Raw", 0, 4));
  map.port.poke(0, {200});
  EXPECT_THROW(map.integer("A")->GetValue(true), OutOfRangeException);
  EXPECT_EQ(map.integer("X")->GetValue(true), 200);
}

TEST(FormulaNodes, TellFailuresWithNodeColumnAndFormula) {
  struct {
    const char* type;
    const char* formula;
    const char* text;
  } const cases[] = {
      {"IntSwissKnife", "A % 0", "IntSwissKnife 'X': division by zero at column 3 of 'A % 0'"},
      {"SwissKnife", " FROM / Z ", "SwissKnife 'X': unknown name 'Z' at column 8 of ' FROM / Z '"},
  };
  for (const auto& each : cases) {
    TestMap map(knife(each.type, variable("A", "Width") + variable("FROM", "Width"), each.formula));
    EXPECT_EQ(refusal<LogicalErrorException>([&] { map.value("X")->ToString(); }), each.text);
  }
  for (const char* each : {"9223372036854775807 + A", "A ** 20", "1 << 64", "1 >> -A", "-A * 9223372036854775807",
                           "(-9223372036854775807 - 1) / -1"}) {
    std::string escaped = each;
    for (size_t at; (at = escaped.find('<')) != std::string::npos;) escaped.replace(at, 1, "&lt;");
    TestMap map(knife("IntSwissKnife", variable("A", "Width"), escaped));
    EXPECT_THROW(map.integer("X")->GetValue(), LogicalErrorException) << each;
  }
  for (const char* each : {"SQRT(-1)", "LN(0)", "1 / (A - 48)", "1e308 * A", "(0-1) ** 0.5", "A % 0"}) {
    TestMap map(knife("SwissKnife", variable("A", "Width"), each));
    EXPECT_THROW(map.real("X")->GetValue(), LogicalErrorException) << each;
  }
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
  for (const char* each : {"Bad", "Empty", "BothBad", "Suffix", "Raw"}) {
    EXPECT_THROW(map.value(each)->ToString(), LogicalErrorException) << each;
    EXPECT_THROW(map.value(each)->ToString(), LogicalErrorException) << each << ", each time";
  }
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

  TestMap sound(knife("SwissKnife", "", "1"));
  gcstring_vector none;
  EXPECT_TRUE(sound.map->ParseSwissKnifes(&none));
  EXPECT_TRUE(none.empty());
}

TEST(FormulaNodes, GoOnlySoDeep) {
  const auto chain = [](int length) {
    std::string nodes = "<Integer Name=\"N0\"><Value>5</Value></Integer>";
    for (int i = 1; i < length; ++i) {
      nodes += "<IntSwissKnife Name=\"N" + std::to_string(i) + "\"><pVariable Name=\"A\">N" + std::to_string(i - 1) +
               "</pVariable><Formula>A</Formula></IntSwissKnife>";
    }
    return nodes;
  };
  TestMap deep(chain(500));
  EXPECT_EQ(deep.integer("N499")->GetValue(), 5);
  TestMap tooDeep(chain(5000));
  EXPECT_THROW(tooDeep.integer("N4999")->GetValue(), LogicalErrorException);
  EXPECT_EQ(tooDeep.integer("N100")->GetValue(), 5);
}

}  // namespace

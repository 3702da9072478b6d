// Knives and converters as values: limits by slope, increments, value sets, variables.
#include <cfloat>
#include <cmath>

#include "TestMap.h"

using testing::ElementsAre;
using testing::HasSubstr;

namespace {

std::string converter(const std::string& type, const std::string& to, const std::string& from,
                      const std::string& more = "") {
  return "<" + type + " Name='C'>" + more + tag("FormulaTo", to) + tag("FormulaFrom", from) + "<pValue>S</pValue></" +
         type + ">";
}

std::string slope(const std::string& word) {
  return tag("Slope", word);
}

}  // namespace

TEST(Converter, MapsBothWays) {
  TestMap t(converter("Converter", "FROM / 0.5", "TO * 0.5") +
            "<Integer Name='S'><Value>3</Value><Min>0</Min><Max>10</Max></Integer>");
  EXPECT_EQ(t.real("C")->GetValue(), 1.5);
  t.real("C")->SetValue(2.6);  // 5.2 moves to the source's grid
  EXPECT_EQ(t.integer("S")->GetValue(), 5);
  EXPECT_EQ(t.real("C")->GetValue(), 2.5);
  EXPECT_EQ(refusal<OutOfRangeException>([&] { t.real("C")->SetValue(5.1); }), "C: value 5.1 must be at most Max = 5");
}

TEST(Converter, LimitsFollowTheSlope) {
  struct Case {
    std::string slope, from;
    double min, max;
  };
  const Case cases[] = {
      {"Increasing", "TO * 2", 2, 20},
      {"Decreasing", "-TO", -10, -1},
      {"Automatic", "-TO", -10, -1},
      {"Automatic", "TO * 2", 2, 20},
      {"Varying", "TO", -DBL_MAX, DBL_MAX},
      {"Increasing", "-TO", -1, -10},                    // the description's own word is believed
      {"Automatic", "1 / (TO - 1)", -DBL_MAX, DBL_MAX},  // one end is a pole
      {"Automatic", "10 / TO", 1, 10},
  };
  for (const Case& each : cases) {
    TestMap t(converter("Converter", "FROM", each.from, slope(each.slope)) +
              "<Float Name='S'><Value>2</Value><Min>1</Min><Max>10</Max></Float>");
    EXPECT_EQ(t.real("C")->GetMin(), each.min) << each.slope << " " << each.from;
    EXPECT_EQ(t.real("C")->GetMax(), each.max) << each.slope << " " << each.from;
  }
}

TEST(Converter, LimitsOfUnlimitedSources) {
  TestMap t(converter("Converter", "FROM", "TO / 2") + "<Float Name='S'><Value>2</Value></Float>");
  EXPECT_EQ(t.real("C")->GetMax(), DBL_MAX / 2);
  TestMap doubled(converter("Converter", "FROM", "TO * 2") + "<Float Name='S'><Value>2</Value></Float>");
  EXPECT_EQ(doubled.real("C")->GetMax(), DBL_MAX);
  EXPECT_EQ(doubled.real("C")->GetMin(), -DBL_MAX);
  TestMap whole(converter("IntConverter", "FROM", "TO * 2") + "<Integer Name='S'><Value>2</Value></Integer>");
  EXPECT_EQ(whole.integer("C")->GetMax(), INT64_MAX) << "overflow saturates";
  EXPECT_EQ(whole.integer("C")->GetMin(), INT64_MIN);
  whole.integer("C")->SetValue(8);
  TestMap same(converter("IntConverter", "FROM", "TO") + "<Integer Name='S'><Value>2</Value></Integer>");
  EXPECT_EQ(same.integer("C")->GetMax(), INT64_MAX);
  TestMap flag(converter("Converter", "FROM", "TO") + "<Boolean Name='S'><Value>true</Value></Boolean>");
  EXPECT_EQ(flag.real("C")->GetMax(), DBL_MAX);
}

TEST(Converter, IntegerFormKeepsAllBits) {
  TestMap t(converter("IntConverter", "FROM - 1", "TO + 1") + reg("IntReg", "S", 0, 8, tag("Sign", "Signed")));
  t.integer("C")->SetValue(9007199254740994);
  EXPECT_EQ(t.integer("S")->GetValue(), 9007199254740993);
  EXPECT_EQ(t.integer("C")->GetValue(), 9007199254740994);
  EXPECT_EQ(t.integer("C")->GetInc(), 1);
  t.integer("S")->SetValue(INT64_MAX);
  EXPECT_THAT(refusal<LogicalErrorException>([&] { t.integer("C")->GetValue(); }), HasSubstr("overflow"));
}

TEST(Converter, IncrementOfLinearOnes) {
  struct Case {
    std::string more;
    std::string source;
    double increment;  // 0: none
  };
  const std::string linear = tag("IsLinear", "Yes"),
                    integer = "<Integer Name='S'><Value>0</Value><Inc>4</Inc></Integer>",
                    plain = "<Float Name='S'><Value>0</Value></Float>";
  for (const Case& each : {Case{linear, integer, 2}, Case{"", integer, 0}, Case{linear + slope("Varying"), integer, 0},
                           Case{linear, plain, 0}, Case{linear + slope("Decreasing"), integer, 2}}) {
    TestMap t(converter("Converter", "FROM", "10 - TO * 0.5", each.more) + each.source);
    const CFloatPtr c = t.real("C");
    EXPECT_EQ(c->HasInc(), each.increment != 0) << each.more << each.source;
    EXPECT_EQ(c->GetIncMode(), each.increment != 0 ? fixedIncrement : noIncrement);
    if (each.increment != 0) {
      EXPECT_EQ(c->GetInc(), each.increment);
    } else {
      EXPECT_THROW(c->GetInc(), RuntimeException);
    }
  }
}

TEST(Converter, ValueSetsAreMappedInTheOrderOfTheSource) {
  const std::string source =
      "<Integer Name='S'><Value>1</Value><Max>4</Max><ValidValueSet>1;2;4;8</ValidValueSet></Integer>";
  TestMap t(converter("Converter", "1 / FROM", "1 / TO") + source);
  EXPECT_EQ(t.real("C")->GetIncMode(), listIncrement);
  const double_autovector_t bounded = t.real("C")->GetListOfValidValues(),
                            all = t.real("C")->GetListOfValidValues(false);
  EXPECT_THAT(std::vector<double>(bounded.begin(), bounded.end()), ElementsAre(1, 0.5, 0.25));
  EXPECT_THAT(std::vector<double>(all.begin(), all.end()), ElementsAre(1, 0.5, 0.25, 0.125));
  TestMap whole(converter("IntConverter", "FROM / 10", "TO * 10") + source);
  const int64_autovector_t values = whole.integer("C")->GetListOfValidValues();
  EXPECT_THAT(std::vector<int64_t>(values.begin(), values.end()), ElementsAre(10, 20, 40));
  whole.integer("C")->SetValue(20);
  EXPECT_EQ(whole.integer("S")->GetValue(), 2);
  EXPECT_THROW(whole.integer("C")->SetValue(30), OutOfRangeException);
}

TEST(Converter, WritesTheResultThroughTheSourcesChecks) {
  TestMap t(converter("IntConverter", "FROM * 100", "TO / 100", slope("Varying")) + reg("IntReg", "S", 0, 1));
  EXPECT_EQ(refusal<OutOfRangeException>([&] { t.integer("C")->SetValue(3); }),
            "C > S: value 300 must be at most Max = 255");
  t.integer("C")->SetValue(2);
  EXPECT_EQ(t.port.memory[0], 200);
  EXPECT_EQ(t.port.counts(), "0r1w");
}

TEST(Converter, VariableFormulas) {
  TestMap t(
      "<Integer Name='A'><Value>6</Value><Min>-4</Min><Max>40</Max><Inc>2</Inc><Visibility>Guru</Visibility></Integer>"
      "<Enumeration Name='E'><EnumEntry "
      "Name='X'><Value>7</Value><NumericValue>70</NumericValue></EnumEntry><Value>7</Value>"
      "</Enumeration><Float Name='F'><Value>2.5</Value></Float><Boolean "
      "Name='B'><pValue>A</pValue><OnValue>6</OnValue></Boolean>"
      "<IntSwissKnife Name='K'><pVariable Name='A'>A</pVariable><pVariable Name='A.Min'>A</pVariable>"
      "<pVariable Name='A.Max'>A</pVariable><pVariable Name='A.Inc'>A</pVariable><pVariable "
      "Name='E.Entry.X'>E</pVariable>"
      "<pVariable Name='A.AccessMode'>A</pVariable><pVariable Name='A.Visibility'>A</pVariable>"
      "<Formula>A + 100 * A.Min + 1000 * A.Max + 100000 * A.Inc + 1000000 * E.Entry.X + 10000000 * A.AccessMode + "
      "100000000 * A.Visibility</Formula></IntSwissKnife>"
      "<IntSwissKnife Name='Mixed'><pVariable Name='E'>E</pVariable><pVariable Name='F'>F</pVariable>"
      "<pVariable Name='B'>B</pVariable><Formula>E + 10 * F + 1000 * B</Formula></IntSwissKnife>"
      "<IntSwissKnife Name='NoEntry'><pVariable "
      "Name='E.Entry.Y'>E</pVariable><Formula>E.Entry.Y</Formula></IntSwissKnife>"
      "<IntSwissKnife Name='NoEnumeration'><pVariable "
      "Name='A.Entry.X'>A</pVariable><Formula>A.Entry.X</Formula></IntSwissKnife>"
      "<IntSwissKnife Name='BadSuffix'><pVariable Name='A.Foo'>A</pVariable><Formula>A.Foo</Formula></IntSwissKnife>");
  EXPECT_EQ(t.integer("K")->GetValue(), 6 - 400 + 40000 + 200000 + 7000000 + 40000000 + 200000000);
  EXPECT_EQ(t.integer("Mixed")->GetValue(), 7 + 30 + 1000);
  EXPECT_EQ(t.integer("K")->GetMax(), INT64_MAX);
  EXPECT_EQ(t.integer("K")->GetInc(), 1);
  EXPECT_THROW(t.integer("NoEntry")->GetValue(), RuntimeException);
  EXPECT_THROW(t.integer("NoEnumeration")->GetValue(), RuntimeException);
  EXPECT_THROW(t.integer("BadSuffix")->GetValue(), LogicalErrorException);
  t.integer("A")->ImposeMax(20);
  EXPECT_EQ(t.integer("K")->GetValue(), 6 - 400 + 20000 + 200000 + 7000000 + 40000000 + 200000000);
}

TEST(Converter, KnivesComputeOnceUntilSomethingChanges) {
  TestMap t(
      "<SwissKnife Name='K'><pVariable Name='A'>A</pVariable><pVariable Name='B'>B</pVariable><Formula>A / B</Formula>"
      "<Unit>s</Unit></SwissKnife><Float Name='Over'><pValue>K</pValue></Float>" +
      reg("IntReg", "A", 0, 1) + reg("IntReg", "B", 1, 1));
  t.port.poke(0, {9, 2});
  EXPECT_EQ(t.real("Over")->GetValue(), 4.5);
  EXPECT_EQ(t.real("K")->GetValue(), 4.5);
  EXPECT_EQ(t.port.counts(), "2r0w");
  t.integer("B")->SetValue(0);
  EXPECT_THAT(refusal<LogicalErrorException>([&] { t.real("Over")->GetValue(); }),
              HasSubstr("SwissKnife 'K': division by zero"));
  EXPECT_THROW(t.real("K")->GetValue(), LogicalErrorException);
  t.integer("B")->SetValue(3);
  EXPECT_EQ(t.real("Over")->GetValue(), 3.0);
  EXPECT_EQ(t.real("Over")->GetUnit(), "s");
  EXPECT_EQ(t.mode("Over"), RO);
  EXPECT_EQ(t.real("K")->GetMin(), -DBL_MAX);
  EXPECT_FALSE(t.real("K")->HasInc());
}

TEST(Converter, FormulaDefectsCostTheirNodeOnly) {
  TestMap t(converter("Converter", "FROM +", "TO") +
            "<Float Name='S'><Value>1</Value></Float>"
            "<IntSwissKnife Name='K'><Formula> </Formula></IntSwissKnife>");
  EXPECT_EQ(t.real("C")->GetValue(), 1.0) << "only the way to the source is broken";
  EXPECT_THAT(refusal<LogicalErrorException>([&] { t.real("C")->SetValue(2); }), HasSubstr("Converter 'C'"));
  EXPECT_EQ(t.real("S")->GetValue(), 1.0);
  EXPECT_THROW(t.integer("K")->GetValue(), LogicalErrorException);
  EXPECT_EQ(t.mode("K"), RO);
  gcstring_vector defects;
  EXPECT_FALSE(t.map->ParseSwissKnifes(&defects));
  EXPECT_EQ(defects.size(), 2U);
}

TEST(Converter, OldRawValueByVariable) {
  TestMap t(converter("IntConverter", "(FROM &lt;&lt; 4) | (OLD &amp; 15)", "TO &gt;&gt; 4",
                      "<pVariable Name='OLD'>S</pVariable>") +
            "<Integer Name='S'><Value>0x25</Value></Integer>");
  t.integer("C")->SetValue(7);
  EXPECT_EQ(t.integer("S")->GetValue(), 0x75);
}

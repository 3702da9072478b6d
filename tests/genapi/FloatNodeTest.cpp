// Float: range checks, grids of integer sources, increments, display settings that travel through links.
#include <cfloat>
#include <cmath>
#include <limits>

#include "TestMap.h"

using testing::ElementsAre;

namespace {
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
}  // namespace

TEST(FloatNode, FloatingHoldsAnyDoubleButNaN) {
  TestMap t(
      "<Float Name='F'><Value>1.5</Value></Float>"
      "<Float Name='Limited'><Value>1</Value><Min>-2.5</Min><Max>2.5</Max><Inc>0.5</Inc></Float>");
  const CFloatPtr f = t.real("F");
  EXPECT_EQ(f->GetValue(), 1.5);
  EXPECT_EQ(f->GetMin(), -DBL_MAX);
  EXPECT_EQ(f->GetMax(), DBL_MAX);
  EXPECT_FALSE(f->HasInc());
  EXPECT_EQ(f->GetIncMode(), noIncrement);
  EXPECT_THROW(f->GetInc(), RuntimeException);
  EXPECT_EQ(t.node("F")->GetCachingMode(), WriteAround);
  for (const double value : {DBL_MAX, -DBL_MAX, 5e-324, -0.0}) {
    f->SetValue(value);
    EXPECT_EQ(f->GetValue(true), value);
  }
  EXPECT_THROW(f->SetValue(kNaN), OutOfRangeException);
  EXPECT_THROW(f->SetValue(kInfinity), OutOfRangeException);
  f->SetValue(kInfinity, false);
  EXPECT_THROW(f->GetValue(true), OutOfRangeException);

  const CFloatPtr limited = t.real("Limited");
  EXPECT_EQ(refusal<OutOfRangeException>([&] { limited->SetValue(2.6); }),
            "Limited: value 2.6 must be at most Max = 2.5");
  EXPECT_EQ(refusal<OutOfRangeException>([&] { limited->SetValue(-3); }),
            "Limited: value -3 must be at least Min = -2.5");
  EXPECT_EQ(limited->GetIncMode(), fixedIncrement);
  EXPECT_EQ(limited->GetInc(), 0.5);
  limited->SetValue(1.3);
  EXPECT_EQ(limited->GetValue(), 1.3) << "the increment of a float only informs";
  limited->ImposeMax(1.25);
  EXPECT_EQ(limited->GetMax(), 1.25);
  limited->ImposeMin(-9);
  EXPECT_EQ(limited->GetMin(), -2.5);
}

TEST(FloatNode, WritesTheNearestGridPointOfAnIntegerSource) {
  struct Case {
    const char* limits;
    double written;
    int64_t stored;
  };
  const Case cases[] = {
      {"<Min>1</Min><Inc>3</Inc>", 2.4, 1},
      {"<Min>1</Min><Inc>3</Inc>", 2.6, 4},
      {"<Min>1</Min><Inc>3</Inc>", 2.5, 4},                                // a tie goes away from zero
      {"<Min>-11</Min><Max>11</Max><Inc>2</Inc>", -2.0, -3},               // also below zero
      {"<Min>-11</Min><Max>11</Max><Inc>11</Inc>", 5.5, 11},               //
      {"", 41.6, 42},                                                      // Min is INT64_MIN: no distance in double
      {"", -0.5, -1},                                                      //
      {"", 9007199254740993.0, 9007199254740992},                          //
      {"", 9223372036854775808.0, INT64_MAX},                              // 2^63
      {"<Inc>10</Inc>", 9223372036854775808.0, INT64_MAX - 5},             // highest of INT64_MIN + 10 k
      {"", -9223372036854775808.0, INT64_MIN},                             //
      {"<Min>0</Min><Max>10</Max><Inc>4</Inc>", 10.0, 8},                  // the last point inside
      {"<Min>0</Min><Max>10</Max><Inc>4</Inc>", 9.99, 8},                  //
      {"<Min>-10</Min><Max>-1</Max><Inc>4</Inc>", -1.0, -2},               //
      {"<Min>5</Min><Max>6</Max>", 5.5, 6},                                //
      {"<ValidValueSet>1;10;100</ValidValueSet>", 41.6, 10},               //
      {"<ValidValueSet>1;10;100</ValidValueSet>", 56.0, 100},              //
      {"<Max>50</Max><ValidValueSet>1;10;100</ValidValueSet>", 50.0, 10},  // members outside the range do not count
  };
  for (const Case& each : cases) {
    TestMap t(std::string("<Float Name='F'><pValue>I</pValue></Float><Integer Name='I'><Value>5</Value>") +
              each.limits + "</Integer>");
    t.real("F")->SetValue(each.written);
    EXPECT_EQ(t.integer("I")->GetValue(), each.stored) << each.limits << " " << each.written;
    EXPECT_EQ(t.real("F")->GetValue(), static_cast<double>(each.stored)) << each.limits << " " << each.written;
  }
}

TEST(FloatNode, RangeOfAnIntegerSourceIsCheckedBeforeTheGrid) {
  TestMap t(
      "<Float Name='F'><pValue>I</pValue></Float><Integer Name='I'><Value>5</Value></Integer>"
      "<Float Name='G'><pValue>J</pValue></Float><Integer Name='J'><Value>5</Value><Max>10</Max></Integer>"
      "<Float Name='Wider'><pValue>J</pValue><Max>99</Max></Float>");
  EXPECT_THROW(t.real("F")->SetValue(1e200), OutOfRangeException);
  EXPECT_THROW(t.real("F")->SetValue(kNaN), OutOfRangeException);
  EXPECT_THROW(t.real("F")->SetValue(kNaN, false), OutOfRangeException);
  EXPECT_THROW(t.real("G")->SetValue(10.2), OutOfRangeException) << "although it would round to 10";
  EXPECT_THROW(t.real("Wider")->SetValue(10.2), OutOfRangeException) << "the source checks as well";
  EXPECT_EQ(t.integer("J")->GetValue(), 5);
  t.real("G")->SetValue(9.6);
  EXPECT_EQ(t.integer("J")->GetValue(), 10);
}

TEST(FloatNode, UnverifiedWritesOfUnusableNumbersAreKeptInsideTheRange) {
  TestMap t(
      "<Float Name='F'><pValue>I</pValue></Float><Integer Name='I'><Value>5</Value><Min>2</Min><Max>9</Max></Integer>");
  t.real("F")->SetValue(1e30, false);
  EXPECT_EQ(t.integer("I")->GetValue(), 9);
  t.real("F")->SetValue(-kInfinity, false);
  EXPECT_EQ(t.integer("I")->GetValue(), 2);
}

TEST(FloatNode, IncrementComesFromTheNodeOrItsSource) {
  TestMap t(
      "<Float Name='Own'><pValue>I</pValue><Inc>0.25</Inc></Float><Float Name='Sources'><pValue>I</pValue></Float>"
      "<Float Name='Linked'><Value>0</Value><pInc>I</pInc></Float><Float Name='Plain'><pValue>P</pValue></Float>"
      "<Float Name='OverSet'><pValue>S</pValue></Float><Float Name='OverBoolean'><pValue>B</pValue></Float>"
      "<Integer Name='I'><Value>3</Value><Inc>3</Inc><Min>0</Min></Integer><Float Name='P'><Value>0</Value></Float>"
      "<Integer Name='S'><Value>1</Value><Max>9</Max><ValidValueSet>1;5;12</ValidValueSet></Integer>"
      "<Boolean Name='B'><Value>true</Value></Boolean>");
  EXPECT_EQ(t.real("Own")->GetInc(), 0.25);
  EXPECT_EQ(t.real("Sources")->GetInc(), 3.0);
  EXPECT_EQ(t.real("Linked")->GetInc(), 3.0);
  EXPECT_EQ(t.real("Sources")->GetIncMode(), fixedIncrement);
  for (const char* name : {"Plain", "OverBoolean"}) {
    EXPECT_FALSE(t.real(name)->HasInc()) << name;
    EXPECT_THROW(t.real(name)->GetInc(), RuntimeException) << name;
    EXPECT_EQ(t.real(name)->GetIncMode(), noIncrement) << name;
  }
  const CFloatPtr set = t.real("OverSet");
  EXPECT_EQ(set->GetIncMode(), listIncrement);
  const double_autovector_t bounded = set->GetListOfValidValues(true), all = set->GetListOfValidValues(false);
  EXPECT_THAT(std::vector<double>(bounded.begin(), bounded.end()), ElementsAre(1, 5));
  EXPECT_THAT(std::vector<double>(all.begin(), all.end()), ElementsAre(1, 5, 12));
}

TEST(FloatNode, DisplaySettingsTravelUpThroughLinks) {
  TestMap t(
      "<Float Name='Top'><pValue>C</pValue></Float>"
      "<Float Name='Own'><pValue>C</pValue><Unit>s</Unit><Representation>Linear</Representation>"
      "<DisplayNotation>Fixed</DisplayNotation><DisplayPrecision>2</DisplayPrecision></Float>"
      "<Converter Name='C'><FormulaTo>FROM</FormulaTo><FormulaFrom>TO</FormulaFrom><pValue>Src</pValue></Converter>"
      "<Float Name='Src'><Value>12.3456789</Value><Unit>ms</Unit><Representation>Logarithmic</Representation>"
      "<DisplayNotation>Scientific</DisplayNotation><DisplayPrecision>4</DisplayPrecision></Float>"
      "<Float Name='Bare'><pValue>B</pValue></Float><Boolean Name='B'><Value>true</Value></Boolean>");
  for (const char* name : {"Top", "C", "Src"}) {
    EXPECT_EQ(t.real(name)->GetUnit(), "ms") << name;
    EXPECT_EQ(t.real(name)->GetRepresentation(), Logarithmic) << name;
    EXPECT_EQ(t.real(name)->GetDisplayNotation(), fnScientific) << name;
    EXPECT_EQ(t.real(name)->GetDisplayPrecision(), 4) << name;
    EXPECT_EQ(t.real(name)->ToString(), "1.2346e+01") << name;
  }
  EXPECT_EQ(t.real("Own")->GetUnit(), "s");
  EXPECT_EQ(t.real("Own")->GetRepresentation(), Linear);
  EXPECT_EQ(t.real("Own")->ToString(), "12.35");
  EXPECT_EQ(t.real("Bare")->GetDisplayNotation(), fnAutomatic);
  EXPECT_EQ(t.real("Bare")->GetDisplayPrecision(), 6);
  EXPECT_EQ(t.real("Bare")->GetUnit(), "");
  EXPECT_EQ(t.real("Bare")->GetRepresentation(), PureNumber);
}

TEST(FloatNode, OverBooleanAndEnumeration) {
  TestMap t(
      "<Float Name='OverB'><pValue>B</pValue></Float><Boolean Name='B'><Value>true</Value></Boolean>"
      "<Float Name='OverE'><pValue>E</pValue></Float>"
      "<Enumeration Name='E'><EnumEntry Name='One'><Value>1</Value></EnumEntry>"
      "<EnumEntry Name='Fifty'><Value>2</Value><NumericValue>50</NumericValue></EnumEntry>"
      "<EnumEntry Name='Hundred'><Value>3</Value><NumericValue>100</NumericValue></EnumEntry>"
      "<Value>1</Value></Enumeration>");
  EXPECT_EQ(t.real("OverB")->GetValue(), 1.0);
  t.real("OverB")->SetValue(0.0);
  EXPECT_FALSE(t.boolean("B")->GetValue());
  t.real("OverB")->SetValue(-0.25);
  EXPECT_TRUE(t.boolean("B")->GetValue());

  const CFloatPtr over = t.real("OverE");
  EXPECT_EQ(over->GetMin(), -DBL_MAX);
  over->SetValue(41.6);
  EXPECT_EQ(over->GetValue(), 50.0);
  EXPECT_EQ(t.enumeration("E")->GetIntValue(), 2);
  over->SetValue(75.0);  // as near to 50 as to 100: the first one
  EXPECT_EQ(over->GetValue(), 50.0);
  EXPECT_THROW(over->SetValue(kNaN), OutOfRangeException);
}

TEST(FloatNode, TableChoosesConstantsAndLinks) {
  TestMap t(
      "<Float Name='F'><pIndex>I</pIndex><ValueIndexed Index='0'>0.5</ValueIndexed>"
      "<pValueIndexed Index='1'>N</pValueIndexed><ValueDefault>-1.25</ValueDefault></Float>"
      "<Integer Name='I'><Value>0</Value></Integer><Integer "
      "Name='N'><Value>6</Value><Inc>2</Inc><Min>0</Min></Integer>");
  EXPECT_EQ(t.real("F")->GetValue(), 0.5);
  EXPECT_FALSE(t.real("F")->HasInc());
  t.integer("I")->SetValue(1);
  EXPECT_EQ(t.real("F")->GetValue(), 6.0);
  EXPECT_TRUE(t.real("F")->HasInc());
  t.real("F")->SetValue(7.2);
  EXPECT_EQ(t.integer("N")->GetValue(), 8);
  t.integer("I")->SetValue(4);
  EXPECT_EQ(t.real("F")->GetValue(), -1.25);
}

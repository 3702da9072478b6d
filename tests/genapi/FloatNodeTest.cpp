// Float: range checks, grids of integer sources, increments, display settings that travel through links.
#include <cfloat>
#include <limits>

#include "TestMap.h"

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

// A Float that holds its value, and one over an Integer or another node.
std::string real(const std::string& name, const std::string& value, const std::string& more = "") {
  return "<Float Name='" + name + "'>" + tag("Value", value) + more + "</Float>";
}
std::string realOver(const std::string& name, const std::string& source, const std::string& more = "") {
  return over(name, source, more, "Float");
}

}  // namespace

TEST(FloatNode, FloatingHoldsAnyDoubleButNaN) {
  TestMap t(real("F", "1.5") + real("Limited", "1", "<Min>-2.5</Min><Max>2.5</Max><Inc>0.5</Inc>"));
  const CFloatPtr f = t.real("F"), limited = t.real("Limited");
  EXPECT_EQ(f->GetValue(), 1.5);
  EXPECT_EQ(f->GetMin(), -DBL_MAX);
  EXPECT_EQ(f->GetMax(), DBL_MAX);
  for (const double value : {DBL_MAX, -DBL_MAX, 5e-324, -0.0}) {
    f->SetValue(value);
    EXPECT_EQ(f->GetValue(true), value);
  }
  for (const double value : {kNaN, kInfinity}) EXPECT_THROW(f->SetValue(value), OutOfRangeException);
  f->SetValue(kInfinity, false);
  EXPECT_THROW(f->GetValue(true), OutOfRangeException);

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
    TestMap t(realOver("F", "I") + held("I", 5, each.limits));
    t.real("F")->SetValue(each.written);
    EXPECT_EQ(t.integer("I")->GetValue(), each.stored) << each.limits << " " << each.written;
    EXPECT_EQ(t.real("F")->GetValue(), static_cast<double>(each.stored)) << each.limits << " " << each.written;
  }
}

TEST(FloatNode, RangeOfAnIntegerSourceIsCheckedBeforeTheGrid) {
  TestMap t(realOver("F", "I") + held("I", 5) + realOver("G", "J") + held("J", 5, "<Min>2</Min><Max>10</Max>") +
            realOver("Wider", "J", "<Max>99</Max>"));
  EXPECT_THROW(t.real("F")->SetValue(1e200), OutOfRangeException);
  for (const bool verify : {true, false}) EXPECT_THROW(t.real("F")->SetValue(kNaN, verify), OutOfRangeException);
  EXPECT_THROW(t.real("G")->SetValue(10.2), OutOfRangeException) << "although it would round to 10";
  EXPECT_THROW(t.real("Wider")->SetValue(10.2), OutOfRangeException) << "the source checks as well";
  EXPECT_EQ(t.integer("J")->GetValue(), 5);
  t.real("G")->SetValue(9.6);
  EXPECT_EQ(t.integer("J")->GetValue(), 10);
  // Without verification unusable numbers are kept inside the range.
  t.real("G")->SetValue(-kInfinity, false);
  EXPECT_EQ(t.integer("J")->GetValue(), 2);
  t.real("G")->SetValue(1e30, false);
  EXPECT_EQ(t.integer("J")->GetValue(), 10);
}

TEST(FloatNode, IncrementComesFromTheNodeOrItsSource) {
  TestMap t(realOver("Own", "S", "<Inc>0.25</Inc>") + realOver("Plain", "P") + realOver("OverBoolean", "B") +
            real("P", "0") + held("S", 1, "<Max>9</Max><ValidValueSet>1;5;12</ValidValueSet>") +
            "<Boolean Name='B'><Value>true</Value></Boolean>");
  for (const char* name : {"Plain", "OverBoolean", "P"}) {
    EXPECT_FALSE(t.real(name)->HasInc()) << name;
    EXPECT_THROW(t.real(name)->GetInc(), RuntimeException) << name;
    EXPECT_EQ(t.real(name)->GetIncMode(), noIncrement) << name;
  }
  EXPECT_EQ(t.real("Own")->GetInc(), 0.25);
  EXPECT_EQ(t.real("Own")->GetIncMode(), listIncrement);
}

TEST(FloatNode, DisplaySettingsTravelUpThroughLinks) {
  TestMap t(realOver("Top", "C") +
            realOver("Own", "C",
                     "<Unit>s</Unit><Representation>Linear</Representation><DisplayNotation>Fixed</DisplayNotation>"
                     "<DisplayPrecision>2</DisplayPrecision>") +
            over("C", "Src", "<FormulaTo>FROM</FormulaTo><FormulaFrom>TO</FormulaFrom>", "Converter") +
            real("Src", "12.3456789",
                 "<Unit>ms</Unit><Representation>Logarithmic</Representation>"
                 "<DisplayNotation>Scientific</DisplayNotation><DisplayPrecision>4</DisplayPrecision>") +
            realOver("Bare", "B") + "<Boolean Name='B'><Value>true</Value></Boolean>");
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

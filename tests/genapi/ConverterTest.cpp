// Knives and converters as values: limits by slope, all bits, checks of the source, caching.
#include <cfloat>

#include "TestMap.h"

using testing::HasSubstr;

namespace {

std::string converter(const std::string& type, const std::string& to, const std::string& from,
                      const std::string& more = "") {
  return over("C", "S", more + tag("FormulaTo", to) + tag("FormulaFrom", from), type);
}

std::string slope(const std::string& word) { return tag("Slope", word); }

const std::string kPlain = "<Float Name='S'><Value>2</Value></Float>";

}  // namespace

TEST(Converter, LimitsFollowTheSlope) {
  struct Case {
    std::string slope, from;
    double min, max;
    std::string source = "<Float Name='S'><Value>2</Value><Min>1</Min><Max>10</Max></Float>";
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
      {"Automatic", "TO / 2", -DBL_MAX / 2, DBL_MAX / 2, kPlain},
      {"Automatic", "TO * 2", -DBL_MAX, DBL_MAX, kPlain},
      {"Automatic", "TO", -DBL_MAX, DBL_MAX, "<Boolean Name='S'><Value>true</Value></Boolean>"},
  };
  for (const Case& each : cases) {
    TestMap t(converter("Converter", "FROM", each.from, slope(each.slope)) + each.source);
    EXPECT_EQ(t.real("C")->GetMin(), each.min) << each.slope << " " << each.from;
    EXPECT_EQ(t.real("C")->GetMax(), each.max) << each.slope << " " << each.from;
  }
  for (const char* from : {"TO", "TO * 2"}) {
    TestMap whole(converter("IntConverter", "FROM", from) + held("S", 2));
    EXPECT_EQ(whole.integer("C")->GetMax(), INT64_MAX) << "overflow saturates";
    EXPECT_EQ(whole.integer("C")->GetMin(), INT64_MIN);
    whole.integer("C")->SetValue(8);
  }
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

TEST(Converter, IncrementOfLinearOnesIsNeverNegative) {
  TestMap t(converter("Converter", "FROM", "10 - TO * 0.5", tag("IsLinear", "Yes")) + held("S", 0, "<Inc>4</Inc>"));
  EXPECT_EQ(t.real("C")->GetInc(), 2);
  EXPECT_EQ(t.real("C")->GetIncMode(), fixedIncrement);
}

TEST(Converter, WritesTheResultThroughTheSourcesChecks) {
  TestMap t(converter("IntConverter", "FROM * 100", "TO / 100", slope("Varying")) + reg("IntReg", "S", 0, 1));
  EXPECT_EQ(refusal<OutOfRangeException>([&] { t.integer("C")->SetValue(3); }),
            "C > S: value 300 must be at most Max = 255");
  t.integer("C")->SetValue(2);
  EXPECT_EQ(t.port.memory[0], 200);
  EXPECT_EQ(t.port.counts(), "0r1w");
}

TEST(Converter, KnivesComputeOnceUntilSomethingChanges) {
  TestMap t(
      "<SwissKnife Name='K'><pVariable Name='A'>A</pVariable><pVariable Name='B'>B</pVariable><Formula>A / B</Formula>"
      "</SwissKnife>" +
      over("Over", "K", "", "Float") + reg("IntReg", "A", 0, 1) + reg("IntReg", "B", 1, 1));
  t.port.poke(0, {9, 2});
  EXPECT_EQ(t.real("Over")->GetValue(), 4.5);
  EXPECT_EQ(t.real("K")->GetValue(), 4.5);
  EXPECT_EQ(t.port.counts(), "2r0w");
  t.integer("B")->SetValue(0);
  EXPECT_THROW(t.real("Over")->GetValue(), LogicalErrorException);
  EXPECT_EQ(refusal<LogicalErrorException>([&] { t.real("K")->GetValue(); }),
            "SwissKnife 'K': division by zero at column 3 of 'A / B'");
  t.integer("B")->SetValue(3);
  EXPECT_EQ(t.real("Over")->GetValue(), 3.0);
  EXPECT_EQ(t.mode("Over"), RO);
}

// Integer: limits, increments, value sets, copies, tables, and sources of other types.
#include "TestMap.h"

using testing::ElementsAre;
using testing::HasSubstr;

namespace {

constexpr int64_t kLowest = INT64_MIN;
constexpr int64_t kHighest = INT64_MAX;

std::vector<int64_t> validValues(const CIntegerPtr& node, bool bounded) {
  const int64_autovector_t values = node->GetListOfValidValues(bounded);
  return {values.begin(), values.end()};
}

std::string limits(int64_t min, int64_t max, const std::string& more = "") {
  return tag("Min", std::to_string(min)) + tag("Max", std::to_string(max)) + more;
}

}  // namespace

TEST(IntegerNode, FloatingHoldsAnyInt64) {
  TestMap t(held("A", 7));
  const CIntegerPtr a = t.integer("A");
  EXPECT_EQ(a->GetValue(), 7);
  EXPECT_EQ(a->GetMin(), kLowest);
  EXPECT_EQ(a->GetMax(), kHighest);
  EXPECT_EQ(a->GetInc(), 1);
  EXPECT_EQ(a->GetIncMode(), fixedIncrement);
  EXPECT_EQ(a->GetUnit(), "");
  EXPECT_EQ(a->GetRepresentation(), PureNumber);
  EXPECT_THAT(validValues(a, false), ElementsAre());
  for (const int64_t value : {kLowest, int64_t{-1}, kHighest, int64_t{9007199254740993}}) {
    a->SetValue(value);
    EXPECT_EQ(a->GetValue(true), value);
    EXPECT_EQ(a->GetValue(false, true), value);
  }
  EXPECT_EQ(t.port.counts(), "0r0w");
}

TEST(IntegerNode, RefusesValuesOutsideItsRangeOrOffItsGrid) {
  TestMap t(held("A", 10, limits(10, 30, "<Inc>4</Inc>")) + held("Wide", 0, "<Inc>3</Inc>") +
            held("Zero", 5, limits(1, 9, "<Inc>0</Inc>")) + held("Negative", 5, "<Inc>-2</Inc>"));
  const CIntegerPtr a = t.integer("A");
  EXPECT_EQ(refusal<OutOfRangeException>([&] { a->SetValue(9); }), "A: value 9 must be at least Min = 10");
  EXPECT_EQ(refusal<OutOfRangeException>([&] { a->SetValue(31); }), "A: value 31 must be at most Max = 30");
  EXPECT_EQ(refusal<OutOfRangeException>([&] { a->SetValue(21); }),
            "A: value 21 must be Min 10 plus a multiple of Inc 4");
  EXPECT_EQ(a->GetValue(), 10);
  a->SetValue(30);
  a->SetValue(21, false);
  EXPECT_EQ(a->GetValue(), 21);
  EXPECT_THROW(a->GetValue(true), OutOfRangeException);

  // The distance from INT64_MIN does not fit an int64.
  const CIntegerPtr wide = t.integer("Wide");
  for (const int64_t value : {kLowest, kLowest + 3, kHighest, int64_t{1}}) wide->SetValue(value);
  for (const int64_t value : {kHighest - 1, int64_t{0}}) EXPECT_THROW(wide->SetValue(value), OutOfRangeException);

  EXPECT_THROW(t.integer("Zero")->SetValue(10), OutOfRangeException) << "the range comes first";
  EXPECT_THROW(t.integer("Zero")->SetValue(5), LogicalErrorException);
  EXPECT_THROW(t.integer("Negative")->SetValue(5), LogicalErrorException);
}

TEST(IntegerNode, OwnLimitsReplaceThoseOfTheSourceWhichStillChecks) {
  TestMap t(over("A", "Src", "<Min>-5</Min>") +
            held("Src", 1, limits(0, 100, "<Unit>us</Unit><Representation>HexNumber</Representation>")));
  const CIntegerPtr a = t.integer("A");
  EXPECT_EQ(a->GetMin(), -5);
  EXPECT_EQ(a->GetMax(), 100);
  EXPECT_EQ(a->GetUnit(), "us");
  EXPECT_EQ(a->GetRepresentation(), HexNumber);
  EXPECT_EQ(refusal<OutOfRangeException>([&] { a->SetValue(-1); }), "A > Src: value -1 must be at least Min = 0");
  a->SetValue(-1, false);
  EXPECT_EQ(t.integer("Src")->GetValue(), -1) << "without verification it goes all the way";
}

TEST(IntegerNode, ImposedLimitsOnlyNarrow) {
  TestMap t(over("A", "Src") + held("Src", 5, limits(0, 10)));
  const CIntegerPtr a = t.integer("A");
  a->ImposeMin(-3);
  a->ImposeMax(7);
  EXPECT_EQ(a->GetMin(), 0);
  EXPECT_EQ(a->GetMax(), 7);
  EXPECT_THROW(a->SetValue(8), OutOfRangeException);
  EXPECT_EQ(t.integer("Src")->GetMax(), 10);
  for (const auto& [imposed, expected] : {std::pair{4, 4}, {9, 7}}) {
    t.integer("Src")->ImposeMax(imposed);
    EXPECT_EQ(a->GetMax(), expected);
  }
}

TEST(IntegerNode, WritesAllCopiesInTheirOrder) {
  TestMap t("<Integer Name='A'><pValueCopy>C1</pValueCopy><pValue>V</pValue><pValueCopy>C2</pValueCopy></Integer>" +
            reg("IntReg", "C1", 0, 4) + reg("IntReg", "V", 4, 2) + reg("IntReg", "C2", 8, 1, tag("Sign", "Signed")));
  std::vector<int64_t> order;
  t.port.onWrite = [&](int64_t address, int64_t) { order.push_back(address); };
  const CIntegerPtr a = t.integer("A");
  // Largest minimum and smallest maximum of 0..2^32-1, 0..65535, -128..127.
  EXPECT_EQ(a->GetMin(), 0);
  EXPECT_EQ(a->GetMax(), 127);
  a->SetValue(100);
  EXPECT_THAT(order, ElementsAre(0, 4, 8));
  EXPECT_EQ(t.port.counts(), "0r3w");
  EXPECT_EQ(t.integer("C2")->GetValue(), 100);
  // Only pValue is read.
  t.integer("C1")->SetValue(1);
  t.integer("C2")->SetValue(2);
  EXPECT_EQ(a->GetValue(false, true), 100);

  // The first failure stops: what comes after it is not written.
  order.clear();
  t.port.onWrite = [&](int64_t address, int64_t) {
    order.push_back(address);
    if (address == 4) throw TIMEOUT_EXCEPTION("no answer");
  };
  EXPECT_EQ(refusal<TimeoutException>([&] { a->SetValue(5); }), "no answer");
  EXPECT_THAT(order, ElementsAre(0, 4));
  EXPECT_EQ(t.integer("C1")->GetValue(), 5);
  EXPECT_EQ(t.integer("C2")->GetValue(), 2);
}

TEST(IntegerNode, CopyRightsCountExceptReading) {
  for (const auto& [copy, expected] : {std::pair{"RW", RW}, {"WO", RW}, {"RO", RO}}) {
    TestMap t(over("A", "V", tag("pValueCopy", "C")) + reg("IntReg", "V", 0, 1) +
              reg("IntReg", "C", 1, 1, tag("AccessMode", copy)));
    EXPECT_EQ(t.mode("A"), expected) << copy;
  }
  TestMap steps(over("A", "V", tag("pValueCopy", "C") + tag("pValueCopy", "D")) + held("V") +
                held("C", 0, tag("Inc", "2")) + held("D"));
  EXPECT_EQ(steps.mode("A"), RO) << "no value is on every grid";
}

TEST(IntegerNode, TableFollowsItsIndex) {
  TestMap t(
      "<Integer Name='A'><pIndex>I</pIndex><ValueIndexed Index='0'>100</ValueIndexed>"
      "<pValueIndexed Index='1'>D</pValueIndexed><ValueDefault>20</ValueDefault></Integer>" +
      held("I") + held("D", 44, limits(40, 50, "<Unit>ms</Unit><ValidValueSet>40;44;48</ValidValueSet>")));
  const CIntegerPtr a = t.integer("A"), i = t.integer("I");
  a->SetValue(101);  // a constant of the table is a cell of its own
  EXPECT_EQ(a->GetMax(), kHighest);
  EXPECT_EQ(a->GetIncMode(), fixedIncrement);
  EXPECT_THAT(validValues(a, true), ElementsAre());
  i->SetValue(-2);
  EXPECT_EQ(a->GetValue(), 20);
  a->SetValue(21);  // the default too
  i->SetValue(1);
  EXPECT_EQ(a->GetValue(), 44);
  EXPECT_EQ(a->GetMax(), 50);
  EXPECT_EQ(a->GetUnit(), "ms");
  EXPECT_EQ(a->GetIncMode(), listIncrement);
  EXPECT_THAT(validValues(a, true), ElementsAre(40, 44, 48));
  for (const auto& [index, value] : {std::pair{0, 101}, {-9, 21}}) {
    i->SetValue(index);
    EXPECT_EQ(a->GetValue(), value);
  }
}

TEST(IntegerNode, ValueSetAcceptsItsMembersInsideTheRange) {
  TestMap t(held("A", 1, limits(1, 20, "<Inc>7</Inc><ValidValueSet>-4; 1;5;10;0x40</ValidValueSet>")));
  const CIntegerPtr a = t.integer("A");
  EXPECT_EQ(a->GetIncMode(), listIncrement);
  EXPECT_THAT(validValues(a, false), ElementsAre(-4, 1, 5, 10, 64));
  EXPECT_THAT(validValues(a, true), ElementsAre(1, 5, 10));
  a->SetValue(5);
  EXPECT_THROW(a->SetValue(8), OutOfRangeException) << "on the grid of Inc, which a set overrules";
  EXPECT_THROW(a->SetValue(64), OutOfRangeException);
  TestMap real(over("F", "A", "", "Float") + held("A", 1, tag("ValidValueSet", "1;3;5")));
  real.real("F")->SetValue(4);
  EXPECT_EQ(real.integer("A")->GetValue(), 3) << "the first of two that are as near";
  TestMap above(over("A", "F") + "<Float Name='F'><Value>2</Value></Float>");
  EXPECT_EQ(above.integer("A")->GetInc(), 1) << "a float without an increment";
}

TEST(IntegerNode, OverAFloatRoundsHalfAwayFromZero) {
  TestMap t(over("A", "F") + "<Float Name='F'><Value>0</Value><Min>-10.5</Min><Max>1000.9</Max><Inc>2.1</Inc></Float>" +
            over("B", "G", limits(0, 10)) + "<Float Name='G'><Value>0</Value></Float>" + over("C", "G"));
  const CIntegerPtr a = t.integer("A"), b = t.integer("B");
  const CFloatPtr f = t.real("F"), g = t.real("G");
  EXPECT_EQ(a->GetMin(), -10);
  EXPECT_EQ(a->GetMax(), 1000);
  for (const auto& [value, expected] : {std::pair{2.5, 3}, {-2.5, -3}, {2.49, 2}, {0.5, 1}, {-0.4, 0}}) {
    f->SetValue(value);
    EXPECT_EQ(a->GetValue(), expected) << value;
  }
  g->SetValue(9223372036854775808.0);
  EXPECT_THROW(b->GetValue(), RuntimeException);
  g->SetValue(1e200);
  EXPECT_EQ(refusal<RuntimeException>([&] { b->GetValue(); }), "B > G: 1e+200 does not fit a 64-bit integer");
  g->SetValue(-9223372036854775808.0);
  EXPECT_EQ(b->GetValue(), kLowest);
  EXPECT_THROW(t.integer("C")->GetMax(), RuntimeException) << "the largest double is no integer limit";
}

TEST(IntegerNode, ElsewhereThanUnderPValueAnEnumerationGivesItsIntegerValue) {
  TestMap t(
      "<Enumeration Name='E'><EnumEntry Name='X'><Value>2</Value><NumericValue>50</NumericValue></EnumEntry>"
      "<Value>2</Value></Enumeration>" +
      over("Over", "E") + held("Limited", 0, tag("pMax", "E")) + knife("K", "E") +
      "<Integer Name='Table'><pIndex>E</pIndex><ValueIndexed Index='2'>5</ValueIndexed><ValueIndexed Index='50'>6"
      "</ValueIndexed><ValueDefault>0</ValueDefault></Integer>"
      "<IntReg Name='R'><pAddress>E</pAddress><Length>1</Length><pPort>Device</pPort></IntReg>");
  EXPECT_EQ(t.integer("Over")->GetValue(), 50);
  EXPECT_EQ(t.integer("Limited")->GetMax(), 2);
  EXPECT_EQ(t.integer("Table")->GetValue(), 5);
  EXPECT_EQ(t.integer("K")->GetValue(), 2);
  EXPECT_EQ(t.bytes("R")->GetAddress(), 2);
}

TEST(IntegerNode, UnreadableLimitsAreReported) {
  TestMap t(held("A", 1, tag("pMax", "Hi")) + held("Hi", 8, tag("pIsAvailable", "On")) + held("On"));
  EXPECT_EQ(t.integer("A")->GetValue(), 1);
  EXPECT_THAT(refusal<AccessException>([&] { t.integer("A")->SetValue(2); }), HasSubstr("Hi: not readable"));
  t.integer("A")->SetValue(2, false);
  t.integer("On")->SetValue(1);
  EXPECT_EQ(t.integer("A")->GetMax(), 8);
}

// In schema 1.0 limits may depend on each other; in 1.1 that is refused at load.
TEST(IntegerNode, FeaturesThatLimitEachOther) {
  const std::string features = held("W", 10, tag("pMax", "WMax")) + held("O", 4, tag("pMax", "OMax"));
  const std::string nodes = features + knife("WMax", "O", "100 - X") + knife("OMax", "W", "100 - X");
  TestMap t(nodes, 0);
  EXPECT_EQ(t.integer("W")->GetMax(), 96);
  EXPECT_EQ(t.integer("O")->GetMax(), 90);
  t.integer("W")->SetValue(96);
  EXPECT_EQ(t.integer("O")->GetMax(), 4);
  EXPECT_THROW(t.integer("O")->SetValue(5), OutOfRangeException);
  t.integer("O")->SetValue(0);
  t.integer("W")->SetValue(100);
  EXPECT_THAT(refusal<RuntimeException>([&] { TestMap refused(nodes); }), HasSubstr("dependency cycle"));

  TestMap limitsOfLimits(
      features +
          "<IntSwissKnife Name='WMax'><pVariable Name='O.Max'>O</pVariable><Formula>O.Max - 1</Formula></IntSwissKnife>"
          "<IntSwissKnife Name='OMax'><pVariable Name='W.Max'>W</pVariable><Formula>W.Max - "
          "1</Formula></IntSwissKnife>",
      0);
  // Whoever is asked first sees the other one without restriction; the answer must not depend on what was asked before.
  for (const char* name : {"W", "O", "W", "O"}) EXPECT_EQ(limitsOfLimits.integer(name)->GetMax(), kHighest - 2) << name;
}

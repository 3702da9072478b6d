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

}  // namespace

TEST(IntegerNode, FloatingHoldsAnyInt64) {
  TestMap t("<Integer Name='A'><Value>7</Value></Integer>");
  const CIntegerPtr a = t.integer("A");
  EXPECT_EQ(a->GetValue(), 7);
  EXPECT_EQ(a->GetMin(), kLowest);
  EXPECT_EQ(a->GetMax(), kHighest);
  EXPECT_EQ(a->GetInc(), 1);
  EXPECT_EQ(a->GetIncMode(), fixedIncrement);
  EXPECT_EQ(a->GetUnit(), "");
  EXPECT_EQ(a->GetRepresentation(), PureNumber);
  for (const int64_t value : {kLowest, int64_t{-1}, kHighest, int64_t{9007199254740993}}) {
    a->SetValue(value);
    EXPECT_EQ(a->GetValue(true), value);
    EXPECT_EQ(a->GetValue(false, true), value);
  }
  EXPECT_EQ(t.port.counts(), "0r0w");
}

TEST(IntegerNode, RefusesValuesOutsideItsRangeOrOffItsGrid) {
  TestMap t(
      "<Integer Name='A'><Value>10</Value><Min>10</Min><Max>30</Max><Inc>4</Inc></Integer>"
      "<Integer Name='Wide'><Value>0</Value><Inc>3</Inc></Integer>"
      "<Integer Name='Zero'><Value>5</Value><Min>1</Min><Max>9</Max><Inc>0</Inc></Integer>"
      "<Integer Name='Negative'><Value>5</Value><Inc>-2</Inc></Integer>");
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
  wide->SetValue(kLowest);
  wide->SetValue(kLowest + 3);
  wide->SetValue(kHighest);  // 2^64 - 1 is a multiple of 3
  EXPECT_THROW(wide->SetValue(kHighest - 1), OutOfRangeException);
  wide->SetValue(1);
  EXPECT_THROW(wide->SetValue(0), OutOfRangeException);

  EXPECT_THROW(t.integer("Zero")->SetValue(10), OutOfRangeException) << "the range comes first";
  EXPECT_THROW(t.integer("Zero")->SetValue(5), LogicalErrorException);
  EXPECT_THROW(t.integer("Negative")->SetValue(5), LogicalErrorException);
}

TEST(IntegerNode, OwnLimitsReplaceThoseOfTheSourceWhichStillChecks) {
  TestMap t(
      "<Integer Name='A'><pValue>Src</pValue><Min>-5</Min></Integer>"
      "<Integer Name='B'><pValue>Src</pValue><pMin>Lo</pMin><pMax>Hi</pMax><pInc>Step</pInc></Integer>"
      "<Integer Name='Lo'><Value>2</Value></Integer><Integer Name='Hi'><Value>8</Value></Integer>"
      "<Integer Name='Step'><Value>3</Value></Integer>"
      "<Integer Name='Src'><Value>1</Value><Min>0</Min><Max>100</Max><Unit>us</Unit>"
      "<Representation>HexNumber</Representation></Integer>");
  const CIntegerPtr a = t.integer("A");
  EXPECT_EQ(a->GetMin(), -5);
  EXPECT_EQ(a->GetMax(), 100);
  EXPECT_EQ(a->GetUnit(), "us");
  EXPECT_EQ(a->GetRepresentation(), HexNumber);
  EXPECT_EQ(refusal<OutOfRangeException>([&] { a->SetValue(-1); }), "A > Src: value -1 must be at least Min = 0");
  a->SetValue(-1, false);
  EXPECT_EQ(t.integer("Src")->GetValue(), -1) << "without verification it goes all the way";

  const CIntegerPtr b = t.integer("B");
  EXPECT_EQ(b->GetMin(), 2);
  EXPECT_EQ(b->GetMax(), 8);
  EXPECT_EQ(b->GetInc(), 3);
  b->SetValue(5);
  EXPECT_THROW(b->SetValue(6), OutOfRangeException);
  t.integer("Hi")->SetValue(4);
  EXPECT_EQ(b->GetMax(), 4);
  EXPECT_THROW(b->SetValue(5), OutOfRangeException);
}

TEST(IntegerNode, ImposedLimitsOnlyNarrow) {
  TestMap t(
      "<Integer Name='A'><pValue>Src</pValue></Integer>"
      "<Integer Name='Src'><Value>5</Value><Min>0</Min><Max>10</Max></Integer>");
  const CIntegerPtr a = t.integer("A");
  a->ImposeMin(-3);
  a->ImposeMax(7);
  EXPECT_EQ(a->GetMin(), 0);
  EXPECT_EQ(a->GetMax(), 7);
  EXPECT_THROW(a->SetValue(8), OutOfRangeException);
  EXPECT_EQ(t.integer("Src")->GetMax(), 10);
  t.integer("Src")->ImposeMax(4);
  EXPECT_EQ(a->GetMax(), 4);
  t.integer("Src")->ImposeMax(9);
  EXPECT_EQ(a->GetMax(), 7);
}

TEST(IntegerNode, WritesAllCopiesInTheirOrder) {
  TestMap t("<Integer Name='A'><pValueCopy>C1</pValueCopy><pValue>V</pValue><pValueCopy>C2</pValueCopy></Integer>" +
            reg("IntReg", "C1", 0, 1, tag("Sign", "Signed")) + reg("IntReg", "V", 4, 2) + reg("IntReg", "C2", 8, 4));
  std::vector<int64_t> order;
  t.port.onWrite = [&](int64_t address, int64_t) { order.push_back(address); };
  const CIntegerPtr a = t.integer("A");
  // Largest minimum and smallest maximum of -128..127, 0..65535, 0..2^32-1.
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

TEST(IntegerNode, CopiesWithUnequalIncrementsAreNotWritable) {
  TestMap t(
      "<Integer Name='A'><pValue>V</pValue><pValueCopy>C</pValueCopy></Integer>"
      "<Integer Name='V'><Value>0</Value><Inc>2</Inc></Integer>"
      "<Integer Name='C'><Value>0</Value><pInc>Step</pInc></Integer>"
      "<Integer Name='Step'><Value>2</Value></Integer>");
  EXPECT_EQ(t.mode("A"), RW);
  t.integer("Step")->SetValue(4);
  EXPECT_EQ(t.mode("A"), RO);
  EXPECT_THROW(t.integer("A")->SetValue(8), AccessException);
}

TEST(IntegerNode, CopyRightsCountExceptReading) {
  for (const auto& [copy, expected] :
       std::vector<std::pair<std::string, EAccessMode>>{{"RW", RW}, {"WO", RW}, {"RO", RO}}) {
    TestMap t("<Integer Name='A'><pValue>V</pValue><pValueCopy>C</pValueCopy></Integer>" + reg("IntReg", "V", 0, 1) +
              reg("IntReg", "C", 1, 1, tag("AccessMode", copy)));
    EXPECT_EQ(t.mode("A"), expected) << copy;
  }
}

TEST(IntegerNode, TableFollowsItsIndex) {
  TestMap t(
      "<Integer Name='A'><pIndex>I</pIndex><ValueIndexed Index='0'>100</ValueIndexed>"
      "<pValueIndexed Index='1'>R</pValueIndexed><pValueIndexed Index='7'>K</pValueIndexed>"
      "<pValueDefault>D</pValueDefault></Integer>"
      "<Integer Name='I'><Value>0</Value></Integer>"
      "<Integer Name='D'><Value>44</Value><Min>40</Min><Max>50</Max><Unit>ms</Unit>"
      "<ValidValueSet>40;44;48</ValidValueSet></Integer>"
      "<IntSwissKnife Name='K'><Formula>3</Formula></IntSwissKnife>" +
      reg("IntReg", "R", 0, 1));
  const CIntegerPtr a = t.integer("A");
  const CIntegerPtr i = t.integer("I");
  t.port.poke(0, {9});
  EXPECT_EQ(a->GetValue(), 100);
  EXPECT_EQ(a->GetMax(), kHighest);
  a->SetValue(101);  // a constant of the table is a cell of its own
  EXPECT_EQ(a->GetValue(), 101);
  i->SetValue(1);
  EXPECT_EQ(a->GetValue(), 9);
  EXPECT_EQ(a->GetMax(), 255);
  a->SetValue(12);
  EXPECT_EQ(t.port.memory[0], 12);
  i->SetValue(7);
  EXPECT_EQ(t.mode("A"), RO);
  EXPECT_EQ(a->GetValue(), 3);
  i->SetValue(2);
  EXPECT_EQ(t.mode("A"), RW);
  EXPECT_EQ(a->GetValue(), 44);
  EXPECT_EQ(a->GetUnit(), "ms");
  EXPECT_EQ(a->GetIncMode(), listIncrement);
  EXPECT_THAT(validValues(a, true), ElementsAre(40, 44, 48));
  i->SetValue(0);
  EXPECT_EQ(a->GetValue(), 101);
  EXPECT_EQ(a->GetIncMode(), fixedIncrement);
  EXPECT_THAT(validValues(a, true), ElementsAre());
}

TEST(IntegerNode, DefaultConstantOfATableIsACellToo) {
  TestMap t(
      "<Integer Name='A'><pIndex>I</pIndex><ValueIndexed Index='1'>10</ValueIndexed>"
      "<ValueDefault>20</ValueDefault></Integer><Integer Name='I'><Value>5</Value></Integer>");
  const CIntegerPtr a = t.integer("A");
  EXPECT_EQ(a->GetValue(), 20);
  a->SetValue(21);
  t.integer("I")->SetValue(1);
  EXPECT_EQ(a->GetValue(), 10);
  t.integer("I")->SetValue(-9);
  EXPECT_EQ(a->GetValue(), 21);
}

TEST(IntegerNode, ValueSetAcceptsItsMembersInsideTheRange) {
  TestMap t(
      "<Integer Name='A'><Value>1</Value><Min>1</Min><Max>20</Max><Inc>7</Inc>"
      "<ValidValueSet>-4; 1;5;10;0x40</ValidValueSet></Integer>"
      "<Integer Name='B'><pValue>A</pValue><Max>9</Max></Integer>"
      "<Integer Name='None'><Value>1</Value></Integer>");
  const CIntegerPtr a = t.integer("A");
  EXPECT_EQ(a->GetIncMode(), listIncrement);
  EXPECT_THAT(validValues(a, false), ElementsAre(-4, 1, 5, 10, 64));
  EXPECT_THAT(validValues(a, true), ElementsAre(1, 5, 10));
  a->SetValue(5);
  EXPECT_THROW(a->SetValue(8), OutOfRangeException) << "on the grid of Inc, which a set overrules";
  EXPECT_THROW(a->SetValue(64), OutOfRangeException);
  const CIntegerPtr b = t.integer("B");
  EXPECT_THAT(validValues(b, true), ElementsAre(1, 5));
  EXPECT_THAT(validValues(b, false), ElementsAre(-4, 1, 5, 10, 64));
  b->SetValue(1);
  EXPECT_THROW(b->SetValue(10), OutOfRangeException);
  EXPECT_THAT(validValues(t.integer("None"), false), ElementsAre());
}

TEST(IntegerNode, OverAFloatRoundsHalfAwayFromZero) {
  TestMap t(
      "<Integer Name='A'><pValue>F</pValue></Integer>"
      "<Float Name='F'><Value>0</Value><Min>-10.5</Min><Max>1000.9</Max><Inc>2.1</Inc></Float>"
      "<Integer Name='B'><pValue>G</pValue><Min>0</Min><Max>10</Max></Integer><Float Name='G'><Value>0</Value></Float>"
      "<Integer Name='C'><pValue>G</pValue></Integer>");
  const CIntegerPtr a = t.integer("A");
  const CFloatPtr f = t.real("F");
  EXPECT_EQ(a->GetMin(), -10);
  EXPECT_EQ(a->GetMax(), 1000);
  EXPECT_EQ(a->GetInc(), 2);
  for (const auto& [value, expected] :
       std::vector<std::pair<double, int64_t>>{{2.5, 3}, {-2.5, -3}, {2.49, 2}, {0.5, 1}, {-0.4, 0}}) {
    f->SetValue(value);
    EXPECT_EQ(a->GetValue(), expected) << value;
  }
  a->SetValue(8);
  EXPECT_EQ(f->GetValue(), 8.0);

  const CFloatPtr g = t.real("G");
  EXPECT_EQ(t.integer("B")->GetInc(), 1);
  for (const double value : {1e200, 9223372036854775808.0}) {
    g->SetValue(value);
    EXPECT_THROW(t.integer("B")->GetValue(), RuntimeException) << value;
  }
  g->SetValue(1e200);
  EXPECT_EQ(refusal<RuntimeException>([&] { t.integer("B")->GetValue(); }),
            "B > G: 1e+200 does not fit a 64-bit integer");
  g->SetValue(-9223372036854775808.0);
  EXPECT_EQ(t.integer("B")->GetValue(), kLowest);
  EXPECT_THROW(t.integer("C")->GetMax(), RuntimeException) << "the largest double is no integer limit";
}

TEST(IntegerNode, OverABooleanIsOneOrZero) {
  TestMap t(
      "<Integer Name='A'><pValue>B</pValue></Integer>"
      "<Boolean Name='B'><pValue>V</pValue><OnValue>7</OnValue><OffValue>9</OffValue></Boolean>"
      "<Integer Name='V'><Value>9</Value></Integer>");
  const CIntegerPtr a = t.integer("A");
  EXPECT_EQ(a->GetValue(), 0);
  EXPECT_EQ(a->GetMin(), kLowest);
  EXPECT_EQ(a->GetMax(), kHighest);
  a->SetValue(-253);
  EXPECT_EQ(t.integer("V")->GetValue(), 7);
  EXPECT_EQ(a->GetValue(), 1);
  a->SetValue(0);
  EXPECT_EQ(t.integer("V")->GetValue(), 9);
}

TEST(IntegerNode, ElsewhereThanUnderPValueAnEnumerationGivesItsIntegerValue) {
  TestMap t(
      "<Enumeration Name='E'><EnumEntry Name='X'><Value>2</Value><NumericValue>50</NumericValue></EnumEntry>"
      "<Value>2</Value></Enumeration>"
      "<Integer Name='Over'><pValue>E</pValue></Integer>"
      "<Integer Name='Limited'><Value>0</Value><pMax>E</pMax></Integer>"
      "<Integer Name='Table'><pIndex>E</pIndex><ValueIndexed Index='2'>5</ValueIndexed><ValueIndexed Index='50'>6"
      "</ValueIndexed><ValueDefault>0</ValueDefault></Integer>"
      "<IntSwissKnife Name='K'><pVariable Name='X'>E</pVariable><Formula>X</Formula></IntSwissKnife>"
      "<IntReg Name='R'><pAddress>E</pAddress><Length>1</Length><AccessMode>RW</AccessMode>"
      "<pPort>Device</pPort></IntReg>");
  EXPECT_EQ(t.integer("Over")->GetValue(), 50);
  EXPECT_EQ(t.integer("Limited")->GetMax(), 2);
  EXPECT_EQ(t.integer("Table")->GetValue(), 5);
  EXPECT_EQ(t.integer("K")->GetValue(), 2);
  EXPECT_EQ(t.bytes("R")->GetAddress(), 2);
}

TEST(IntegerNode, UnreadableLimitsAreReported) {
  TestMap t(
      "<Integer Name='A'><Value>1</Value><pMax>Hi</pMax></Integer>"
      "<Integer Name='Hi'><Value>8</Value><pIsAvailable>On</pIsAvailable></Integer>"
      "<Integer Name='On'><Value>0</Value></Integer>");
  EXPECT_EQ(t.mode("A"), RW) << "limits do not take part in access modes";
  EXPECT_EQ(t.integer("A")->GetValue(), 1);
  EXPECT_THAT(refusal<AccessException>([&] { t.integer("A")->SetValue(2); }), HasSubstr("Hi: not readable"));
  t.integer("A")->SetValue(2, false);
  t.integer("On")->SetValue(1);
  EXPECT_EQ(t.integer("A")->GetMax(), 8);
}

// In schema 1.0 limits may depend on each other; in 1.1 that is refused at load.
TEST(IntegerNode, FeaturesThatLimitEachOther) {
  const std::string nodes =
      "<Integer Name='W'><Value>10</Value><pMax>WMax</pMax></Integer>"
      "<Integer Name='O'><Value>4</Value><pMax>OMax</pMax></Integer>"
      "<IntSwissKnife Name='WMax'><pVariable Name='O'>O</pVariable><Formula>100 - O</Formula></IntSwissKnife>"
      "<IntSwissKnife Name='OMax'><pVariable Name='W'>W</pVariable><Formula>100 - W</Formula></IntSwissKnife>";
  TestMap t(nodes, 0);
  EXPECT_EQ(t.integer("W")->GetMax(), 96);
  EXPECT_EQ(t.integer("O")->GetMax(), 90);
  t.integer("W")->SetValue(96);
  EXPECT_EQ(t.integer("O")->GetMax(), 4);
  EXPECT_THROW(t.integer("O")->SetValue(5), OutOfRangeException);
  t.integer("O")->SetValue(0);
  t.integer("W")->SetValue(100);
  EXPECT_THAT(refusal<RuntimeException>([&] { TestMap refused(nodes); }), HasSubstr("dependency cycle"));
}

TEST(IntegerNode, LimitsOfLimitsThatComeBackAreUnrestricted) {
  TestMap t(
      "<Integer Name='W'><Value>10</Value><pMax>WMax</pMax></Integer>"
      "<Integer Name='O'><Value>4</Value><pMax>OMax</pMax></Integer>"
      "<IntSwissKnife Name='WMax'><pVariable Name='O.Max'>O</pVariable><Formula>O.Max - 1</Formula></IntSwissKnife>"
      "<IntSwissKnife Name='OMax'><pVariable Name='W.Max'>W</pVariable><Formula>W.Max - 1</Formula></IntSwissKnife>",
      0);
  // Whoever is asked first sees the other one without restriction; the answer must not depend on what was asked before.
  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ(t.integer("W")->GetMax(), kHighest - 2);
    EXPECT_EQ(t.integer("O")->GetMax(), kHighest - 2);
  }
}

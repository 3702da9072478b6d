// Values as text, through the nodes that own them.
#include "NodeNames.h"

namespace {

struct Reading {
  int64_t value;
  const char* text;
};
struct Writing {
  const char* text;
  int64_t value;
};

struct IntegerForm {
  const char* representation;
  std::vector<Reading> readings;
  std::vector<Writing> writings;
  std::vector<const char*> refused;
};

TEST(TextForms, OfIntegersFollowTheirRepresentation) {
  const std::vector<const char*> kNoNumbers{"abc", "&hFF", "", " ", "1 2", "12x", "1.5", "0x", "9223372036854775808"};
  const std::vector<Writing> kNumbers{{"-14", -14}, {"+7", 7}, {"0x1F", 31}, {"0XfF", 255}, {" 12 ", 12}, {"010", 10}};
  const IntegerForm forms[] = {
      {"Linear", {{-14, "-14"}, {INT64_MIN, "-9223372036854775808"}}, {}, {"1.2.3.4", "true"}},
      {"Logarithmic", {{20, "20"}}, {}, {}},
      {"PureNumber", {{0, "0"}, {INT64_MAX, "9223372036854775807"}}, {}, {}},
      {"HexNumber",
       {{0x123456789abcdef, "0x123456789abcdef"}, {0, "0x0"}, {-2, "0xfffffffffffffffe"}},
       {{"0xfffffffffffffffe", -2}},
       {}},
      {"IPV4Address",
       {{0x56789abc, "86.120.154.188"}, {0x7f'ffff'56789abc, "86.120.154.188"}, {-1, "255.255.255.255"}},
       {{"86.120.154.188", 0x56789abc}, {"0.0.0.1", 1}},
       {"256.0.0.1", "1.2.3", "1.2.3.4.5", "1..2.3", "12:34:56:78:9a:bc"}},
      {"MACAddress",
       {{0x123456789abc, "12:34:56:78:9a:bc"}, {0x7f00123456789abc, "12:34:56:78:9a:bc"}},
       {{"12:34:56:78:9A:Bc", 0x123456789abc}},
       {"12:34:56:78:9a", "12:34:56:78:9a:bc:de", "12-34-56-78-9a-bc", "1.2.3.4"}},
      {"Boolean", {{1, "true"}, {-5, "true"}, {0, "false"}}, {{"true", 1}, {"false", 0}}, {"True", "yes"}},
  };
  for (const IntegerForm& form : forms) {
    SCOPED_TRACE(form.representation);
    TestMap map("<Integer Name=\"X\"><Value>0</Value>" + tag("Representation", form.representation) + "</Integer>");
    for (const Reading& each : form.readings) {
      map.integer("X")->SetValue(each.value);
      EXPECT_STREQ(map.value("X")->ToString(), each.text) << each.value;
    }
    std::vector<Writing> accepted = kNumbers;
    accepted.insert(accepted.end(), form.writings.begin(), form.writings.end());
    for (const Writing& each : accepted) {
      map.value("X")->FromString(each.text);
      EXPECT_EQ(map.integer("X")->GetValue(), each.value) << each.text;
    }
    std::vector<const char*> refused = kNoNumbers;
    refused.insert(refused.end(), form.refused.begin(), form.refused.end());
    for (const char* each : refused) EXPECT_THROW(map.value("X")->FromString(each), InvalidArgumentException) << each;
  }
}

TEST(TextForms, OfFloatsFollowNotationAndPrecision) {
  struct {
    const char* value;
    const char* display;
    const char* text;
  } const cases[] = {
      {"12.3456789", "", "12.3457"},
      {"12.3456789e99", "", "1.23457e+100"},
      {"12.3456789", "<DisplayNotation>Automatic</DisplayNotation><DisplayPrecision>3</DisplayPrecision>", "12.3"},
      {"12.3456789", "<DisplayNotation>Scientific</DisplayNotation><DisplayPrecision>4</DisplayPrecision>",
       "1.2346e+01"},
      {"12.3456789", "<DisplayNotation>Fixed</DisplayNotation><DisplayPrecision>5</DisplayPrecision>", "12.34568"},
      {"3.14159", "<Max>3.14159</Max><DisplayNotation>Fixed</DisplayNotation><DisplayPrecision>4</DisplayPrecision>",
       "3.1415"},
      {"3.14159", "<Max>4</Max><DisplayNotation>Fixed</DisplayNotation><DisplayPrecision>4</DisplayPrecision>",
       "3.1416"},
      {"-3.14159", "<Min>-3.14159</Min><DisplayNotation>Fixed</DisplayNotation><DisplayPrecision>4</DisplayPrecision>",
       "-3.1415"},
      {"0.26", "<Min>0.26</Min><DisplayPrecision>1</DisplayPrecision>", "0.3"},
      {"0.24", "<Min>0.24</Min><DisplayPrecision>1</DisplayPrecision>", "0.3"},
      {"0.24", "<Min>0.24</Min><Max>0.24</Max><DisplayPrecision>1</DisplayPrecision>", "0.2"},
      {"1.7976931348623157e308", "<DisplayPrecision>15</DisplayPrecision>", "1.79769313486231e+308"},
      {"-1.79769313486232E+308", "<DisplayPrecision>15</DisplayPrecision>", "-1.79769313486231e+308"},
      {"0", "", "0"},
      {"INF", "", "inf"},
      {"-INF", "", "-inf"},
      {"NaN", "", "nan"},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(std::string(each.value) + each.display);
    TestMap map("<Float Name=\"X\">" + tag("Value", each.value) + each.display + "</Float>");
    EXPECT_STREQ(map.value("X")->ToString(), each.text);
  }
}

TEST(TextForms, OfAFloatPassItsOwnRangeCheck) {
  TestMap map(
      "<Float Name=\"X\"><Value>3.14159</Value><Min>-3.14159</Min><Max>3.14159</Max>"
      "<DisplayNotation>Fixed</DisplayNotation><DisplayPrecision>4</DisplayPrecision></Float>");
  for (const double each : {3.14159, -3.14159, 0.00005, 2.99999}) {
    map.real("X")->SetValue(each);
    EXPECT_NO_THROW(map.value("X")->FromString(map.value("X")->ToString())) << each;
  }
}

TEST(TextForms, OfAFloatStandAsPrintedWhereItsLimitsCannotBeRead) {
  TestMap map("<Float Name=\"X\"><Value>1.23456789</Value><pMax>Limit</pMax></Float>" + reg("FloatReg", "Limit", 0, 4));
  map.port.onRead = [](int64_t, int64_t) { throw TIMEOUT_EXCEPTION("no answer"); };
  EXPECT_STREQ(map.value("X")->ToString(), "1.23457");
  map.port.counts();
  map.real("X")->SetValue(0.5, false);
  EXPECT_STREQ(map.value("X")->ToString(), "0.5");
  EXPECT_EQ(map.port.counts(), "0r0w") << "no limits needed where the text is the value";
}

TEST(TextForms, OfFloatsAreReadLikeNumbersInDescriptions) {
  TestMap map("<Float Name=\"X\"><Value>0</Value><Max>1000</Max></Float>");
  const std::pair<const char*, double> accepted[] = {{".5", 0.5},      {"1.", 1},    {"1e+02", 100}, {"-2E-3", -0.002},
                                                     {" 7.25 ", 7.25}, {"-12", -12}, {"0x10", 16}};
  for (const auto& [text, value] : accepted) {
    map.value("X")->FromString(text);
    EXPECT_EQ(map.real("X")->GetValue(), value) << text;
  }
  for (const char* each : {"abc", "", " ", "1,5", "1.5x", "1 2", "NaN", "nan", "0x", "1e400"}) {
    EXPECT_THROW(map.value("X")->FromString(each), InvalidArgumentException) << each;
  }
  EXPECT_THROW(map.value("X")->FromString("1000.5"), OutOfRangeException);
  EXPECT_THROW(map.value("X")->FromString("INF"), OutOfRangeException);
  EXPECT_EQ(map.real("X")->GetValue(), 16);
}

TEST(TextForms, OfBooleansAreOneAndZero) {
  TestMap map(
      "<Boolean Name=\"X\"><pValue>Raw</pValue><OnValue>7</OnValue><OffValue>3</OffValue></Boolean>"
      "<Integer Name=\"Raw\"><Value>3</Value></Integer>");
  const std::pair<const char*, bool> accepted[] = {{"1", true}, {"0", false}, {"true", true}, {"false", false}};
  for (const auto& [text, value] : accepted) {
    map.value("X")->FromString(text);
    EXPECT_EQ(map.integer("Raw")->GetValue(), value ? 7 : 3) << text;
    EXPECT_STREQ(map.value("X")->ToString(), value ? "1" : "0") << text;
  }
  for (const char* each : {"X", "", "7", "True", "2"}) {
    EXPECT_THROW(map.value("X")->FromString(each), InvalidArgumentException) << each;
  }
}

TEST(TextForms, OfEnumerationsAreSymbolicNames) {
  TestMap map(R"(
    <Enumeration Name="Mode">
      <EnumEntry Name="Off"><Value>0</Value></EnumEntry>
      <EnumEntry Name="Timed"><Value>1</Value><Symbolic>ByTime</Symbolic></EnumEntry>
      <EnumEntry Name="Away"><pIsAvailable>Zero</pIsAvailable><Value>2</Value></EnumEntry>
      <pValue>Raw</pValue>
    </Enumeration>
    <Integer Name="Raw"><Value>0</Value></Integer>
    <Integer Name="Zero"><Value>0</Value></Integer>)");
  IValue* mode = map.value("Mode");
  mode->FromString("ByTime");
  EXPECT_EQ(map.integer("Raw")->GetValue(), 1);
  EXPECT_STREQ(mode->ToString(), "ByTime");
  for (const char* each : {"Timed", "off", "", " Off", "1", "EnumEntry_Mode_Off"}) {
    EXPECT_THROW(mode->FromString(each), InvalidArgumentException) << each;
  }
  EXPECT_EQ(refusal<InvalidArgumentException>([&] { mode->FromString("Mono9"); }), "Mode: no entry named 'Mono9'");
  EXPECT_EQ(refusal<AccessException>([&] { mode->FromString("Away"); }), "Mode: entry 'Away' is not available");

  map.integer("Raw")->SetValue(2);
  EXPECT_STREQ(mode->ToString(), "Away");
  EXPECT_THROW(mode->ToString(true), AccessException);
  map.integer("Raw")->SetValue(77);
  EXPECT_EQ(refusal<InvalidArgumentException>([&] { mode->ToString(); }), "Mode: no entry with value 77");
}

TEST(TextForms, OfRegistersAreAllTheirBytes) {
  TestMap map(reg("Register", "Lut", 4, 3));
  IValue* lut = map.value("Lut");
  map.port.poke(4, {0x00, 0x1f, 0xab});
  EXPECT_STREQ(lut->ToString(), "0x001fab");
  for (const char* each : {"0xDEADbe", "0Xdeadbe"}) {
    map.port.poke(4, {0, 0, 0});
    lut->FromString(each);
    EXPECT_EQ(map.port.peek(4, 3), (std::vector<uint8_t>{0xde, 0xad, 0xbe})) << each;
  }
  for (const char* each : {"1", "0x", "0x1", "", "deadbe", "0xdeadb", "0xdeadbeef", "0xdeadbg", "abc"}) {
    EXPECT_THROW(lut->FromString(each), InvalidArgumentException) << each;
  }
  EXPECT_EQ(refusal<InvalidArgumentException>([&] { lut->FromString("0xdead"); }),
            "Lut: register text needs 0x and 6 hex digits, got 4");
  EXPECT_EQ(map.port.peek(4, 3), (std::vector<uint8_t>{0xde, 0xad, 0xbe}));
}

TEST(TextForms, OfNodesWithoutAValueCannotBeWritten) {
  TestMap map(R"(
    <Category Name="Root"><pFeature>Mode</pFeature></Category>
    <Node Name="Plain"/>
    <Enumeration Name="Mode"><EnumEntry Name="Off"><Value>12</Value></EnumEntry><Value>12</Value></Enumeration>)");
  const std::pair<const char*, const char*> texts[] = {{"Root", "Root"}, {"Plain", ""}, {"EnumEntry_Mode_Off", "12"}};
  for (const auto& [name, text] : texts) {
    EXPECT_STREQ(map.value(name)->ToString(), text);
    EXPECT_THROW(map.value(name)->FromString(text), AccessException) << name;
    EXPECT_THROW(map.value(name)->FromString(text, false), AccessException) << name;
  }
}

TEST(TextForms, OfStringsAreTheStringsThemselves) {
  TestMap map("<String Name=\"Held\"><Value> kept </Value></String>" + reg("StringReg", "Id", 0, 4));
  EXPECT_STREQ(map.value("Held")->ToString(), " kept ");
  map.value("Held")->FromString("");
  EXPECT_STREQ(map.value("Held")->ToString(), "");
  map.value("Id")->FromString("\xc3\xa4z");
  EXPECT_STREQ(map.value("Id")->ToString(), "\xc3\xa4z");
  EXPECT_THROW(map.value("Id")->FromString("five5"), OutOfRangeException);
}

TEST(TextForms, AreReadAndWrittenLikeTheValues) {
  TestMap map(reg("IntReg", "X", 0, 4, "<pIsLocked>Locked</pIsLocked>") +
              "<Integer Name=\"Locked\"><Value>0</Value></Integer>"
              "<Integer Name=\"Narrow\"><pValue>X</pValue><Max>10</Max></Integer>");
  EXPECT_STREQ(map.value("Narrow")->ToString(), "0");
  map.port.poke(0, {20});
  EXPECT_STREQ(map.value("Narrow")->ToString(), "0");
  EXPECT_STREQ(map.value("Narrow")->ToString(false, true), "20");
  EXPECT_THROW(map.value("Narrow")->ToString(true), OutOfRangeException);
  EXPECT_THROW(map.value("Narrow")->FromString("11"), OutOfRangeException);
  map.value("Narrow")->FromString("11", false);
  EXPECT_EQ(map.port.peek(0, 1)[0], 11);
  map.integer("Locked")->SetValue(1);
  EXPECT_THROW(map.value("X")->FromString("nonsense"), AccessException);
  EXPECT_EQ(refusal<InvalidArgumentException>([&] { map.value("X")->FromString("abc", false); }),
            "X: 'abc' is not an integer");
}

}  // namespace

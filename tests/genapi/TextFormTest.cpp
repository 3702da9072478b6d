// Values as text, through the nodes that own them.
#include "NodeNames.h"

namespace {

TEST(TextForms, OfIntegersFollowTheirRepresentation) {
  const std::tuple<const char*, int64_t, const char*, const char*> cases[] = {
      // representation, value, its text, a text of another representation
      {"Linear", INT64_MIN, "-9223372036854775808", "1.2.3.4"},
      {"Logarithmic", 20, "20", "true"},
      {"PureNumber", INT64_MAX, "9223372036854775807", "true"},
      {"HexNumber", -2, "0xfffffffffffffffe", "true"},
      {"IPV4Address", 0x56789abc, "86.120.154.188", "12:34:56:78:9a:bc"},
      {"MACAddress", 0x123456789abc, "12:34:56:78:9a:bc", "1.2.3.4"},
      {"Boolean", 1, "true", "True"},
  };
  for (const auto& [representation, value, text, other] : cases) {
    SCOPED_TRACE(representation);
    TestMap map("<Integer Name=\"X\"><Value>0</Value>" + tag("Representation", representation) + "</Integer>");
    map.integer("X")->SetValue(value);
    EXPECT_STREQ(map.value("X")->ToString(), text);
    for (const char* number : {text, " 12 ", "0x1F"}) {
      map.value("X")->FromString(number);
      EXPECT_EQ(map.integer("X")->GetValue(), number == text ? value : number[0] == ' ' ? 12 : 31);
    }
    for (const char* refused : {other, "", "1 2", "1.2.3.256"})
      EXPECT_THROW(map.value("X")->FromString(refused), InvalidArgumentException) << refused;
  }
}

TEST(TextForms, OfFloatsFollowNotationAndPrecision) {
  struct {
    const char* value;
    const char* display;
    const char* text;
  } const cases[] = {
      {"12.3456789", "", "12.3457"},
      {"12.3456789", "<DisplayNotation>Automatic</DisplayNotation><DisplayPrecision>3</DisplayPrecision>", "12.3"},
      {"12.3456789", "<DisplayNotation>Scientific</DisplayNotation><DisplayPrecision>4</DisplayPrecision>",
       "1.2346e+01"},
      {"12.3456789", "<DisplayNotation>Fixed</DisplayNotation><DisplayPrecision>5</DisplayPrecision>", "12.34568"},
      {"3.14159", "<Max>3.14159</Max><DisplayNotation>Fixed</DisplayNotation><DisplayPrecision>4</DisplayPrecision>",
       "3.1415"},
      {"-3.14159", "<Min>-3.14159</Min><DisplayNotation>Fixed</DisplayNotation><DisplayPrecision>4</DisplayPrecision>",
       "-3.1415"},
      {"0.24", "<Min>0.24</Min><Max>0.24</Max><DisplayPrecision>1</DisplayPrecision>", "0.2"},
      {"-1.79769313486232E+308", "<DisplayPrecision>15</DisplayPrecision>", "-1.79769313486231e+308"},
      {"12.3456789", "<DisplayPrecision>-1</DisplayPrecision>", "12.3457"},
      {"NaN", "", "nan"},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(std::string(each.value) + each.display);
    TestMap map("<Float Name=\"X\">" + tag("Value", each.value) + each.display + "</Float>");
    EXPECT_STREQ(map.value("X")->ToString(), each.text);
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
  for (const auto& [text, value] : {std::pair{".5", 0.5}, {" 7.25 ", 7.25}, {"0x10", 16.0}}) {
    map.value("X")->FromString(text);
    EXPECT_EQ(map.real("X")->GetValue(), value) << text;
  }
  for (const char* each : {"abc", "", "1,5", "NaN", "1e400"})
    EXPECT_THROW(map.value("X")->FromString(each), InvalidArgumentException) << each;
  for (const char* each : {"1000.5", "INF"}) EXPECT_THROW(map.value("X")->FromString(each), OutOfRangeException);
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
  for (const char* each : {"X", "", "7", "True", "2"})
    EXPECT_THROW(map.value("X")->FromString(each), InvalidArgumentException) << each;
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
  for (const char* each : {"Timed", "off", "", " Off", "1", "EnumEntry_Mode_Off"})
    EXPECT_THROW(mode->FromString(each), InvalidArgumentException) << each;
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
  lut->FromString("0XDEADbe");
  for (const char* each : {"", "deadbe", "0xdead", "0xdeadbeef", "0xdeadbg"})
    EXPECT_THROW(lut->FromString(each), InvalidArgumentException) << each;
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
  for (const char* name : {"Held", "Id"}) {
    for (const char* text : {"\xc3\xa4z", ""}) {
      map.value(name)->FromString(text);
      EXPECT_STREQ(map.value(name)->ToString(), text) << name;
    }
  }
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

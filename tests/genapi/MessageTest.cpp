// What refusals say: the way from the node that was addressed to the one that refused, then the facts.
#include "TestMap.h"

namespace {

TEST(Messages, TellTheWayToTheNodeThatRefusedAndWhy) {
  TestMap map(R"(
    <Integer Name="ExposureTime"><pIsLocked>TLParamsLocked</pIsLocked><Value>0</Value></Integer>
    <Integer Name="TLParamsLocked"><Value>1</Value></Integer>
    <Float Name="TriggerDelay"><pIsAvailable>TriggerOn</pIsAvailable><Value>0</Value></Float>
    <Integer Name="TriggerOn"><Value>0</Value></Integer>
    <Integer Name="Width"><pValue>WidthReg</pValue><Min>0</Min><Max>100000</Max><Inc>1</Inc></Integer>
    <Integer Name="WidthReg"><Value>16</Value><Min>16</Min><Max>1920</Max></Integer>
    <Integer Name="Stepped"><Value>10</Value><Min>10</Min><Max>100</Max><Inc>2</Inc></Integer>
    <Float Name="Gain"><Value>0</Value><Min>-0.5</Min><Max>0.1</Max></Float>
    <Integer Name="Ticks"><pValue>Frequency</pValue></Integer>
    <Float Name="Frequency"><Value>1e200</Value></Float>)");
  EXPECT_EQ(refusal<AccessException>([&] { map.integer("ExposureTime")->SetValue(1); }),
            "ExposureTime: not writable: access mode is RO, locked by 'TLParamsLocked' (value 1)");
  EXPECT_EQ(refusal<AccessException>([&] { map.real("TriggerDelay")->GetValue(); }),
            "TriggerDelay: not readable: access mode is NA, 'TriggerOn' is 0");
  const std::tuple<const char*, int64_t, const char*> refused[] = {
      {"Width", 5000, "Width > WidthReg: value 5000 must be at most Max = 1920"},
      {"Width", 3, "Width > WidthReg: value 3 must be at least Min = 16"},
      {"WidthReg", 5000, "WidthReg: value 5000 must be at most Max = 1920"},
      {"Stepped", 21, "Stepped: value 21 must be Min 10 plus a multiple of Inc 2"}};
  for (const auto& [name, value, text] : refused)
    EXPECT_EQ(refusal<OutOfRangeException>([&, n = name, v = value] { map.integer(n)->SetValue(v); }), text);
  EXPECT_EQ(refusal<OutOfRangeException>([&] { map.real("Gain")->SetValue(0.2); }),
            "Gain: value 0.2 must be at most Max = 0.1");
  EXPECT_EQ(refusal<OutOfRangeException>([&] { map.real("Gain")->SetValue(-HUGE_VAL); }),
            "Gain: value -INF must be at least Min = -0.5");
  EXPECT_EQ(refusal<RuntimeException>([&] { map.integer("Ticks")->GetValue(); }),
            "Ticks > Frequency: 1e+200 does not fit a 64-bit integer");
}

TEST(Messages, TellWhichTextOrBufferDidNotDo) {
  TestMap map("<Integer Name=\"Width\"><Value>0</Value></Integer>" + reg("Register", "Lut", 0, 128));
  const auto text = [&](const char* name, const char* given) {
    return refusal<InvalidArgumentException>([&] { map.value(name)->FromString(given); });
  };
  EXPECT_EQ(text("Width", "abc"), "Width: 'abc' is not an integer");
  EXPECT_EQ(text("Lut", "0x0123456789ab"), "Lut: register text needs 0x and 256 hex digits, got 12");
}

TEST(Messages, StayOneLineWhateverTheCallerGave) {
  TestMap map(
      "<Integer Name=\"Width\"><Value>0</Value></Integer>"
      "<Enumeration Name=\"Mode\"><EnumEntry Name=\"Off\"><Value>0</Value></EnumEntry><Value>0</Value>"
      "</Enumeration><Boolean Name=\"Flag\"><Value>false</Value></Boolean>"
      "<Float Name=\"Gain\"><Value>0</Value></Float>"
      "<Command Name=\"Go\"><Value>0</Value><CommandValue>1</CommandValue></Command>");
  const std::string longText(100'000, 'x');
  for (const char* each : {"Width", "Mode", "Flag", "Gain", "Go"}) {
    const auto said = [&](const std::string& given) {
      return refusal<InvalidArgumentException>([&] { map.value(each)->FromString(given.c_str()); });
    };
    EXPECT_LT(said(longText).size(), 200U) << each;
    EXPECT_THAT(said("%s%n%d"), testing::HasSubstr("%s%n%d")) << each;
    EXPECT_THAT(said("two\nlines"), testing::Not(testing::HasSubstr("\n"))) << each;
  }
}

}  // namespace

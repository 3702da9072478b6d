#include <Base/GCException.h>
#include <Base/GCString.h>
#include <Base/GCStringVector.h>
#include <Base/GCUtilities.h>
#include <FirmwareUpdate/FirmwareUpdateExceptions.h>
#include <GenApi/EnumClasses.h>
#include <gtest/gtest.h>

#include <map>
#include <sstream>
#include <string>

using namespace GENICAM_NAMESPACE;
using namespace GENAPI_NAMESPACE;

TEST(GcString, TakesNullAsEmptyKeepsNulsAndOrdersByUnsignedBytes) {
  EXPECT_TRUE(gcstring(static_cast<const char*>(nullptr)).empty());
  EXPECT_TRUE(gcstring(nullptr, 0).empty());
  const gcstring twoParts("a\0b", 3);
  EXPECT_EQ(3u, twoParts.size());
  EXPECT_NE(twoParts, gcstring("a"));
  EXPECT_EQ("xxx", gcstring(3, 'x'));
  EXPECT_EQ(std::string_view("abc"), gcstring(std::string("abc")).view());
  const std::map<gcstring, int> ordered{{"\xC3\xA4", 3}, {"a", 1}, {"z", 2}};
  std::string keys;
  for (const auto& [key, unused] : ordered) keys += key.c_str();
  EXPECT_EQ("az\xC3\xA4", keys);
  const gcstring text("b");
  EXPECT_TRUE(text < "c" && "a" < text && text == "b" && text != "a" && text > "a");
  gcstring_vector list;
  list.push_back("b");
  list.insert(list.begin(), "a");
  EXPECT_EQ("b", list.at(1));
  EXPECT_THROW(list.at(2), std::out_of_range);
}

TEST(GcString, SearchesEditsConcatenatesAndGoesThroughStreams) {
  gcstring text("Gain");
  text += 'R';
  text += "aw";
  EXPECT_EQ("GainRaw", text);
  EXPECT_EQ(4u, text.find("Raw"));
  EXPECT_EQ(gcstring::_npos(), text.find('x'));
  EXPECT_EQ(1u, text.find_first_of("ian"));
  EXPECT_EQ(4u, text.find_first_not_of("Gain"));
  EXPECT_EQ("Raw", text.substr(4));
  EXPECT_EQ("GainAbs", text.replace(4, 3, "Abs"));
  EXPECT_EQ("Gain", text.erase(4));
  EXPECT_EQ("<Gain>", "<" + text + ">");
  EXPECT_THROW(text.substr(9), std::out_of_range);
  std::istringstream input("two words\nnext");
  gcstring line, word;
  getline(input, line);
  input >> word;
  std::ostringstream output;
  output << line << '|' << word;
  EXPECT_EQ("two words|next", output.str());
}

TEST(Exceptions, CarryTheirTextUndecoratedAndShareItWhenCopied) {
  const RuntimeException original("100% of 'X'", "file.cpp", 17);
  const RuntimeException copy = original;
  EXPECT_STREQ("100% of 'X'", copy.what());
  EXPECT_EQ(original.GetDescription(), copy.GetDescription());
  EXPECT_STREQ("file.cpp", copy.GetSourceFileName());
  EXPECT_EQ(17u, copy.GetSourceLine());
  static_assert(std::is_nothrow_copy_constructible_v<GenericException>);
  EXPECT_STREQ("", AccessException(nullptr, nullptr, 1u, nullptr).what());
}

TEST(Exceptions, CutTextsThatAreTooLongBeforeABrokenCharacter) {
  EXPECT_THROW(throw GENERIC_EXCEPTION("x"), GenericException);
  EXPECT_THROW(throw BAD_ALLOC_EXCEPTION("x"), BadAllocException);
  EXPECT_THROW(throw PROPERTY_EXCEPTION("x"), PropertyException);
  EXPECT_THROW(throw FIRMWARE_EXCEPTION(FormatException)("x"), FormatException);
  EXPECT_STREQ("no node named 'Width' among 3", RUNTIME_EXCEPTION("no node named '%s' among %d", "Width", 3).what());
  const std::string filler(kMaxReportedTextBytes - 2, 'x');  // leaves room for one more byte
  EXPECT_EQ(filler + "y", RUNTIME_EXCEPTION("%syz", filler.c_str()).GetDescription());
  EXPECT_EQ(filler, RUNTIME_EXCEPTION("%s\xC3\xA4", filler.c_str()).GetDescription());
  const std::string shorter = filler.substr(1);
  EXPECT_EQ(shorter + "\xC3\xA4", RUNTIME_EXCEPTION("%s\xC3\xA4z", shorter.c_str()).GetDescription());
}

TEST(IntegralCast, RefusesWhatDoesNotFit) {
  EXPECT_EQ(255, INTEGRAL_CAST<uint8_t>(255));
  EXPECT_EQ(-1, (INTEGRAL_CAST2<int64_t, int32_t>(-1)));
  EXPECT_EQ(INT64_MAX, INTEGRAL_CAST<int64_t>(static_cast<uint64_t>(INT64_MAX)));
  EXPECT_THROW(INTEGRAL_CAST<uint8_t>(256), RuntimeException);
  EXPECT_THROW(INTEGRAL_CAST<uint64_t>(-1), RuntimeException);
  EXPECT_THROW(INTEGRAL_CAST<int64_t>(UINT64_MAX), RuntimeException);
  EXPECT_THROW(INTEGRAL_CAST<int32_t>(int64_t{INT32_MAX} + 1), RuntimeException);
}

TEST(AccessModes, CombineToTheRightsThatBothLeave) {
  const EAccessMode modes[] = {NI, NA, WO, RO, RW};
  const EAccessMode expected[5][5] = {
      {NI, NI, NI, NI, NI}, {NI, NA, NA, NA, NA}, {NI, NA, WO, NA, WO}, {NI, NA, NA, RO, RO}, {NI, NA, WO, RO, RW}};
  for (int a = 0; a < 5; ++a) {
    for (int b = 0; b < 5; ++b) EXPECT_EQ(expected[a][b], Combine(modes[a], modes[b])) << a << ' ' << b;
  }
  EXPECT_EQ(NoCache, Combine(WriteThrough, NoCache));
  EXPECT_EQ(WriteAround, Combine(WriteAround, WriteThrough));
  EXPECT_EQ(Guru, Combine(Guru, Expert));
}

TEST(EnumClasses, SpeakTheWordsOfDescriptions) {
  EXPECT_EQ("_UndefinedAccesMode", EAccessModeClass::ToString(_UndefinedAccesMode));
  EXPECT_EQ("_CycleDetectAccesMode", EAccessModeClass::ToString(_CycleDetectAccesMode));
  EXPECT_EQ("Fixed", EDisplayNotationClass::ToString(fnFixed));
  ERepresentation representation = Linear;
  EXPECT_TRUE(ERepresentationClass::FromString("HexNumber", &representation));
  EXPECT_EQ(HexNumber, representation);
  EXPECT_FALSE(ERepresentationClass::FromString("hexnumber", &representation));
  EXPECT_FALSE(ERepresentationClass::FromString("_UndefinedRepresentation", &representation));
  EXPECT_EQ(HexNumber, representation);
  EXPECT_FALSE(EYesNoClass::FromString("Yes", nullptr));
}

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
  for (int a = 0; a < 5; ++a)
    for (int b = 0; b < 5; ++b) EXPECT_EQ(expected[a][b], Combine(modes[a], modes[b])) << a << ' ' << b;
  EXPECT_EQ(NoCache, Combine(WriteThrough, NoCache));
  EXPECT_EQ(WriteAround, Combine(WriteAround, WriteThrough));
  EXPECT_EQ(Guru, Combine(Guru, Expert));
}

// Enumerations whose entries clear themselves: reads past the cache until the device shows another value.
#include "NodeNames.h"

namespace {

using testing::IsEmpty;

const std::string kBalance = R"(
  <Enumeration Name="Balance">
    <EnumEntry Name="Off"><Value>0</Value></EnumEntry>
    <EnumEntry Name="Once"><Value>1</Value><IsSelfClearing>Yes</IsSelfClearing></EnumEntry>
    <EnumEntry Name="Twice"><Value>2</Value><IsSelfClearing>Yes</IsSelfClearing></EnumEntry>
    <pValue>Raw</pValue>
  </Enumeration>)" + reg("IntReg", "Raw", 0, 4) +
                             reg("IntReg", "Result", 4, 4, "<pInvalidator>Balance</pInvalidator>");

TEST(SelfClearing, DropsDependentsSilentlyWhenAReadSeesTheChange) {
  TestMap map(kBalance);
  map.enumeration("Balance")->SetIntValue(1);
  EXPECT_EQ(map.integer("Result")->GetValue(), 0);
  CallLog log;
  log.watch(map, {"Balance", "Raw", "Result"});
  map.port.poke(4, {42});
  EXPECT_EQ(map.enumeration("Balance")->GetIntValue(), 1);
  EXPECT_EQ(map.integer("Result")->GetValue(), 0) << "nothing has happened yet";
  map.port.poke(0, {2});
  EXPECT_EQ(map.enumeration("Balance")->GetIntValue(), 2) << "another entry that clears itself";
  EXPECT_EQ(map.integer("Result")->GetValue(), 42);
  map.port.poke(4, {43});
  map.port.poke(0, {0});
  EXPECT_EQ(map.enumeration("Balance")->GetIntValue(), 0);
  EXPECT_EQ(map.integer("Result")->GetValue(), 43);
  EXPECT_THAT(log.take(), IsEmpty());
}

}  // namespace

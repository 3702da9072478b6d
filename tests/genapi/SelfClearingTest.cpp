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

TEST(SelfClearing, IsReadPastTheCacheWhileItLasts) {
  TestMap map(kBalance);
  IEnumeration* balance = map.enumeration("Balance");
  EXPECT_TRUE(CEnumEntryPtr(map.node("EnumEntry_Balance_Once"))->IsSelfClearing());
  EXPECT_FALSE(CEnumEntryPtr(map.node("EnumEntry_Balance_Off"))->IsSelfClearing());
  balance->GetIntValue();
  map.port.counts();
  balance->GetIntValue();
  EXPECT_EQ(map.port.counts(), "0r0w");

  balance->SetIntValue(1);
  map.port.counts();
  balance->GetIntValue();
  balance->ToString();
  balance->GetCurrentEntry();
  EXPECT_EQ(map.port.counts(), "3r0w");
  map.port.poke(0, {0});
  EXPECT_EQ(balance->GetIntValue(), 0);
  EXPECT_EQ(map.port.counts(), "1r0w");
  balance->GetIntValue();
  EXPECT_EQ(map.port.counts(), "0r0w") << "an ordinary value again";
}

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

TEST(SelfClearing, ShowsThroughTheNodesAbove) {
  TestMap map(kBalance +
              "<Integer Name=\"Number\"><pValue>Balance</pValue></Integer>"
              "<IntSwissKnife Name=\"Busy\"><pVariable Name=\"B\">Balance</pVariable>"
              "<Formula>B &lt;&gt; 0</Formula></IntSwissKnife>");
  map.enumeration("Balance")->SetIntValue(1);
  EXPECT_EQ(map.integer("Number")->GetValue(), 1);
  EXPECT_EQ(map.integer("Busy")->GetValue(), 1);
  map.port.poke(0, {0});
  EXPECT_EQ(map.enumeration("Balance")->GetIntValue(), 0);
  EXPECT_EQ(map.integer("Number")->GetValue(), 0);
  EXPECT_EQ(map.integer("Busy")->GetValue(), 0);
}

}  // namespace

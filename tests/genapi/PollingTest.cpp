// What the passing of time does to nodes with a polling time.
#include "NodeNames.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// How often each of the calls, one after the other, makes the watched node fire.
std::vector<size_t> firings(TestMap& map, CallLog& log, const std::vector<int64_t>& steps) {
  std::vector<size_t> counts;
  for (const int64_t each : steps) {
    map.map->Poll(each);
    counts.push_back(log.take().size());
  }
  return counts;
}

TEST(Polling, OfARegisterFiresOncePerPeriodWithEverythingAboveIt) {
  TestMap map("<Integer Name=\"Top\"><pValue>Raw</pValue></Integer>" +
              reg("IntReg", "Raw", 0, 4, "<PollingTime>1000</PollingTime>"));
  CallLog log;
  log.watch(map, {"Top", "Raw"});
  EXPECT_EQ(map.node("Raw")->GetPollingTime(), 1000);
  EXPECT_EQ(map.node("Top")->GetPollingTime(), -1);

  EXPECT_EQ(map.integer("Top")->GetValue(), 0);
  map.port.poke(0, {7});
  map.map->Poll(500);
  EXPECT_THAT(log.take(), IsEmpty());
  EXPECT_EQ(map.integer("Top")->GetValue(), 0) << "still from the cache";
  map.map->Poll(500);
  EXPECT_THAT(log.take(), ElementsAre("Top", "Raw"));
  EXPECT_EQ(map.integer("Top")->GetValue(), 7);
  EXPECT_EQ(firings(map, log, {500, 500, 999, 1}), (std::vector<size_t>{0, 2, 0, 2}));
  EXPECT_EQ(firings(map, log, {10'000, 999, 1}), (std::vector<size_t>{2, 0, 2})) << "once, however late";
  EXPECT_EQ(firings(map, log, {INT64_MAX, 999, 1}), (std::vector<size_t>{2, 0, 2}));
}

TEST(Polling, TakesNoTimeButNoNegativeTime) {
  TestMap map(reg("IntReg", "Always", 0, 4, "<PollingTime>0</PollingTime>") +
              reg("IntReg", "Sometimes", 4, 4, "<PollingTime>1</PollingTime>") +
              reg("IntReg", "Never", 8, 4, "<PollingTime>-1</PollingTime>"));
  CallLog log;
  log.watch(map, {"Always", "Sometimes", "Never"});
  map.map->Poll(0);
  EXPECT_THAT(log.take(), ElementsAre("Always")) << "due at every call";
  EXPECT_THROW(map.map->Poll(-1), InvalidArgumentException);
  EXPECT_THAT(log.take(), IsEmpty());
  map.map->Poll(1);
  EXPECT_THAT(log.take(), ElementsAre("Always", "Sometimes"));

  TestMap without("<Integer Name=\"X\"><Value>0</Value></Integer>");
  EXPECT_THROW(without.map->Poll(-1), InvalidArgumentException);
  EXPECT_NO_THROW(without.map->Poll(0));
}

TEST(Polling, GoesOnWhileNoPortIsConnected) {
  TestMap map(reg("IntReg", "Raw", 0, 4, "<PollingTime>10</PollingTime>"));
  CallLog log;
  log.watch(map, {"Raw"});
  map.map->Connect(nullptr);
  EXPECT_EQ(firings(map, log, {9, 1, 10}), (std::vector<size_t>{0, 1, 1}));
}

TEST(Polling, RestsAtZeroWhileBlocked) {
  TestMap map("<Integer Name=\"Block\"><Value>0</Value></Integer>" +
              reg("IntReg", "Raw", 0, 4, "<pBlockPolling>Block</pBlockPolling><PollingTime>100</PollingTime>"));
  CallLog log;
  log.watch(map, {"Raw"});
  EXPECT_EQ(firings(map, log, {60, 40, 60}), (std::vector<size_t>{0, 1, 0}));

  map.integer("Raw")->GetValue();
  map.port.poke(0, {5});
  map.integer("Block")->SetValue(1);
  EXPECT_THAT(log.take(), ElementsAre("Raw")) << "the blocked node depends on what blocks it";
  EXPECT_EQ(map.integer("Raw")->GetValue(), 5) << "and has forgotten its value";
  EXPECT_EQ(map.mode("Raw"), RW) << "that polling is blocked is no matter of access";
  EXPECT_EQ(firings(map, log, {100, 1000}), (std::vector<size_t>{0, 0}));

  map.integer("Block")->SetValue(0);
  log.take();
  EXPECT_EQ(firings(map, log, {60, 40}), (std::vector<size_t>{0, 1})) << "the 60 from before do not count";

  map.node("Block")->ImposeAccessMode(WO);
  log.take();
  EXPECT_EQ(firings(map, log, {100, 100}), (std::vector<size_t>{0, 0})) << "what cannot be read blocks";
}

TEST(Polling, AsksAnExecutingCommandUntilItHasFinished) {
  TestMap map(
      "<Command Name=\"Go\"><pValue>Raw</pValue><CommandValue>1</CommandValue>"
      "<PollingTime>1000</PollingTime></Command>" +
      reg("IntReg", "Raw", 0, 4));
  CallLog log;
  log.watch(map, {"Go"});
  EXPECT_EQ(firings(map, log, {1000, 1000}), (std::vector<size_t>{0, 0})) << "not executing";
  EXPECT_EQ(map.port.counts(), "0r0w");

  map.command("Go")->Execute();
  EXPECT_THAT(log.take(), ElementsAre("Go"));
  EXPECT_EQ(map.port.counts(), "0r1w");
  EXPECT_EQ(firings(map, log, {500, 500, 500}), (std::vector<size_t>{0, 1, 0}));
  EXPECT_EQ(map.port.counts(), "1r0w") << "asked once per period";
  map.port.poke(0, {0});
  EXPECT_EQ(firings(map, log, {499, 1}), (std::vector<size_t>{0, 1})) << "finished";
  EXPECT_EQ(firings(map, log, {1000, 1000}), (std::vector<size_t>{0, 0}));
  map.port.counts();
  EXPECT_TRUE(map.command("Go")->IsDone());
  EXPECT_THAT(log.take(), IsEmpty()) << "nothing new";
}

TEST(Polling, OfACommandBeginsAnewWithEachExecution) {
  TestMap map(
      "<Command Name=\"Go\"><pValue>Raw</pValue><CommandValue>1</CommandValue>"
      "<PollingTime>1000</PollingTime></Command>" +
      reg("IntReg", "Raw", 0, 4));
  CallLog log;
  log.watch(map, {"Go"});
  map.command("Go")->Execute();
  EXPECT_EQ(firings(map, log, {900}), (std::vector<size_t>{1})) << "of executing";
  map.port.poke(0, {0});
  EXPECT_TRUE(map.command("Go")->IsDone());
  map.command("Go")->Execute();
  log.take();
  EXPECT_EQ(firings(map, log, {900, 100}), (std::vector<size_t>{0, 1}));
}

TEST(Polling, NeverAsksACommandThatCannotBeRead) {
  TestMap map(
      "<Command Name=\"Go\"><pValue>Raw</pValue><CommandValue>1</CommandValue>"
      "<PollingTime>10</PollingTime></Command>" +
      reg("IntReg", "Raw", 0, 4, "<AccessMode>WO</AccessMode>") +
      "<Command Name=\"Hidden\"><ImposedAccessMode>WO</ImposedAccessMode><pValue>Other</pValue>"
      "<CommandValue>1</CommandValue><PollingTime>10</PollingTime></Command>" +
      reg("IntReg", "Other", 4, 4));
  CallLog log;
  map.command("Go")->Execute();
  map.command("Hidden")->Execute();
  log.watch(map, {"Go", "Hidden"});
  map.port.counts();
  EXPECT_EQ(firings(map, log, {10, 10}), (std::vector<size_t>{0, 0}));
  EXPECT_EQ(map.port.counts(), "0r0w");
}

const std::string kBalance = R"(
  <Enumeration Name="Balance">
    <EnumEntry Name="Off"><Value>0</Value></EnumEntry>
    <EnumEntry Name="Once"><Value>1</Value><IsSelfClearing>Yes</IsSelfClearing></EnumEntry>
    <EnumEntry Name="Continuous"><Value>2</Value></EnumEntry>
    <pValue>Raw</pValue>
    <PollingTime>50</PollingTime>
  </Enumeration>)" + reg("IntReg", "Raw", 0, 4);

TEST(Polling, FollowsAnEntryUntilItHasClearedItself) {
  TestMap map(kBalance);
  CallLog log;
  log.watch(map, {"Balance"});
  EXPECT_EQ(firings(map, log, {100, 100}), (std::vector<size_t>{0, 0}));

  map.value("Balance")->FromString("Once");
  EXPECT_THAT(log.take(), ElementsAre("Balance"));
  EXPECT_EQ(firings(map, log, {100, 100, 25, 25}), (std::vector<size_t>{1, 1, 0, 1}));
  map.port.poke(0, {0});
  map.port.counts();
  EXPECT_EQ(firings(map, log, {50, 50, 50}), (std::vector<size_t>{1, 0, 0})) << "once more, then it rests";
  EXPECT_EQ(map.port.counts(), "1r0w");
  EXPECT_STREQ(map.value("Balance")->ToString(), "Off");
}

TEST(Polling, OfAnEntryEndsSilentlyWhenAReadSeesItCleared) {
  TestMap map(kBalance);
  CallLog log;
  log.watch(map, {"Balance"});
  map.value("Balance")->FromString("Once");
  EXPECT_STREQ(map.value("Balance")->ToString(), "Once");
  map.port.poke(0, {0});
  EXPECT_STREQ(map.value("Balance")->ToString(), "Off") << "read past the cache while it is to clear itself";
  log.take();
  EXPECT_EQ(firings(map, log, {50, 50}), (std::vector<size_t>{0, 0}));
}

TEST(Polling, OfAnEntryEndsWithTheWriteOfAnother) {
  TestMap map(kBalance);
  CallLog log;
  log.watch(map, {"Balance"});
  map.value("Balance")->FromString("Once");
  map.value("Balance")->FromString("Continuous");
  EXPECT_EQ(log.take().size(), 2U);
  EXPECT_EQ(firings(map, log, {50, 50}), (std::vector<size_t>{0, 0}));
}

TEST(Polling, OfAnEntryBeginsWhenAReadFindsIt) {
  TestMap map(kBalance);
  CallLog log;
  log.watch(map, {"Balance"});
  map.port.poke(0, {1});
  EXPECT_EQ(firings(map, log, {50}), (std::vector<size_t>{0})) << "nobody knows yet";
  EXPECT_EQ(map.enumeration("Balance")->GetIntValue(), 1);
  EXPECT_EQ(firings(map, log, {49, 1}), (std::vector<size_t>{0, 1}));
  map.map->InvalidateNodes();
  log.take();
  EXPECT_EQ(firings(map, log, {50}), (std::vector<size_t>{1})) << "forgetting the value does not end it";

  // Each turn has a clock of its own.
  EXPECT_EQ(firings(map, log, {40}), (std::vector<size_t>{0}));
  map.value("Balance")->FromString("Off");
  map.value("Balance")->FromString("Once");
  log.take();
  EXPECT_EQ(firings(map, log, {40, 10}), (std::vector<size_t>{0, 1}));
}

TEST(Polling, AsksForStatesBeforeItLooksAtGuards) {
  TestMap map(kBalance + reg("IntReg", "Gain", 4, 4,
                             "<pBlockPolling>Balance</pBlockPolling>"
                             "<PollingTime>50</PollingTime>"));
  CallLog log;
  log.watch(map, {"Gain"});
  map.value("Balance")->FromString("Once");
  log.take();
  EXPECT_EQ(firings(map, log, {50}), (std::vector<size_t>{1})) << "a dependent of the polled enumeration";
  map.port.poke(0, {0});
  map.map->Poll(50);
  EXPECT_THAT(log.take(), ElementsAre("Gain"));
  EXPECT_EQ(firings(map, log, {49, 1}), (std::vector<size_t>{0, 1})) << "its clock ran from the call that unblocked it";
}

TEST(Polling, CountsWhatItsOwnReadsNotice) {
  // The enumeration has no polling time of its own, but reading it as a guard shows that the entry has cleared itself.
  TestMap map(R"(
    <Enumeration Name="Balance">
      <EnumEntry Name="Off"><Value>0</Value></EnumEntry>
      <EnumEntry Name="Once"><Value>1</Value><IsSelfClearing>Yes</IsSelfClearing></EnumEntry>
      <pValue>Raw</pValue>
    </Enumeration>)" +
              reg("IntReg", "Raw", 0, 4) +
              reg("IntReg", "Gain", 4, 4, "<pBlockPolling>Balance</pBlockPolling><PollingTime>1000</PollingTime>"));
  CallLog log;
  log.watch(map, {"Balance"});
  map.value("Balance")->FromString("Once");
  map.port.poke(0, {0});
  log.take();
  map.map->Poll(1);
  EXPECT_THAT(log.take(), ElementsAre("Balance"));
  map.map->Poll(1);
  EXPECT_THAT(log.take(), IsEmpty());
}

TEST(Polling, GoesOnAfterAnErrorAndReportsTheFirst) {
  TestMap map(
      "<Command Name=\"Go\"><pValue>A</pValue><CommandValue>1</CommandValue><PollingTime>10</PollingTime>"
      "</Command>" +
      reg("IntReg", "A", 0, 4) +
      "<Command Name=\"Run\"><pValue>B</pValue><CommandValue>1</CommandValue><PollingTime>10</PollingTime>"
      "</Command>" +
      reg("IntReg", "B", 4, 4) + reg("IntReg", "Raw", 8, 4, "<PollingTime>10</PollingTime>"));
  map.command("Go")->Execute();
  map.command("Run")->Execute();
  CallLog log;
  log.watch(map, {"Run", "Raw"});
  map.port.onRead = [](int64_t address, int64_t) {
    if (address == 0) throw TIMEOUT_EXCEPTION("no answer from %d", static_cast<int>(address));
  };
  EXPECT_EQ(refusal<TimeoutException>([&] { map.map->Poll(10); }), "no answer from 0");
  EXPECT_THAT(log.take(), ElementsAre("Run", "Raw"));
}

TEST(Polling, SurvivesAPortThatPollsInTheMiddleOfIt) {
  TestMap map(reg("IntReg", "First", 0, 4, "<PollingTime>10</PollingTime>") +
              "<Command Name=\"Go\"><pValue>A</pValue><CommandValue>1</CommandValue><PollingTime>10</PollingTime>"
              "</Command>" +
              reg("IntReg", "A", 4, 4) +
              "<Command Name=\"Run\"><pValue>B</pValue><CommandValue>1</CommandValue><PollingTime>10</PollingTime>"
              "</Command>" +
              reg("IntReg", "B", 8, 4));
  map.command("Go")->Execute();
  map.command("Run")->Execute();
  CallLog log;
  log.watch(map, {"First", "Go", "Run"});
  map.port.onRead = [&](int64_t address, int64_t) {
    if (address == 8) map.map->Poll(3);
  };
  map.map->Poll(10);
  EXPECT_THAT(log.take(), testing::UnorderedElementsAre("First", "Go", "Run"));
}

}  // namespace

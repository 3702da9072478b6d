// What the passing of time does to nodes with a polling time.
#include "NodeNames.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// A map whose watched nodes write down each call.
struct Polled : TestMap {
  Polled(const std::string& nodes, const Names& watched) : TestMap(nodes) { log.watch(*this, watched); }
  // How often each of the calls, one after the other, makes a watched node fire.
  std::string firings(const std::vector<int64_t>& steps) {
    std::string counts;
    for (const int64_t each : steps) {
      map->Poll(each);
      counts += (counts.empty() ? "" : " ") + std::to_string(log.take().size());
    }
    return counts;
  }
  void run(const Names& commands) {
    for (const std::string& each : commands) command(each)->Execute();
    log.take();
  }
  // Sets the enumeration "Balance".
  void pick(const char* entry) {
    value("Balance")->FromString(entry);
    log.take();
  }
  CallLog log;
};

std::string go(const std::string& name, const std::string& value, int period, const std::string& more = "") {
  return "<Command Name=\"" + name + "\">" + more + "<pValue>" + value + "</pValue><CommandValue>1</CommandValue>" +
         tag("PollingTime", std::to_string(period)) + "</Command>";
}

std::string polled(const std::string& name, int address, int period, const std::string& more = "") {
  return reg("IntReg", name, address, 4, more + tag("PollingTime", std::to_string(period)));
}

TEST(Polling, OfARegisterFiresOncePerPeriodWithEverythingAboveIt) {
  Polled map("<Integer Name=\"Top\"><pValue>Raw</pValue></Integer>" + polled("Raw", 0, 1000), {"Top", "Raw"});
  EXPECT_EQ(map.node("Raw")->GetPollingTime(), 1000);
  EXPECT_EQ(map.node("Top")->GetPollingTime(), -1);

  EXPECT_EQ(map.integer("Top")->GetValue(), 0);
  map.port.poke(0, {7});
  map.map->Poll(500);
  EXPECT_THAT(map.log.take(), IsEmpty());
  EXPECT_EQ(map.integer("Top")->GetValue(), 0) << "still from the cache";
  map.map->Poll(500);
  EXPECT_THAT(map.log.take(), ElementsAre("Top", "Raw"));
  EXPECT_EQ(map.integer("Top")->GetValue(), 7);
  EXPECT_EQ(map.firings({500, 500, 999, 1}), "0 2 0 2");
  EXPECT_EQ(map.firings({10'000, 999, 1}), "2 0 2") << "once, however late";
  EXPECT_EQ(map.firings({INT64_MAX, 999, 1}), "2 0 2");
}

TEST(Polling, TakesNoTimeButNoNegativeTimeAndNoPort) {
  Polled map(polled("Always", 0, 0) + polled("Sometimes", 4, 1) + polled("Never", 8, -1),
             {"Always", "Sometimes", "Never"});
  map.map->Poll(0);
  EXPECT_THAT(map.log.take(), ElementsAre("Always")) << "due at every call";
  EXPECT_THROW(map.map->Poll(-1), InvalidArgumentException);
  EXPECT_THAT(map.log.take(), IsEmpty());
  map.map->Connect(nullptr);
  map.map->Poll(1);
  EXPECT_THAT(map.log.take(), ElementsAre("Always", "Sometimes"));

  TestMap without("<Integer Name=\"X\"><Value>0</Value></Integer>");
  EXPECT_THROW(without.map->Poll(-1), InvalidArgumentException);
  EXPECT_NO_THROW(without.map->Poll(0));
}

TEST(Polling, RestsAtZeroWhileBlocked) {
  Polled map("<Integer Name=\"Block\"><Value>0</Value></Integer>" +
                 polled("Raw", 0, 100, "<pBlockPolling>Block</pBlockPolling>"),
             {"Raw"});
  EXPECT_EQ(map.firings({60, 40, 60}), "0 1 0");

  map.integer("Raw")->GetValue();
  map.port.poke(0, {5});
  map.integer("Block")->SetValue(1);
  EXPECT_THAT(map.log.take(), ElementsAre("Raw")) << "the blocked node depends on what blocks it";
  EXPECT_EQ(map.integer("Raw")->GetValue(), 5) << "and has forgotten its value";
  EXPECT_EQ(map.mode("Raw"), RW) << "that polling is blocked is no matter of access";
  EXPECT_EQ(map.firings({100, 1000}), "0 0");

  map.integer("Block")->SetValue(0);
  map.log.take();
  EXPECT_EQ(map.firings({60, 40}), "0 1") << "the 60 from before do not count";

  map.node("Block")->ImposeAccessMode(WO);
  map.log.take();
  EXPECT_EQ(map.firings({100, 100}), "0 0") << "what cannot be read blocks";
}

TEST(Polling, AsksAnExecutingCommandUntilItHasFinished) {
  Polled map(go("Go", "Raw", 1000) + reg("IntReg", "Raw", 0, 4), {"Go"});
  EXPECT_EQ(map.firings({1000, 1000}), "0 0") << "not executing";
  EXPECT_EQ(map.port.counts(), "0r0w");

  map.command("Go")->Execute();
  EXPECT_THAT(map.log.take(), ElementsAre("Go"));
  EXPECT_EQ(map.port.counts(), "0r1w");
  EXPECT_EQ(map.firings({500, 500, 500}), "0 1 0");
  EXPECT_EQ(map.port.counts(), "1r0w") << "asked once per period";
  map.port.poke(0, {0});
  EXPECT_EQ(map.firings({499, 1}), "0 1") << "finished";
  EXPECT_EQ(map.firings({1000, 1000}), "0 0");
  map.port.counts();
  EXPECT_TRUE(map.command("Go")->IsDone());
  EXPECT_THAT(map.log.take(), IsEmpty()) << "nothing new";

  map.run({"Go"});
  EXPECT_EQ(map.firings({900}), "0");
  map.port.poke(0, {0});
  EXPECT_TRUE(map.command("Go")->IsDone());
  map.run({"Go"});
  EXPECT_EQ(map.firings({900, 100}), "0 1") << "each execution begins anew";
}

std::string balance(const std::string& more) {
  return R"(
  <Enumeration Name="Balance">
    <EnumEntry Name="Off"><Value>0</Value></EnumEntry>
    <EnumEntry Name="Once"><Value>1</Value><IsSelfClearing>Yes</IsSelfClearing></EnumEntry>
    <EnumEntry Name="Twice"><Value>2</Value><IsSelfClearing>Yes</IsSelfClearing></EnumEntry>
    <EnumEntry Name="Continuous"><Value>3</Value></EnumEntry>
    <pValue>Raw</pValue>)" +
         more + "</Enumeration>" + reg("IntReg", "Raw", 0, 4);
}
const std::string kBalance = balance("<PollingTime>50</PollingTime>");

TEST(Polling, FollowsAnEntryUntilItHasClearedItself) {
  Polled map(kBalance, {"Balance"});
  EXPECT_EQ(map.firings({100, 100}), "0 0");

  map.value("Balance")->FromString("Once");
  EXPECT_THAT(map.log.take(), ElementsAre("Balance"));
  EXPECT_EQ(map.firings({100, 100, 25, 25}), "1 1 0 1");
  map.port.poke(0, {0});
  map.port.counts();
  EXPECT_EQ(map.firings({50, 50, 50}), "1 0 0") << "once more, then it rests";
  EXPECT_EQ(map.port.counts(), "1r0w");
  EXPECT_STREQ(map.value("Balance")->ToString(), "Off");
}

// Reads go past the cache until the device shows another value.
TEST(SelfClearing, DropsDependentsSilentlyWhenAReadSeesTheChange) {
  Polled map(balance("") + reg("IntReg", "Result", 4, 4, "<pInvalidator>Balance</pInvalidator>"),
             {"Balance", "Raw", "Result"});
  map.pick("Once");
  EXPECT_EQ(map.integer("Result")->GetValue(), 0);
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
  EXPECT_THAT(map.log.take(), IsEmpty());
}

TEST(Polling, OfAnEntryBeginsWhenAReadFindsIt) {
  Polled map(kBalance, {"Balance"});
  map.port.poke(0, {1});
  EXPECT_EQ(map.firings({50}), "0") << "nobody knows yet";
  EXPECT_EQ(map.enumeration("Balance")->GetIntValue(), 1);
  EXPECT_EQ(map.firings({49, 1}), "0 1");
  map.map->InvalidateNodes();
  map.log.take();
  EXPECT_EQ(map.firings({50}), "1") << "forgetting the value does not end it";

  // Each turn has a clock of its own.
  EXPECT_EQ(map.firings({40}), "0");
  map.pick("Off");
  map.pick("Once");
  EXPECT_EQ(map.firings({40, 10}), "0 1");
}

TEST(Polling, CountsWhatItsOwnReadsNotice) {
  // The enumeration has no polling time of its own, but reading it as a guard shows that the entry has cleared itself.
  Polled map(balance("") + polled("Gain", 4, 1000, "<pBlockPolling>Balance</pBlockPolling>"), {"Balance"});
  map.pick("Once");
  map.port.poke(0, {0});
  map.map->Poll(1);
  EXPECT_THAT(map.log.take(), ElementsAre("Balance"));
  map.map->Poll(1);
  EXPECT_THAT(map.log.take(), IsEmpty());
}

TEST(Polling, GoesOnAfterAnErrorAndReportsTheFirst) {
  Polled map(go("Go", "A", 10) + reg("IntReg", "A", 0, 4) + go("Run", "B", 10) + reg("IntReg", "B", 4, 4) +
                 polled("Raw", 8, 10),
             {"Run", "Raw"});
  map.run({"Go", "Run"});
  map.port.onRead = [](int64_t address, int64_t) {
    if (address == 0) throw TIMEOUT_EXCEPTION("no answer from %d", static_cast<int>(address));
  };
  EXPECT_EQ(refusal<TimeoutException>([&] { map.map->Poll(10); }), "no answer from 0");
  EXPECT_THAT(map.log.take(), ElementsAre("Run", "Raw"));
}

TEST(Polling, SurvivesAPortThatPollsInTheMiddleOfIt) {
  Polled map(polled("First", 0, 10) + go("Go", "A", 10) + reg("IntReg", "A", 4, 4) + go("Run", "B", 10) +
                 reg("IntReg", "B", 8, 4),
             {"First", "Go", "Run"});
  map.run({"Go", "Run"});
  map.port.onRead = [&](int64_t address, int64_t) {
    if (address == 8) map.map->Poll(3);
  };
  map.map->Poll(10);
  EXPECT_THAT(map.log.take(), testing::UnorderedElementsAre("First", "Go", "Run"));
}

}  // namespace

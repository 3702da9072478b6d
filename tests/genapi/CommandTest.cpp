// Executing commands and noticing their end.
#include "NodeNames.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::string command(const std::string& name, const std::string& source, const std::string& more = "") {
  return over(name, source, "<CommandValue>3</CommandValue>" + more, "Command");
}

TEST(Commands, WriteTheirValueAndFireOnce) {
  TestMap map(command("Go", "Top") + over("Top", "Raw") + reg("IntReg", "Raw", 0, 4) +
              reg("IntReg", "Other", 4, 4, "<pInvalidator>Go</pInvalidator>"));
  CallLog log;
  log.watch(map, {"Go", "Top", "Raw", "Other"});
  map.command("Go")->Execute();
  EXPECT_THAT(log.take(), ElementsAre("Go", "Top", "Raw", "Other")) << "itself, what was written, what depends on it";
  EXPECT_EQ(map.port.memory[0], 3);
}

TEST(Commands, AskTheDeviceWhetherTheyHaveFinished) {
  TestMap map(command("Go", "Raw") + reg("IntReg", "Raw", 0, 4) +
              reg("IntReg", "ByCommand", 4, 4, "<pInvalidator>Go</pInvalidator>") +
              reg("IntReg", "ByRegister", 8, 4, "<pInvalidator>Raw</pInvalidator>") + over("Above", "ByRegister"));
  ICommand* go = map.command("Go");
  CallLog log;
  log.watch(map, {"Go", "ByCommand", "ByRegister", "Above"});

  EXPECT_TRUE(go->IsDone());
  map.port.poke(0, {3});
  EXPECT_FALSE(go->IsDone()) << "never executed: just what the register says";
  map.port.poke(0, {0});
  EXPECT_TRUE(go->IsDone());
  EXPECT_THAT(log.take(), IsEmpty());

  go->Execute();
  log.take();
  map.port.counts();
  EXPECT_FALSE(go->IsDone());
  EXPECT_FALSE(go->IsDone());
  EXPECT_EQ(map.port.counts(), "2r0w") << "a register that remembers its writes is read all the same";
  EXPECT_EQ(map.integer("ByCommand")->GetValue(), 0);
  EXPECT_EQ(map.integer("Above")->GetValue(), 0);
  EXPECT_STREQ(map.value("Go")->ToString(), "1");
  EXPECT_THAT(log.take(), IsEmpty());

  map.port.poke(0, {0, 0, 0, 0, 9, 0, 0, 0, 8});
  EXPECT_STREQ(map.value("Go")->ToString(), "0");
  EXPECT_THAT(log.take(), IsEmpty()) << "reading the text is not asking";
  EXPECT_TRUE(go->IsDone());
  EXPECT_THAT(log.take(), testing::UnorderedElementsAre("Go", "ByCommand", "ByRegister", "Above"));
  EXPECT_EQ(map.integer("ByCommand")->GetValue(), 9) << "what the command did shows";
  EXPECT_EQ(map.integer("Above")->GetValue(), 8);
  EXPECT_TRUE(go->IsDone());
  EXPECT_THAT(log.take(), IsEmpty()) << "noticed once";
}

TEST(Commands, ReadTheirValueAfreshAndAreNotUnderWayAfterAFailure) {
  TestMap map("<Command Name='Go'><pValue>Raw</pValue><pCommandValue>V</pCommandValue></Command>" +
              reg("IntReg", "Raw", 0, 1) + reg("IntReg", "V", 1, 1));
  map.port.poke(1, {5});
  EXPECT_TRUE(map.command("Go")->IsDone());
  map.port.poke(1, {6});
  map.command("Go")->Execute();
  EXPECT_EQ(map.port.memory[0], 6);
  EXPECT_FALSE(map.command("Go")->IsDone());
  map.port.poke(0, {0});
  EXPECT_TRUE(map.command("Go")->IsDone());
  map.port.onWrite = [](int64_t, int64_t) { throw TIMEOUT_EXCEPTION("busy"); };
  EXPECT_THROW(map.command("Go")->Execute(), TimeoutException);
  EXPECT_TRUE(map.command("Go")->IsDone());
}

TEST(Commands, AreDoneAtOnceWhereNothingCanBeRead) {
  TestMap map("<Command Name='Own'><Value>5</Value><CommandValue>1</CommandValue></Command>" + command("Blind", "Raw") +
              reg("IntReg", "Raw", 0, 4, "<AccessMode>WO</AccessMode>") +
              command("Imposed", "Top", "<ImposedAccessMode>WO</ImposedAccessMode>") + held("Top"));
  CallLog log;
  for (const char* each : {"Own", "Blind", "Imposed"}) {
    log.watch(map.node(each));
    map.command(each)->Execute();
    EXPECT_EQ(log.take().size(), 1U) << each;
    EXPECT_TRUE(map.command(each)->IsDone()) << each;
    EXPECT_THAT(log.take(), IsEmpty()) << each;
  }
  EXPECT_EQ(map.port.counts(), "0r1w");
  EXPECT_STREQ(map.value("Own")->ToString(), "0");
  EXPECT_THROW(map.value("Blind")->ToString(), AccessException);
}

TEST(Commands, KnowNumbersOfEverySort) {
  TestMap map(command("ByFloat", "Level") + command("ByEntry", "Mode") + R"(
    <Boolean Name="Flag"><Value>false</Value><OnValue>17</OnValue><OffValue>4</OffValue></Boolean>
    <Float Name="Level"><Value>0</Value></Float>
    <Enumeration Name="Mode"><EnumEntry Name="Off"><Value>0</Value></EnumEntry>
      <EnumEntry Name="On"><Value>1</Value><NumericValue>3</NumericValue></EnumEntry><Value>0</Value></Enumeration>
    <Command Name="Truth"><pValue>Flag</pValue><CommandValue>1</CommandValue></Command>)");
  for (const char* each : {"Truth", "ByFloat", "ByEntry"}) {
    EXPECT_TRUE(map.command(each)->IsDone()) << each;
    map.command(each)->Execute();
    EXPECT_FALSE(map.command(each)->IsDone()) << each;
  }
  EXPECT_TRUE(map.boolean("Flag")->GetValue());
  map.boolean("Flag")->SetValue(false);
  map.real("Level")->SetValue(0);
  map.enumeration("Mode")->SetIntValue(0);
  for (const char* each : {"Truth", "ByFloat", "ByEntry"}) EXPECT_TRUE(map.command(each)->IsDone()) << each;
}

TEST(Commands, AreRefusedByTheirAccessMode) {
  TestMap map(command("Go", "Source",
                      tag("pIsImplemented", "There") + tag("pIsAvailable", "Ready") + tag("pIsLocked", "Locked")) +
              held("Source") + held("There", 1) + held("Ready", 1) + held("Locked"));
  ICommand* go = map.command("Go");
  const auto set = [&](const char* name, int64_t value) { map.integer(name)->SetValue(value); };

  set("Locked", 1);
  EXPECT_THROW(go->Execute(), AccessException);
  EXPECT_THROW(map.value("Go")->FromString("nonsense"), AccessException) << "the access mode is looked at first";
  EXPECT_TRUE(go->IsDone());
  set("Locked", 0);
  for (const char* each : {"Ready", "There"}) {
    set(each, 0);
    EXPECT_THROW(go->Execute(), AccessException) << each;
    EXPECT_THROW(go->IsDone(), AccessException) << each;
    set(each, 1);
  }
  EXPECT_EQ(map.integer("Source")->GetValue(), 0);
  set("Locked", 1);
  EXPECT_NO_THROW(go->Execute(false)) << "without verification nothing is checked";
  EXPECT_EQ(map.integer("Source")->GetValue(), 3);
}

TEST(Commands, ThatHideWhileTheyExecuteAreNoticedAfterwards) {
  // The device takes the command away as long as it is busy with it.
  TestMap map(command("Reset", "Raw", tag("pIsAvailable", "Idle")) + reg("IntReg", "Raw", 0, 4) +
              reg("IntReg", "Idle", 4, 4, "<AccessMode>RO</AccessMode><pInvalidator>Raw</pInvalidator>"));
  map.port.poke(4, {1});
  map.port.onWrite = [&](int64_t, int64_t) { map.port.poke(4, {0}); };
  CallLog log;
  map.command("Reset")->Execute();
  log.watch(map, {"Reset"});
  EXPECT_THROW(map.command("Reset")->IsDone(), AccessException);
  map.port.poke(0, {0, 0, 0, 0, 1});
  map.node("Idle")->InvalidateNode();
  log.take();
  EXPECT_TRUE(map.command("Reset")->IsDone());
  EXPECT_THAT(log.take(), ElementsAre("Reset"));
}

TEST(Commands, ExecuteByTheirText) {
  TestMap map(command("Go", "Source") + held("Source"));
  for (const char* each : {"1", "true"}) {
    map.value("Go")->FromString(each);
    EXPECT_EQ(map.integer("Source")->GetValue(), 3) << each;
    map.integer("Source")->SetValue(0);
  }
  for (const char* each : {"0", "false", "", "2", "TRUE"})
    EXPECT_THROW(map.value("Go")->FromString(each), InvalidArgumentException) << each;
  EXPECT_EQ(map.integer("Source")->GetValue(), 0);
}

}  // namespace

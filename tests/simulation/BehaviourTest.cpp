// What registers do beyond keeping bytes: time, commands, automatics, sets, lines.
#include "CameraBench.h"

using ox::simulation::kAccessRefused;
using ox::simulation::kPortNotAvailable;
using ox::simulation::kPortReadWrite;

TEST(CameraTime, MovesTemperatureAndCounters) {
  CameraBench bench;
  const double cold = bench.getReal("DeviceTemperatureReg");
  EXPECT_EQ(bench.get("TimestampReg"), 0u);
  bench.wait(250'000);
  EXPECT_GT(bench.getReal("DeviceTemperatureReg"), cold + 5);
  EXPECT_EQ(bench.get("TimestampReg"), 250'000'000'000u);
  EXPECT_EQ(bench.get("DeviceUptimeReg"), 250u);
  EXPECT_EQ(bench.get("TestPolledCounterReg"), 2500u);
  bench.set("TimestampLatchReg", 1);
  bench.wait(10);
  EXPECT_EQ(bench.get("TimestampLatchValueReg"), 250'000'000'000u);
  bench.set("TimestampResetReg", 1);
  bench.wait(3);
  EXPECT_EQ(bench.get("TimestampReg"), 3'000'000u);
}

TEST(Commands, ClearThemselvesAtOnceOrAfterTheirTime) {
  CameraBench bench;
  bench.set("TestCommandReg", 0x1234);
  EXPECT_EQ(bench.get("TestCommandReg"), 0u);
  EXPECT_EQ(bench.get("TestCommandCountReg"), 1u);
  bench.set("TestCommandReg", 7);  // not its command value
  EXPECT_EQ(bench.get("TestCommandCountReg"), 1u);

  bench.set("TestCommandSlowReg", 1);
  bench.wait(299);
  EXPECT_EQ(bench.get("TestCommandSlowReg"), 1u);
  EXPECT_EQ(bench.get("TestCommandCountReg"), 1u);
  bench.wait(1);
  EXPECT_EQ(bench.get("TestCommandSlowReg"), 0u);
  EXPECT_EQ(bench.get("TestCommandCountReg"), 2u);

  bench.set("DeviceSelfTestReg", 1);
  EXPECT_EQ(bench.get("DeviceSelfTestResultReg"), 0u);
  bench.wait(300);
  EXPECT_EQ(bench.get("DeviceSelfTestResultReg"), 1u);
}

TEST(Automatics, OnceAdjustsAndSwitchesItselfOff) {
  for (const char* mode : {"GainAutoReg", "ExposureAutoReg", "BalanceWhiteAutoReg", "TestSelfClearingReg"}) {
    CameraBench bench;
    bench.set(mode, 1);
    bench.wait(499);
    EXPECT_EQ(bench.get(mode), 1u) << mode;
    bench.wait(1);
    EXPECT_EQ(bench.get(mode), 0u) << mode;
  }
  CameraBench bench;
  bench.set("GainAutoReg", 2);
  bench.wait(5000);
  EXPECT_EQ(bench.get("GainAutoReg"), 2u);
  EXPECT_EQ(bench.get("GainRawReg"), 640u);
}

TEST(Devices, KeepLessThanIsWritten) {
  CameraBench bench;
  for (const auto& [written, kept] : {std::pair{1.0, 1.0}, {1.1, 1.0}, {1.13, 1.25}, {-0.4, -0.5}, {100, 100}}) {
    EXPECT_EQ(bench.trySetReal("TestFloatCoarseReg", written), 0);
    EXPECT_EQ(bench.getReal("TestFloatCoarseReg"), kept) << written;
  }
  EXPECT_NE(bench.trySetReal("TestFloatCoarseReg", 101), 0);
  EXPECT_EQ(bench.getReal("TestFloatCoarseReg"), 100);
}

TEST(Devices, TellTheirErrorAndKeepTheOldValue) {
  CameraBench bench;
  const struct { uint64_t written, kept, status; } cases[] = {{40, 40, 0}, {101, 40, 1}, {53, 40, 2}, {54, 54, 0}};
  for (const auto& c : cases) {
    bench.set("TestErrorValueReg", c.written);
    EXPECT_EQ(bench.get("TestErrorValueReg"), c.kept) << c.written;
    EXPECT_EQ(bench.get("TestErrorStatusReg"), c.status) << c.written;
  }
}

TEST(UserSets, StoreAndRestore) {
  CameraBench bench;
  bench.set("WidthReg", 320);
  bench.set("TriggerModeReg", 1, 2);
  bench.set("UserSetSelectorReg", 1);
  bench.set("UserSetSaveReg", 1);
  EXPECT_EQ(bench.get("UserSetSaveReg"), 0u);

  bench.set("UserSetSelectorReg", 0);
  bench.set("UserSetLoadReg", 1);
  EXPECT_EQ(bench.get("WidthReg"), 640u);
  EXPECT_EQ(bench.get("TriggerModeReg", 2), 0u);
  EXPECT_EQ(bench.trySet("UserSetSaveReg", 1), kAccessRefused) << "the set of the factory";

  bench.set("UserSetDefaultReg", 1);
  bench.set("DeviceResetReg", 1);
  EXPECT_EQ(bench->resetCount(), 1);
  EXPECT_EQ(bench.get("WidthReg"), 320u) << "the set chosen for power on";
  EXPECT_EQ(bench.get("TriggerModeReg", 2), 1u);
  EXPECT_NE(bench.trySet("UserSetSelectorReg", 3), 0);
}

TEST(Reset, TakesItsTimeAndForgets) {
  CameraBench bench({.restartNs = 2'000'000'000});
  bench.set("TestRoundTripReg", 99);
  bench.set("GevPersistentIPAddressReg", 0x0A000001);
  bench.set("DeviceResetReg", 1);
  uint8_t bytes[4];
  EXPECT_EQ(bench->accessMode(), kPortNotAvailable);
  EXPECT_EQ(bench->read(bytes, bench.addressOf("WidthReg"), 4), kAccessRefused);
  bench.wait(2000);
  EXPECT_EQ(bench->accessMode(), kPortReadWrite);
  EXPECT_EQ(bench.get("TestRoundTripReg"), 5u);
  EXPECT_EQ(bench.get("GevPersistentIPAddressReg"), 0x0A000001u) << "kept over a reset";
}

TEST(Lines, ShowInputsAndOutputs) {
  CameraBench bench;
  EXPECT_EQ(bench.get("LineStatusAllReg"), 0u);
  bench.wait(1000);  // line 0 goes high every other second
  EXPECT_EQ(bench.get("LineStatusAllReg"), 1u);
  bench.set("LineSourceReg", 3, 2);  // line 2 is an output from power on; 3 is user output 1
  bench.set("UserOutputValueAllReg", 2);
  EXPECT_EQ(bench.get("UserOutputValueReg", 1), 1u);
  EXPECT_EQ(bench.get("LineStatusAllReg"), 5u);
  bench.set("LineInverterReg", 0xFF, 2);
  EXPECT_EQ(bench.get("LineStatusAllReg"), 1u);
  bench.set("UserOutputValueReg", 1, 0);
  EXPECT_EQ(bench.get("UserOutputValueAllReg"), 3u);
}

TEST(CountersAndTimers, Run) {
  CameraBench bench;
  bench.set("CounterEventSourceReg", 3, 1);  // milliseconds
  bench.set("CounterResetReg", 1, 1);
  bench.wait(40);
  // The description computes this address: the values lie behind the two commands, the second one is counter 1.
  uint8_t value[4];
  EXPECT_EQ(bench->read(value, bench.addressOf("CounterResetReg") + 8 + 4, 4), 0);
  EXPECT_EQ(value[3], 40);
  EXPECT_EQ(bench.get("CounterStatusReg", 1), 1u);
  bench.wait(1000);
  EXPECT_EQ(bench.get("CounterStatusReg", 1), 2u) << "CounterDuration is 100";

  EXPECT_EQ(bench.get("TimerStatusReg", 0), 0u);
  bench.trySetReal("TimerDurationReg", 5000);
  bench.set("TimerResetReg", 1);
  bench.wait(3);
  EXPECT_EQ(bench.getReal("TimerValueReg"), 3000);
  EXPECT_EQ(bench.get("TimerStatusReg", 0), 1u);
  bench.wait(3);
  EXPECT_EQ(bench.getReal("TimerValueReg"), 5000);
  EXPECT_EQ(bench.get("TimerStatusReg", 0), 2u);
}

// The registers behind the test features: odd, but documented in the description.
#include <algorithm>
#include <cmath>

#include "Behaviours.h"
#include "DeviceFailure.h"

namespace ox::simulation {

namespace {

constexpr int64_t kSlowCommandNs = 300 * kMillisecond;
constexpr int64_t kBusyNs = 500 * kMillisecond;
constexpr int64_t kCounterStepNs = 100 * kMillisecond;
constexpr uint64_t kCommandValue = 0x1234;

class TestRegisters final : public Behaviour {
 public:
  explicit TestRegisters(CameraCore& core) : Behaviour(core) {
    auto& r = registers();
    r.onWrite(reg("TestFloatCoarse"), [this](int32_t) {
      const double wanted = registers().real(reg("TestFloatCoarse"));
      if (!(std::abs(wanted) <= 100)) throw DeviceFailure(kInvalidArgument, "TestFloatCoarse takes -100 to 100");
      registers().setReal(reg("TestFloatCoarse"), std::round(wanted * 4) / 4);
    });
    r.onWrite(reg("TestCommand"), [this](int32_t) {
      if (registers().integer(reg("TestCommand")) == kCommandValue) count();
      registers().setInteger(reg("TestCommand"), 0);
    });
    r.onWrite(reg("TestCommandWriteOnly"), [this](int32_t) { count(); });
    r.onWrite(reg("TestCommandSlow"),
              [this](int32_t) { core_.finishLater(reg("TestCommandSlow"), kSlowCommandNs, [this] { count(); }); });
    r.onWrite(reg("TestErrorValue"), [this](int32_t) { judge(); });
    r.onWrite(reg("TestSelfClearing"), [this](int32_t) { waitUntilIdle(); });
    for (const RegisterId counter : {reg("TestPolledCounter"), reg("TestBlockedCounter")})
      r.onRead(counter, [this, counter](int32_t) {
        registers().setInteger(counter, static_cast<uint64_t>(timeline().now() / kCounterStepNs));
      });
    r.onWrite(reg("TestInvalidator"), [this](int32_t) { increment(reg("TestInvalidated")); });
    r.onRead(reg("TestUncached"), [this](int32_t) { increment(reg("TestUncached")); });
  }

  void powerOn() override { lastGood_ = registers().integer(reg("TestErrorValue")); }

  void load(const StateBlocks&) override {
    lastGood_ = registers().integer(reg("TestErrorValue"));
    registers().setInteger(reg("TestCommandSlow"), 0);
    waitUntilIdle();
  }

 private:
  void increment(RegisterId id) { registers().setInteger(id, registers().integer(id) + 1); }
  void count() { increment(reg("TestCommandCount")); }

  // The write itself succeeds; TestErrorStatus tells what the camera thinks of it.
  void judge() {
    enum Status { kNoError, kTooLarge, kOdd };
    const uint64_t wanted = registers().integer(reg("TestErrorValue"));
    const Status status = wanted > 100 ? kTooLarge : wanted > 50 && wanted % 2 == 1 ? kOdd : kNoError;
    registers().setInteger(reg("TestErrorStatus"), status);
    if (status == kNoError)
      lastGood_ = wanted;
    else
      registers().setInteger(reg("TestErrorValue"), lastGood_);
  }

  void waitUntilIdle() {
    timeline().cancel(reg("TestSelfClearing"));
    if (registers().integer(reg("TestSelfClearing")) != 0)
      timeline().after(reg("TestSelfClearing"), kBusyNs,
                       [this] { registers().setInteger(reg("TestSelfClearing"), 0); });
  }

  uint64_t lastGood_ = 0;
};

}  // namespace

std::unique_ptr<Behaviour> makeTestRegisters(CameraCore& core) { return std::make_unique<TestRegisters>(core); }

}  // namespace ox::simulation

// Lines, user outputs, counters and timers.
#include <algorithm>

#include "Behaviours.h"
#include "DeviceFailure.h"

namespace ox::simulation {

namespace {

constexpr int32_t kLines = 4;
constexpr int32_t kOutput = 1;  // value of LineMode
enum LineSource { kSourceOff, kSourceExposure, kSourceUserOutput0, kSourceUserOutput1, kSourceTimer0 };
enum CounterSource { kCountNothing, kCountFrames, kCountLine0, kCountMilliseconds };
enum Progress { kIdle, kActive, kCompleted };

class Signals final : public Behaviour {
 public:
  explicit Signals(CameraCore& core) : Behaviour(core) {
    auto& r = registers();
    r.onRead(reg("LineStatusAll"), [this](int32_t) {
      registers().setInteger(reg("LineStatusAll"), lineLevels(registers(), timeline().now()));
    });
    // Two registers show the same outputs.
    r.onWrite(reg("UserOutputValue"), [this](int32_t) {
      const uint64_t all =
          registers().integer(reg("UserOutputValue"), 0) | registers().integer(reg("UserOutputValue"), 1) << 1;
      registers().setInteger(reg("UserOutputValueAll"), all);
    });
    r.onWrite(reg("UserOutputValueAll"), [this](int32_t) {
      for (int32_t i = 0; i < 2; ++i)
        registers().setInteger(reg("UserOutputValue"), registers().integer(reg("UserOutputValueAll")) >> i & 1, i);
    });
    r.onWrite(reg("CounterReset"), [this](int32_t i) {
      counterStart_[i] = timeline().now();
      registers().setInteger(reg("CounterValue"), 0, i);
    });
    r.onRead(reg("CounterValue"), [this](int32_t i) { countMilliseconds(i); });
    r.onRead(reg("CounterStatus"), [this](int32_t i) {
      countMilliseconds(i);
      const bool completed =
          registers().integer(reg("CounterValue"), i) >= registers().integer(reg("CounterDuration"), i);
      const bool counting = registers().integer(reg("CounterEventSource"), i) != kCountNothing;
      registers().setInteger(reg("CounterStatus"), !counting ? kIdle : completed ? kCompleted : kActive, i);
    });
    r.onWrite(reg("TimerReset"), [this](int32_t i) { timerStart_[i] = timeline().now(); });
    r.onRead(reg("TimerValue"), [this](int32_t i) { registers().setReal(reg("TimerValue"), timerMicroseconds(i), i); });
    r.onRead(reg("TimerStatus"), [this](int32_t i) {
      const bool ended = timerMicroseconds(i) >= registers().real(reg("TimerDuration"), i);
      registers().setInteger(reg("TimerStatus"), timerStart_[i] < 0 ? kIdle : ended ? kCompleted : kActive, i);
    });
  }

  void powerOn() override {
    for (int32_t i = 0; i < 2; ++i) {
      counterStart_[i] = 0;
      timerStart_[i] = -1;
    }
    registers().setInteger(reg("LineMode"), kOutput, 2);
    waitForEdge();
  }

  void load(const StateBlocks&) override {
    for (int32_t i = 0; i < 2; ++i) {
      counterStart_[i] = 0;
      timerStart_[i] = -1;
    }
    waitForEdge();
  }

 private:
  void waitForEdge() {
    const int64_t next = (timeline().now() / kLine0HalfPeriodNs + 1) * kLine0HalfPeriodNs;
    timeline().after(reg("LineStatusAll"), next - timeline().now(), [this] {
      const bool rising = timeline().now() / kLine0HalfPeriodNs % 2 == 1;
      core_.events.send(rising ? kEventLine0RisingEdge : kEventLine0FallingEdge);
      if (core_.line0Edge) core_.line0Edge(rising);
      for (int32_t i = 0; i < 2; ++i) {
        const uint64_t edge = registers().integer(reg("CounterEventActivation"), i);  // rising, falling, any
        if (registers().integer(reg("CounterEventSource"), i) == kCountLine0 && (edge == 2 || (edge == 0) == rising))
          registers().setInteger(reg("CounterValue"), registers().integer(reg("CounterValue"), i) + 1, i);
      }
      waitForEdge();
    });
  }

  void countMilliseconds(int32_t i) {
    if (registers().integer(reg("CounterEventSource"), i) != kCountMilliseconds) return;
    const auto count = static_cast<uint64_t>((timeline().now() - counterStart_[i]) / kMillisecond);
    registers().setInteger(reg("CounterValue"), std::min(count, registers().integer(reg("CounterDuration"), i)), i);
  }

  double timerMicroseconds(int32_t i) const {
    if (timerStart_[i] < 0) return 0;
    const double sinceReset = static_cast<double>(timeline().now() - timerStart_[i]) / 1000;
    return std::clamp(sinceReset - registers().real(reg("TimerDelay"), i), 0.0,
                      registers().real(reg("TimerDuration"), i));
  }

  int64_t counterStart_[2] = {0, 0};
  int64_t timerStart_[2] = {-1, -1};  // -1: not started since power on
};

}  // namespace

uint64_t lineLevels(const RegisterBank& registers, int64_t nowNs) {
  uint64_t levels = 0;
  for (int32_t line = 0; line < kLines; ++line) {
    uint64_t level = 0;
    if (registers.integer(reg("LineMode"), line) == kOutput) {
      switch (registers.integer(reg("LineSource"), line)) {
        case kSourceExposure: level = registers.integer(reg("AcquisitionRunning")) != 0; break;
        case kSourceUserOutput0: level = registers.integer(reg("UserOutputValue"), 0) & 1; break;
        case kSourceUserOutput1: level = registers.integer(reg("UserOutputValue"), 1) & 1; break;
        default: break;  // off, and the timer, which gives a pulse too short to be seen
      }
    } else if (line == 0) {
      level = nowNs / kLine0HalfPeriodNs % 2 == 1;
    }
    if (registers.integer(reg("LineInverter"), line) != 0) level ^= 1;
    levels |= level << line;
  }
  return levels;
}

std::unique_ptr<Behaviour> makeSignals(CameraCore& core) { return std::make_unique<Signals>(core); }

}  // namespace ox::simulation

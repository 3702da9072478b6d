// Automatic gain, exposure and white balance: "Once" adjusts for a while and then switches itself off.
#include <array>

#include "Behaviours.h"

namespace ox::simulation {

namespace {

constexpr int64_t kAdjustNs = 500 * kMillisecond;
enum Mode : uint64_t { kOff, kOnce, kContinuous };

class Automatics final : public Behaviour {
 public:
  explicit Automatics(CameraCore& core) : Behaviour(core) {
    for (const RegisterId mode : kModes) registers().onWrite(mode, [this, mode](int32_t) { adjust(mode); });
  }

  void load(const StateBlocks&) override {
    for (const RegisterId mode : kModes) adjust(mode);
  }

 private:
  static constexpr std::array kModes = {reg("GainAuto"), reg("ExposureAuto"), reg("BalanceWhiteAuto")};

  void adjust(RegisterId mode) {
    timeline().cancel(mode);
    const uint64_t wanted = registers().integer(mode);
    if (wanted == kOff) return;
    timeline().after(mode, kAdjustNs, [this, mode, wanted] {
      settle(mode);
      if (wanted == kOnce) registers().setInteger(mode, kOff);
    });
  }

  // What the adjustment always ends with: the scene never changes.
  void settle(RegisterId mode) {
    if (mode == reg("GainAuto"))
      registers().setInteger(reg("GainRaw"), 640);
    else if (mode == reg("ExposureAuto"))
      registers().setInteger(reg("ExposureTimeRaw"), 62500);
    else
      for (int32_t color = 0; color < 3; ++color) registers().setReal(reg("BalanceRatio"), 1.0 + 0.25 * color, color);
  }
};

}  // namespace

std::unique_ptr<Behaviour> makeAutomatics(CameraCore& core) { return std::make_unique<Automatics>(core); }

}  // namespace ox::simulation

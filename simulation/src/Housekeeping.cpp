// Time, temperature, status bits, self-test.
#include <cmath>

#include "Behaviours.h"

namespace ox::simulation {

namespace {

constexpr int64_t kSelfTestNs = 300 * kMillisecond;
constexpr double kWarmUpSeconds = 120;  // after so long the camera has come two thirds of the way to its final warmth
constexpr double kAlarmCelsius = 45;
constexpr int64_t kAlarmCheckNs = kSecond;

class Housekeeping final : public Behaviour {
 public:
  Housekeeping(CameraCore& core, std::function<void()> reset) : Behaviour(core) {
    auto& r = registers();
    r.onRead(reg("Timestamp"),
             [this](int32_t) { registers().setInteger(reg("Timestamp"), cameraTime(registers(), timeline().now())); });
    r.onWrite(reg("TimestampReset"), [this](int32_t) {
      registers().setInteger(reg("TimestampOrigin"), static_cast<uint64_t>(timeline().now()));
      registers().setInteger(reg("TimestampLatchValue"), 0);
    });
    r.onWrite(reg("TimestampLatch"), [this](int32_t) {
      registers().setInteger(reg("TimestampLatchValue"), cameraTime(registers(), timeline().now()));
    });
    r.onRead(reg("DeviceUptime"), [this](int32_t) {
      registers().setInteger(reg("DeviceUptime"), static_cast<uint64_t>(timeline().now() / kSecond));
    });
    r.onRead(reg("DeviceTemperature"),
             [this](int32_t place) { registers().setReal(reg("DeviceTemperature"), celsius(place), place); });
    r.onRead(reg("DeviceStatus"), [this](int32_t) { registers().setInteger(reg("DeviceStatus"), status()); });
    r.onWrite(reg("DeviceSelfTest"), [this](int32_t) {
      registers().setInteger(reg("DeviceSelfTestResult"), 0);
      core_.finishLater(reg("DeviceSelfTest"), kSelfTestNs,
                        [this] { registers().setInteger(reg("DeviceSelfTestResult"), 1); });
    });
    const auto nowValid = [this](int32_t) { registers().setInteger(reg("DeviceRegistersValid"), 1); };
    r.onWrite(reg("DeviceRegistersStreamingStart"),
              [this](int32_t) { registers().setInteger(reg("DeviceRegistersValid"), 0); });
    r.onWrite(reg("DeviceRegistersStreamingEnd"), nowValid);
    r.onWrite(reg("DeviceRegistersCheck"), nowValid);
    r.onWrite(reg("DeviceReset"), [reset = std::move(reset)](int32_t) { reset(); });
  }

  void powerOn() override { watchTemperature(); }

  void save(StateBlocks&) const override {
    registers().setInteger(reg("Timestamp"), cameraTime(registers(), timeline().now()));
  }

  void load(const StateBlocks&) override {
    // The time of the camera goes on where it was saved.
    registers().setInteger(reg("TimestampOrigin"), uint64_t{0} - registers().integer(reg("Timestamp")));
    registers().setInteger(reg("DeviceSelfTest"), 0);
    watchTemperature();
  }

 private:
  double celsius(int32_t place) const {
    const double seconds = static_cast<double>(timeline().now()) / kSecond;
    const double warmth = 12 * (1 - std::exp(-seconds / kWarmUpSeconds));
    const double sway = 0.4 * std::sin(seconds / 7);
    return place == 0 ? 35 + warmth + sway : 31 + 0.7 * warmth + sway / 2;
  }

  // Bits as the description counts them: bit 0 is the highest one.
  uint64_t status() const {
    const uint64_t linkUp = 1, overheated = celsius(0) > kAlarmCelsius;
    const uint64_t acquiring = registers().integer(reg("AcquisitionRunning")) != 0;
    const auto fan = static_cast<uint64_t>(celsius(1)) & 0xff;
    const uint64_t trim = 0xFD;  // -3
    return linkUp << 31 | overheated << 30 | acquiring << 29 | fan << 16 | trim;
  }

  void watchTemperature() {
    const bool wasTooWarm = celsius(0) > kAlarmCelsius;
    timeline().after(reg("DeviceTemperature"), kAlarmCheckNs, [this, wasTooWarm] {
      if (!wasTooWarm && celsius(0) > kAlarmCelsius) {
        registers().setInteger(reg("EventTemperatureAlarm"), registers().integer(reg("EventTemperatureAlarm")) + 1);
        core_.events.send(kEventTemperatureAlarm);
      }
      watchTemperature();
    });
  }
};

}  // namespace

uint64_t cameraTime(const RegisterBank& registers, int64_t nowNs) {
  return static_cast<uint64_t>(nowNs) - registers.integer(reg("TimestampOrigin"));
}

std::unique_ptr<Behaviour> makeHousekeeping(CameraCore& core, std::function<void()> reset) {
  return std::make_unique<Housekeeping>(core, std::move(reset));
}

}  // namespace ox::simulation

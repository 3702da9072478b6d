#include "Acquisition.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "DeviceFailure.h"

namespace ox::simulation {

namespace {

constexpr std::size_t kMaxWaiting = 16;    // pictures the camera keeps for a slow receiver
constexpr int64_t kMaxMissed = 1000;       // pictures made up after a long time without any access
constexpr double kReadoutSeconds = 0.001;  // as the description has it
constexpr int64_t kLongestNs = 3600 * kSecond;

enum Mode : uint64_t { kContinuous, kSingleFrame, kMultiFrame };
constexpr int32_t kFrameStart = 0;  // place in TriggerSelector
enum TriggerSource : uint64_t { kSourceSoftware, kSourceLine0 };
enum TriggerActivation : uint64_t { kRisingEdge, kFallingEdge, kAnyEdge };

int64_t nanoseconds(double seconds) {
  if (!(seconds > 0)) return 0;  // also for NaN, which a register may hold
  return static_cast<int64_t>(std::min(seconds, static_cast<double>(kLongestNs) / kSecond) * kSecond);
}

}  // namespace

Acquisition::Acquisition(CameraCore& core) : Behaviour(core) {
  auto& r = registers();
  r.onWrite(reg("AcquisitionStart"), [this](int32_t) { start(); });
  r.onWrite(reg("AcquisitionStop"), [this](int32_t) { stop(); });
  r.onWrite(reg("AcquisitionAbort"), [this](int32_t) { stop(); });
  r.onWrite(reg("TriggerSoftware"), [this](int32_t which) {
    if (which == kFrameStart && registers().integer(reg("TriggerSource"), kFrameStart) == kSourceSoftware) trigger();
  });
  core.line0Edge = [this](bool rising) {
    const uint64_t edge = registers().integer(reg("TriggerActivation"), kFrameStart);
    if (registers().integer(reg("TriggerSource"), kFrameStart) != kSourceLine0) return;
    if (edge == kAnyEdge || (rising ? edge == kRisingEdge : edge == kFallingEdge)) trigger();
  };
  r.onRead(reg("AcquisitionStatus"),
           [this](int32_t signal) { registers().setInteger(reg("AcquisitionStatus"), status(signal), signal); });
  r.onRead(reg("PayloadSize"),
           [this](int32_t) { registers().setInteger(reg("PayloadSize"), payloadBytes(registers())); });
  for (const RegisterId id : {reg("Width"), reg("Height"), reg("OffsetX"), reg("OffsetY")})
    r.onWrite(id, [this, id](int32_t) { checkSize(id); });
  // The image is always sent, whatever its switch is set to.
  r.onWrite(reg("ChunkEnable"), [this](int32_t) { registers().setInteger(reg("ChunkEnable"), 1, 0); });
  r.onWrite(reg("TestEventGenerate"), [this](int32_t) { core_.events.send(kEventTest); });
}

void Acquisition::powerOn() {
  waiting_.clear();
  registers().setReal(reg("DeviceClockFrequency"), 148.5e6, 0);
  registers().setInteger(reg("ChunkEnable"), 1, 0);
}

void Acquisition::load(const StateBlocks&) {
  waiting_.clear();
  if (running()) scheduleNext();
}

bool Acquisition::running() const { return registers().integer(reg("AcquisitionRunning")) != 0; }

bool Acquisition::triggered() const { return registers().integer(reg("TriggerMode"), kFrameStart) != 0; }

void Acquisition::start() {
  if (running()) return;
  const uint64_t mode = registers().integer(reg("AcquisitionMode"));
  const uint64_t frames = mode == kSingleFrame  ? 1
                          : mode == kMultiFrame ? registers().integer(reg("AcquisitionFrameCount"))
                                                : 0;
  registers().setInteger(reg("FramesLeft"), frames);
  registers().setInteger(reg("AcquisitionRunning"), 1);
  registers().setInteger(reg("TLParamsLocked"), 1);
  waiting_.clear();
  scheduleNext();
}

void Acquisition::stop() {
  timeline().cancel(reg("AcquisitionStart"));
  timeline().cancel(reg("TriggerSoftware"));
  registers().setInteger(reg("AcquisitionRunning"), 0);
  registers().setInteger(reg("TLParamsLocked"), 0);
}

void Acquisition::scheduleNext() {
  if (!running() || triggered()) return;
  const int64_t period = periodNs();
  const int64_t behind = (timeline().target() - timeline().now()) / period;
  if (behind > kMaxMissed) {
    const auto skipped = static_cast<uint64_t>(behind - kMaxMissed);
    const bool counted = registers().integer(reg("FramesLeft")) != 0;  // then it ends by itself: nothing to skip
    if (!counted) {
      registers().setInteger(reg("FrameCounter"), registers().integer(reg("FrameCounter")) + skipped);
      timeline().after(reg("AcquisitionStart"), static_cast<int64_t>(skipped + 1) * period, [this] { expose(false); });
      return;
    }
  }
  timeline().after(reg("AcquisitionStart"), period, [this] { expose(false); });
}

void Acquisition::trigger() {
  if (!running() || !triggered()) return;
  const int64_t delayNs = nanoseconds(registers().real(reg("TriggerDelay"), kFrameStart) / 1e6);
  timeline().after(reg("TriggerSoftware"), delayNs + exposureNs(), [this] { expose(true); });
  core_.events.send(kEventFrameTrigger, registers().integer(reg("FrameCounter")) + 1);
}

// Called at the end of an exposure.
void Acquisition::expose(bool byTrigger) {
  if (!running() || byTrigger != triggered()) return scheduleNext();
  auto& r = registers();
  const uint64_t frame = r.integer(reg("FrameCounter")) + 1;
  r.setInteger(reg("FrameCounter"), frame);
  for (int32_t i = 0; i < 2; ++i)
    if (r.integer(reg("CounterEventSource"), i) == 1)
      r.setInteger(reg("CounterValue"), r.integer(reg("CounterValue"), i) + 1, i);
  if (waiting_.size() == kMaxWaiting) waiting_.pop_front();
  waiting_.push_back(pictureFacts(r, timeline().now(), exposureNs()));
  core_.events.send(kEventExposureStart, frame, exposureNs());
  core_.events.send(kEventExposureEnd, frame);

  const uint64_t left = r.integer(reg("FramesLeft"));
  if (left == 1) stop();
  r.setInteger(reg("FramesLeft"), left == 0 ? 0 : left - 1);
  scheduleNext();
}

bool Acquisition::nextPicture(PictureFacts& facts) {
  if (waiting_.empty() && running() && !triggered()) {
    timeline().cancel(reg("AcquisitionStart"));
    expose(false);
  }
  return duePicture(facts);
}

bool Acquisition::duePicture(PictureFacts& facts) {
  if (waiting_.empty()) return false;
  facts = std::move(waiting_.front());
  waiting_.pop_front();
  return true;
}

int64_t Acquisition::exposureNs() const {
  return nanoseconds(static_cast<double>(registers().integer(reg("ExposureTimeRaw"))) /
                     static_cast<double>(registers().integer(reg("ExposureClock"))));
}

int64_t Acquisition::periodNs() const {
  int64_t period = exposureNs() + nanoseconds(kReadoutSeconds);
  const double rate = registers().real(reg("AcquisitionFrameRate"));
  if (registers().integer(reg("AcquisitionFrameRateEnable")) != 0 && rate > 0)
    period = std::max(period, nanoseconds(1 / rate));
  return std::max<int64_t>(period, 1);
}

uint64_t Acquisition::status(int32_t signal) const {
  enum Signal { kTriggerWait, kAcquisitionActive, kFrameActive, kExposureActive };
  if (signal == kAcquisitionActive) return running();
  if (signal == kTriggerWait) return running() && triggered() && !timeline().waits(reg("TriggerSoftware"));
  return running() && (!triggered() || timeline().waits(reg("TriggerSoftware")));
}

void Acquisition::checkSize(RegisterId changed) {
  auto& r = registers();
  const auto tooLarge = [&](RegisterId size, RegisterId offset, RegisterId sensor, RegisterId binning,
                            RegisterId decimation) {
    const uint64_t divisor = std::max<uint64_t>(1, r.integer(binning) * r.integer(decimation));
    return r.integer(size) + r.integer(offset) > r.integer(sensor) / divisor || r.integer(size) == 0;
  };
  const bool columns = changed == reg("Width") || changed == reg("OffsetX");
  if (columns ? tooLarge(reg("Width"), reg("OffsetX"), reg("SensorWidth"), reg("BinningHorizontal"),
                         reg("DecimationHorizontal"))
              : tooLarge(reg("Height"), reg("OffsetY"), reg("SensorHeight"), reg("BinningVertical"),
                         reg("DecimationVertical")))
    throw DeviceFailure(kInvalidArgument, std::string(kRegisters[static_cast<std::size_t>(changed)].name) +
                                              ": the image would leave the sensor");
}

}  // namespace ox::simulation

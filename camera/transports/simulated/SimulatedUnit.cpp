#include "SimulatedUnit.h"

#include <OxCamera/CameraTypes.h>
#include <OxCamera/SimulatedFaults.h>

#include <algorithm>
#include <cstring>
#include <utility>

namespace ox::camera::simulated {
namespace {

constexpr size_t kWord = 4;
constexpr uint32_t kForEver = 0xffffffff;
constexpr const char* kUnplugged = "the camera was unplugged";

uint32_t number(const void* bytes) {
  uint8_t b[kWord];
  std::memcpy(b, bytes, kWord);
  return uint32_t{b[0]} << 24 | uint32_t{b[1]} << 16 | uint32_t{b[2]} << 8 | b[3];
}

void check(int result) {
  if (result < 0) {
    const std::string& text = simulation::RegisterDevice::lastFailureText();
    throw TransportError(Reason::refused, text.empty() ? "The camera refuses the access" : text);
  }
}

}  // namespace

CameraFacts SimulatedUnit::facts() const {
  CameraFacts facts;
  facts.place = facts.address = config_.name;
  facts.identity = config_.identity;
  facts.vendor = config_.vendor;
  facts.model = config_.model;
  facts.serial = config_.serial;
  facts.userName = config_.user;
  facts.interface = "simulated";
  facts.protocol = "Simulated";
  facts.linkSpeed = 10'000'000'000;
  const std::lock_guard lock(mutex_);
  facts.reach = controller_ != 0 && config_.reach == Reach::free ? Reach::busy : config_.reach;
  facts.obstacle = facts.reach == Reach::busy           ? "another program has control of the camera"
                   : facts.reach == Reach::wrongSubnet  ? "the camera is in another subnet"
                   : facts.reach == Reach::noPermission ? "the system does not allow access to the camera"
                                                        : "";
  return facts;
}

bool SimulatedUnit::isThere() {
  const std::lock_guard lock(mutex_);
  settle();
  return isThereLocked();
}

Opening SimulatedUnit::open(bool control, Milliseconds answerTime) {
  const std::lock_guard lock(mutex_);
  settle();
  if (!isThereLocked()) throw TransportError(Reason::notFound, config_.name + " does not answer");
  if (control && controller_ != 0) throw TransportError(Reason::busy, "Another program has control of " + config_.name);
  const uint64_t opening = ++openings_;
  if (control) controller_ = opening;
  contact_ = Clock::now();
  return {opening, control, answerTime};
}

void SimulatedUnit::close(const Opening& opening) {
  const std::lock_guard lock(mutex_);
  if (controller_ == opening.number) controller_ = 0;
}

void SimulatedUnit::abandon(const Opening& opening) {
  const std::lock_guard lock(mutex_);
  abandoned_ = std::max(abandoned_, opening.number);
  changed_.notify_all();
}

void SimulatedUnit::touch(const Opening& opening) {
  settle();
  if (!isThereLocked() || opening.number <= powerOnOpening_) throw TransportError(Reason::lost, kUnplugged);
  const auto now = Clock::now();
  if (!opening.control) return;
  if (controller_ == opening.number && now - contact_ > config_.heartbeat) controller_ = 0;
  if (controller_ != opening.number)
    throw TransportError(Reason::lost, "control went to another program, or no heartbeat came in time");
  contact_ = now;
}

bool SimulatedUnit::answers(std::unique_lock<std::mutex>& lock, const Opening& opening) {
  const bool silent = Clock::now() < silentUntil_;
  if (!silent && late_.count() == 0) return true;
  const bool inTime = !silent && late_ <= opening.answerTime;
  const Milliseconds wait = inTime ? late_ : opening.answerTime;
  if (!silent && lateCount_ > 0 && --lateCount_ == 0) late_ = Milliseconds{0};
  if (changed_.wait_for(lock, wait, [&] { return abandoned_ >= opening.number || !isThereLocked(); }))
    throw TransportError(Reason::lost, isThereLocked() ? "the access was given up" : kUnplugged);
  return inTime;
}

void SimulatedUnit::read(const Opening& opening, void* buffer, uint64_t address, size_t length) {
  std::unique_lock lock(mutex_);
  touch(opening);
  if (!answers(lock, opening)) {
    throw TransportError(Reason::timedOut,
                         "No answer to a read within " + std::to_string(opening.answerTime.count()) + " ms");
  }
  if (readFault(buffer, address, length)) return;
  check(camera_.read(buffer, static_cast<int64_t>(address), static_cast<int64_t>(length)));
}

void SimulatedUnit::write(const Opening& opening, const void* buffer, uint64_t address, size_t length) {
  std::unique_lock lock(mutex_);
  touch(opening);
  if (writeFault(buffer, address, length)) return;
  ++writes_;
  check(camera_.write(buffer, static_cast<int64_t>(address), static_cast<int64_t>(length)));
  if (!answers(lock, opening)) {
    throw TransportError(Reason::outcomeUnknown, "No answer to a write within " +
                                                     std::to_string(opening.answerTime.count()) +
                                                     " ms: outcome unknown, it is not repeated");
  }
}

void SimulatedUnit::ping(const Opening& opening) {
  const std::lock_guard lock(mutex_);
  touch(opening);
  ++pings_;
  if (Clock::now() < silentUntil_) throw TransportError(Reason::timedOut, "no answer to heartbeats");
}

std::string SimulatedUnit::description() const {
  std::string text(camera_.currentDescription());
  if (config_.order == Order::old) {
    const std::string newer = "SchemaMinorVersion=\"1\"", older = "SchemaMinorVersion=\"0\"";
    text.replace(text.find(newer), newer.size(), older);
  }
  return text;
}

SimulatedUnit::Sent SimulatedUnit::takeFrame(const Opening& opening, std::span<uint8_t> memory,
                                             simulation::Frame& frame, uint64_t& needed) {
  {
    const std::lock_guard lock(mutex_);
    settle();
    if (!reaches(opening)) return Sent::nothing;
  }
  if (!camera_.takeFrame(memory, frame, needed)) return Sent::nothing;
  const std::lock_guard lock(mutex_);
  if (loseFrames_ > 0) {
    --loseFrames_;
    return Sent::nothing;
  }
  if (needed > memory.size()) return Sent::tooLarge;
  if (cutFrames_ == 0) return Sent::whole;
  --cutFrames_;
  return Sent::cut;
}

bool SimulatedUnit::takeEvent(const Opening& opening, simulation::CameraEvent& event) {
  {
    const std::lock_guard lock(mutex_);
    settle();
    if (!reaches(opening)) return false;
  }
  return camera_.nextEvent(event);
}

// Whether what the camera sends arrives.
bool SimulatedUnit::reaches(const Opening& opening) const {
  return isThereLocked() && opening.number > powerOnOpening_ && Clock::now() >= silentUntil_;
}

bool SimulatedUnit::readFault(void* buffer, uint64_t address, size_t length) const {
  const uint32_t value = address == OX_FAULT_WRITES ? writes_ : pings_;
  if (length != kWord || (address != OX_FAULT_WRITES && address != OX_FAULT_PINGS)) return false;
  const uint8_t bytes[] = {static_cast<uint8_t>(value >> 24), static_cast<uint8_t>(value >> 16),
                           static_cast<uint8_t>(value >> 8), static_cast<uint8_t>(value)};
  std::memcpy(buffer, bytes, kWord);
  return true;
}

bool SimulatedUnit::writeFault(const void* buffer, uint64_t address, size_t length) {
  if (length != kWord || address < OX_FAULT_LATE_MS || address > OX_FAULT_LOSE_FRAMES) return false;
  const uint32_t value = number(buffer);
  if (address == OX_FAULT_DELAY_MS)
    delay_ = Milliseconds{value};
  else if (delay_.count() > 0)
    due_ = {Clock::now() + std::exchange(delay_, Milliseconds{0}), address, value};
  else
    begin(address, value);
  return true;
}

void SimulatedUnit::settle() {
  if (due_ && Clock::now() >= due_->time) {
    const Due due = *std::exchange(due_, std::nullopt);
    begin(due.address, due.value);
  }
}

void SimulatedUnit::begin(uint64_t address, uint32_t value) {
  const Clock::time_point end = value == kForEver ? Clock::time_point::max() : Clock::now() + Milliseconds{value};
  switch (address) {
    case OX_FAULT_LATE_MS:
      late_ = Milliseconds{value};
      lateCount_ = 0;
      break;
    case OX_FAULT_LATE_COUNT: lateCount_ = value; break;
    case OX_FAULT_UNPLUG_MS:
      pluggedAt_ = end;
      silentUntil_ = {};
      late_ = config_.late;
      powerOnOpening_ = openings_;
      controller_ = 0;
      camera_.reset();
      changed_.notify_all();
      break;
    case OX_FAULT_SILENT_MS: silentUntil_ = end; break;
    case OX_FAULT_TAKE_OVER: controller_ = 0; break;
    case OX_FAULT_CUT_FRAMES: cutFrames_ = value; break;
    case OX_FAULT_LOSE_FRAMES: loseFrames_ = value; break;
    default: break;
  }
}

}  // namespace ox::camera::simulated

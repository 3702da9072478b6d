#include "EventQueue.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace ox::simulation {

namespace {

constexpr std::size_t kMaxWaiting = 1024;  // as in a real camera, the oldest go first

// In the order of the entries of EventSelector.
constexpr std::array kEvents = {
    kEventExposureStart,    kEventExposureEnd,      kEventFrameTrigger, kEventLine0RisingEdge,
    kEventLine0FallingEdge, kEventTemperatureAlarm, kEventTest};

void appendBig(std::vector<uint8_t>& bytes, uint64_t value, int count) {
  for (int shift = 8 * (count - 1); shift >= 0; shift -= 8) bytes.push_back(static_cast<uint8_t>(value >> shift));
}

}  // namespace

std::string CameraEvent::idText() const {
  char text[24];
  std::snprintf(text, sizeof text, "%04llX", static_cast<unsigned long long>(id));
  return text;
}

void EventQueue::send(EventId id, uint64_t frameId, int64_t agoNs) {
  const auto place = std::find(kEvents.begin(), kEvents.end(), id) - kEvents.begin();
  if (registers_.integer(reg("EventNotification"), static_cast<int32_t>(place)) == 0) return;
  if (waiting_.size() == kMaxWaiting) {
    waiting_.pop_front();
    registers_.setInteger(reg("EventQueueLost"), registers_.integer(reg("EventQueueLost")) + 1);
  }
  const int64_t at = std::max<int64_t>(0, timeline_.now() - agoNs);
  CameraEvent event{id, cameraTime(registers_, at), frameId, {}};
  appendBig(event.payload, event.timestampNs, 8);
  appendBig(event.payload, frameId, 8);
  appendBig(event.payload, lineLevels(registers_, at), 4);
  waiting_.push_back(std::move(event));
}

bool EventQueue::fetch(CameraEvent& event) {
  if (waiting_.empty()) return false;
  event = std::move(waiting_.front());
  waiting_.pop_front();
  return true;
}

}  // namespace ox::simulation

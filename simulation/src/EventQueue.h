// Event messages that wait to be fetched.
#pragma once

#include <cstdint>
#include <deque>

#include "OxSimulation/Frame.h"
#include "RegisterBank.h"
#include "Timeline.h"

namespace ox::simulation {

class EventQueue {
 public:
  EventQueue(RegisterBank& registers, Timeline& timeline) : registers_(registers), timeline_(timeline) {}

  /// Queues the event if EventNotification has it switched on. Happened `agoNs` before now.
  void send(EventId id, uint64_t frameId = 0, int64_t agoNs = 0);
  bool fetch(CameraEvent& event);
  void clear() { waiting_.clear(); }

 private:
  RegisterBank& registers_;
  Timeline& timeline_;
  std::deque<CameraEvent> waiting_;
};

/// What the register LineStatusAll shows at a time: line 0 follows a square wave, outputs follow their sources.
uint64_t lineLevels(const RegisterBank& registers, int64_t nowNs);

/// Time from one edge of line 0 to the next.
inline constexpr int64_t kLine0HalfPeriodNs = 1'000'000'000;

/// The camera's time as Timestamp shows it: counts from the last TimestampReset.
uint64_t cameraTime(const RegisterBank& registers, int64_t nowNs);

}  // namespace ox::simulation

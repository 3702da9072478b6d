// A simulated camera as a thing on a table: powered, plugged in or not, controlled by one program at most.
#pragma once

#include <OxCameraTransport/Transport.h>
#include <OxSimulation/SimulatedCamera.h>

#include <condition_variable>
#include <mutex>
#include <optional>
#include <span>
#include <string>

#include "UnitConfig.h"

namespace ox::camera::simulated {

// One program's hold on a unit.
struct Opening {
  uint64_t number;
  bool control;
  Milliseconds answerTime;
};

// Any thread may call. Every access names its opening; that of an opening that has lost control fails.
class SimulatedUnit {
 public:
  explicit SimulatedUnit(UnitConfig config) : config_(std::move(config)), late_(config_.late) {}

  CameraFacts facts() const;
  bool isThere();  // plugged in
  Order order() const { return config_.order; }

  // Throws TransportError.
  Opening open(bool control, Milliseconds answerTime);
  void close(const Opening& opening);
  // Ends what waits in read() and write() of this opening.
  void abandon(const Opening& opening);

  void read(const Opening& opening, void* buffer, uint64_t address, size_t length);
  void write(const Opening& opening, const void* buffer, uint64_t address, size_t length);
  void ping(const Opening& opening);
  std::string description() const;

  // What becomes of a frame that is due.
  enum class Sent { nothing, whole, cut, tooLarge };
  // Draws the next frame that is due into `memory`; into none it is gone. Also `nothing` while the camera is out of
  // reach, and for frames that a fault loses.
  Sent takeFrame(const Opening& opening, std::span<uint8_t> memory, simulation::Frame& frame, uint64_t& needed);
  // Takes the oldest event message that is due. False: there is none, or the camera is out of reach.
  bool takeEvent(const Opening& opening, simulation::CameraEvent& event);

 private:
  using Clock = std::chrono::steady_clock;

  // Throws if the opening cannot reach the camera; notes that it has been in touch.
  void touch(const Opening& opening);
  // Waits for the answer of an access; whether one came in time.
  bool answers(std::unique_lock<std::mutex>& lock, const Opening& opening);
  bool readFault(void* buffer, uint64_t address, size_t length) const;
  bool writeFault(const void* buffer, uint64_t address, size_t length);
  void begin(uint64_t address, uint32_t value);  // a fault
  // Begins the fault that is due.
  void settle();
  bool reaches(const Opening& opening) const;
  bool isThereLocked() const { return Clock::now() >= pluggedAt_; }

  const UnitConfig config_;
  mutable simulation::SimulatedCamera camera_;
  mutable std::mutex mutex_;
  std::condition_variable changed_;
  uint64_t openings_ = 0;
  uint64_t controller_ = 0;      // opening that has control, 0: none
  uint64_t abandoned_ = 0;       // the last opening that was
  uint64_t powerOnOpening_ = 0;  // openings up to this one were before the last power on
  Clock::time_point contact_;    // of the controller
  Clock::time_point pluggedAt_;  // unplugged until then
  Clock::time_point silentUntil_;
  struct Due {
    Clock::time_point time;
    uint64_t address;
    uint32_t value;
  };
  std::optional<Due> due_;
  uint32_t cutFrames_ = 0;
  uint32_t loseFrames_ = 0;
  Milliseconds delay_{0};
  Milliseconds late_;
  uint32_t lateCount_ = 0;
  uint32_t writes_ = 0;
  uint32_t pings_ = 0;
};

}  // namespace ox::camera::simulated

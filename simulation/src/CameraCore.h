// What all behaviours of the camera share.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>

#include "EventQueue.h"
#include "OxSimulation/FileAccess.h"
#include "RegisterBank.h"
#include "StateBlob.h"
#include "Timeline.h"

namespace ox::simulation {

inline constexpr int64_t kMillisecond = 1'000'000;
inline constexpr int64_t kSecond = 1'000'000'000;

struct CameraCore {
  CameraCore(Clock clock, int32_t fileBufferBytes)
      : registers(fileBufferBytes), timeline(std::move(clock)), events(registers, timeline) {}

  /// Lets a command take its time: its register keeps what was written until then, is cleared, and `done` runs.
  void finishLater(RegisterId command, int64_t durationNs, std::function<void()> done) {
    timeline.after(command, durationNs, [this, command, done = std::move(done)] {
      registers.setInteger(command, 0);
      done();
    });
  }

  RegisterBank registers;
  Timeline timeline;
  EventQueue events;
  /// Told of each edge of line 0, by whoever makes it.
  std::function<void(bool rising)> line0Edge;
};

/// One subject of the camera's behaviour. Hooks are installed by the constructor; what has to outlive an access is kept
/// in registers, or saved and loaded here.
class Behaviour {
 public:
  explicit Behaviour(CameraCore& core) : core_(core) {}
  Behaviour(const Behaviour&) = delete;
  Behaviour& operator=(const Behaviour&) = delete;
  virtual ~Behaviour() = default;

  /// Registers hold their values at power on and the timeline is empty: start what runs by itself.
  virtual void powerOn() {}
  /// Adds to the camera's state, and takes it over again after the registers were loaded and powerOn() was not called.
  virtual void save(StateBlocks&) const {}
  virtual void load(const StateBlocks&) {}

 protected:
  RegisterBank& registers() const { return core_.registers; }
  Timeline& timeline() const { return core_.timeline; }

  CameraCore& core_;
};

}  // namespace ox::simulation

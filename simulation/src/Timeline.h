// The camera's time: what is due happens, in order, when someone looks.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <vector>

#include "OxSimulation/SimulatedCamera.h"
#include "RegisterTable.h"

namespace ox::simulation {

/// The camera has no thread: every access first calls advance(), which carries out all tasks due by then, each at its
/// own time. So an hour without access and an hour of accesses end in the same state.
class Timeline {
 public:
  explicit Timeline(Clock clock) : clock_(std::move(clock)) { restart(); }

  /// Nanoseconds since restart(); while a task runs, the time it was due.
  int64_t now() const { return now_; }
  /// The time that the running advance() leads to, now() outside of it.
  int64_t target() const { return target_; }

  void advance();

  /// Lets `task` run in `delayNs`. A register has one task at most: a new one replaces it.
  void after(RegisterId owner, int64_t delayNs, std::function<void()> task);
  void cancel(RegisterId owner);
  bool waits(RegisterId owner) const;

  /// Time begins at 0 again and nothing is due.
  void restart();

 private:
  struct Task {
    RegisterId owner;
    std::function<void()> run;
  };

  Clock clock_;
  int64_t start_ = 0;
  int64_t now_ = 0;
  int64_t target_ = 0;
  std::multimap<int64_t, Task> due_;
};

}  // namespace ox::simulation

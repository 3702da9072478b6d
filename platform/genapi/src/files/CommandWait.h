// Waiting until a device has finished a command.
#pragma once
#include <chrono>

#include "Base/GCTypes.h"

namespace GENAPI_NAMESPACE {

class ICommand;

// The clock for waits. Tests replace it, so that a limit of minutes is reached at once.
class WaitTime {
 public:
  virtual ~WaitTime() = default;
  virtual std::chrono::milliseconds now() const;  // never backwards
  virtual void sleep(std::chrono::milliseconds pause) const;

  // The machine's own unless exchanged.
  static const WaitTime& current();
  // Null restores the machine's own. The replacement must live until then.
  static void exchange(const WaitTime* other);
};

// Asks IsDone with pauses of 0 ms, `firstPause` and then twice as long each time, up to `longestPause`. False when
// `limit` has passed and it still is not done; exceptions of the node and its port pass.
bool waitUntilDone(ICommand& command, std::chrono::milliseconds limit, std::chrono::milliseconds firstPause,
                   std::chrono::milliseconds longestPause);

}  // namespace GENAPI_NAMESPACE

// The clocks of the nodes that are to be read again from time to time.
#pragma once
#include <cstdint>
#include <exception>
#include <vector>

#include "description/NodeIndex.h"

namespace GENAPI_NAMESPACE {

struct Device;

class PollClock {
 public:
  explicit PollClock(Device& device);
  // Advances the clocks of all active nodes by milliseconds; what is due is invalidated and called back with everything
  // that depends on it. Commands and enumerations that are due ask the device first. The failure of one node does not
  // keep the others from their turn; the first one is thrown at the end.
  void advance(int64_t elapsed);

 private:
  struct Clock {
    NodeIndex node;
    int64_t time;   // milliseconds since the node was due or became active
    uint32_t turn;  // of activity, where the node counts them
  };
  // What one call finds: a port may come back for another call in the middle of it.
  struct Round {
    std::vector<NodeIndex> due;
    std::exception_ptr failure;
  };

  bool isDue(Clock& clock, int64_t elapsed, bool active, uint32_t turn);
  void advanceStates(int64_t elapsed, Round& round);
  void advanceRegisters(int64_t elapsed, Round& round);

  Device& device_;
  std::vector<Clock> clocks_;
};

}  // namespace GENAPI_NAMESPACE

// The clocks of the nodes that are to be read again from time to time.
#pragma once
#include <cstdint>
#include <exception>
#include <vector>

#include "description/NodeIndex.h"

namespace GENAPI_NAMESPACE {

class NodeMap;

class PollClock {
 public:
  explicit PollClock(NodeMap& map);
  // Advances the clocks of all active nodes by milliseconds; what is due is invalidated and called back with everything
  // that depends on it. Commands and enumerations that are due ask the device first. The failure of one node does not
  // keep the others from their turn; the first one is thrown at the end.
  void advance(int64_t elapsed);

 private:
  bool isDue(size_t clock, int64_t elapsed, bool active);
  void advanceStates(int64_t elapsed);
  void advanceRegisters(int64_t elapsed);

  struct Clock {
    NodeIndex node;
    int64_t time;  // milliseconds since the node was due or became active
  };
  NodeMap& map_;
  std::vector<Clock> clocks_;
  std::vector<NodeIndex> due_;
  std::exception_ptr failure_;
};

}  // namespace GENAPI_NAMESPACE

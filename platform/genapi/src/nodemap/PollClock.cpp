#include "nodemap/PollClock.h"

#include <exception>
#include <limits>
#include <utility>

#include "nodemap/NodeMap.h"
#include "nodes/CommandNode.h"
#include "nodes/EnumerationNode.h"

namespace GENAPI_NAMESPACE {

PollClock::PollClock(NodeMap& map) : map_(map) {
  for (const NodeIndex node : map.description().polledNodes()) clocks_.push_back({node, 0});
}

bool PollClock::isDue(size_t clock, int64_t elapsed, bool active) {
  Clock& mine = clocks_[clock];
  if (!active) {
    mine.time = 0;
    return false;
  }
  if (__builtin_add_overflow(mine.time, elapsed, &mine.time)) mine.time = std::numeric_limits<int64_t>::max();
  const Property* period = map_.description().find(mine.node, Element::PollingTime);
  if (!period || mine.time < period->integer) return false;
  mine.time = 0;
  return true;
}

void PollClock::advanceStates(int64_t elapsed) {
  for (size_t i = 0; i < clocks_.size(); ++i) {
    const NodeIndex index = clocks_[i].node;
    const NodeType type = map_.description().node(index).type;
    if (type != NodeType::Command && type != NodeType::Enumeration) continue;
    NodeBase* node = map_.nodeIfBuilt(index);  // one that nobody has used neither executes nor clears
    if (!node) continue;
    try {
      if (type == NodeType::Command) {
        auto& command = static_cast<CommandNode&>(*node);
        if (!isDue(i, elapsed, command.isExecuting() && command.canBeAsked())) continue;
        if (!command.ask()) due_.push_back(index);
      } else {
        auto& enumeration = static_cast<EnumerationNode&>(*node);
        if (!isDue(i, elapsed, enumeration.isClearing())) continue;
        due_.push_back(index);
        enumeration.readInteger({.ignoreCache = true});
      }
    } catch (...) {
      if (!failure_) failure_ = std::current_exception();
    }
  }
}

void PollClock::advanceRegisters(int64_t elapsed) {
  for (size_t i = 0; i < clocks_.size(); ++i) {
    const NodeIndex index = clocks_[i].node;
    const NodeType type = map_.description().node(index).type;
    if (type == NodeType::Command || type == NodeType::Enumeration) continue;
    bool blocked = false;
    try {
      if (const Property* guard = map_.description().find(index, Element::pBlockPolling)) {
        NodeBase& source = map_.node(guard->target);
        blocked = !IsReadable(source.accessMode()) || source.readTruth();
      }
    } catch (...) {
      blocked = true;
      if (!failure_) failure_ = std::current_exception();
    }
    if (isDue(i, elapsed, !blocked)) due_.push_back(index);
  }
}

void PollClock::advance(int64_t elapsed) {
  due_.clear();
  failure_ = nullptr;
  advanceStates(elapsed);
  advanceRegisters(elapsed);
  for (const NodeIndex each : due_) map_.invalidated(each);
  if (failure_) std::rethrow_exception(std::exchange(failure_, nullptr));
}

}  // namespace GENAPI_NAMESPACE

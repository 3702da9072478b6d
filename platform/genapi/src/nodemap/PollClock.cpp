#include "nodemap/PollClock.h"

#include <exception>
#include <limits>

#include "nodes/CommandNode.h"
#include "nodes/EnumerationNode.h"

namespace GENAPI_NAMESPACE {

PollClock::PollClock(Device& device) : device_(device) {
  for (const NodeIndex node : device.description.polledNodes()) clocks_.push_back({node, 0, 0});
}

bool PollClock::isDue(Clock& clock, int64_t elapsed, bool active, uint32_t turn) {
  if (!active || turn != clock.turn) clock.time = 0;
  clock.turn = turn;
  if (!active) return false;
  if (__builtin_add_overflow(clock.time, elapsed, &clock.time)) clock.time = std::numeric_limits<int64_t>::max();
  const Property* period = device_.description.find(clock.node, Element::PollingTime);
  if (!period || period->integer < 0 || clock.time < period->integer) return false;  // negative: never
  clock.time = 0;
  return true;
}

void PollClock::advanceStates(int64_t elapsed, Round& round) {
  for (Clock& clock : clocks_) {
    const NodeIndex index = clock.node;
    const NodeType type = device_.description.node(index).type;
    if (type != NodeType::Command && type != NodeType::Enumeration) continue;
    NodeBase* node = device_.nodes.ifBuilt(index);  // one that nobody has used neither executes nor clears
    if (!node) continue;
    try {
      if (type == NodeType::Command) {
        auto& command = static_cast<CommandNode&>(*node);
        if (!isDue(clock, elapsed, command.isExecuting() && command.canBeAsked(), command.starts())) continue;
        if (!command.askDevice()) round.due.push_back(index);
      } else {
        auto& enumeration = static_cast<EnumerationNode&>(*node);
        if (!isDue(clock, elapsed, enumeration.isClearing(), enumeration.clearings())) continue;
        round.due.push_back(index);
        enumeration.readInteger({.ignoreCache = true});
      }
    } catch (...) {
      if (!round.failure) round.failure = std::current_exception();
    }
  }
}

void PollClock::advanceRegisters(int64_t elapsed, Round& round) {
  for (Clock& clock : clocks_) {
    const NodeIndex index = clock.node;
    const NodeType type = device_.description.node(index).type;
    if (type == NodeType::Command || type == NodeType::Enumeration) continue;
    bool blocked = false;
    try {
      if (const Property* guard = device_.description.find(index, Element::pBlockPolling)) {
        const NodeBase& source = device_.nodes.node(guard->target);
        blocked = !IsReadable(source.accessMode()) || source.readTruth();
      }
    } catch (...) {
      blocked = true;
      if (!round.failure) round.failure = std::current_exception();
    }
    if (isDue(clock, elapsed, !blocked, 0)) round.due.push_back(index);
  }
}

void PollClock::advance(int64_t elapsed) {
  Round round;
  advanceStates(elapsed, round);
  advanceRegisters(elapsed, round);
  for (const NodeIndex each : round.due) device_.dispatch.invalidated(each);
  if (round.failure) std::rethrow_exception(round.failure);
}

}  // namespace GENAPI_NAMESPACE

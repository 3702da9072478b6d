// Computing a limit once: kept until the node is invalidated, and never computed inside itself.
#pragma once
#include "nodes/NodeBase.h"

namespace GENAPI_NAMESPACE {

// `whileBusy` answers when the computation comes back to the node for one of its limits, as two features that limit
// each other do: no restriction from here.
template <class Number, class Fetch>
Number keptLimit(NodeBase& node, StateFlag flag, Number& kept, Number whileBusy, Fetch&& fetch) {
  NodeState& state = node.state();
  NodeMap& map = node.map();
  if (state.flags & flag) {
    if (EvaluationStep* asking = map.evaluation()) asking->noteConsumption();
    return kept;
  }
  if (state.flags & kBusyLimits) {
    EvaluationStep::taintUpTo(node, map.evaluation());
    return whileBusy;
  }
  struct Busy {
    NodeState& state;
    explicit Busy(NodeState& theState) : state(theState) { state.flags |= kBusyLimits; }
    ~Busy() { state.flags &= static_cast<uint16_t>(~kBusyLimits); }
  };
  const EvaluationStep step(map, node);
  Number limit;
  {
    const Busy busy(state);
    limit = fetch();
  }
  if (!node.isUncached() && map.graph().limitsCacheable(node.index()) && step.isUnspoiled()) {
    kept = limit;
    state.flags |= flag;
    if (!map.graph().limitsFollowValues(node.index())) state.traits |= kSteadyLimits;
  }
  return limit;
}

}  // namespace GENAPI_NAMESPACE

// How a node's access mode follows from its guards, from what was imposed, and from its type; and the sentences that
// say why an access was refused.
#include <string>
#include <utility>

#include "Base/GCException.h"
#include "GenApi/EnumClasses.h"
#include "nodes/NodeBase.h"

namespace GENAPI_NAMESPACE {

namespace {

EAccessMode withoutWriting(EAccessMode mode) {
  if (mode == RW) return RO;
  return mode == WO ? NA : mode;
}

constexpr Element kGuards[] = {Element::pIsImplemented, Element::pIsAvailable, Element::pIsLocked,
                               Element::pBlockPolling};

std::string modeText(EAccessMode mode) {
  return EAccessModeClass::ToString(mode).c_str();
}

}  // namespace

EAccessMode NodeBase::GetAccessMode() const {
  auto* self = const_cast<NodeBase*>(this);
  return map_.operate(self, [&] { return self->accessMode(); });
}

EAccessMode NodeBase::computeAccessMode() {
  if (defective_) return NI;
  NodeState& mine = state();
  if (mine.flags & kBusyAccessMode) {
    map_.accessCycle() = true;
    return RW;  // no objection from here; the computation that is under way decides
  }
  struct Busy {
    NodeMap& map;
    NodeState& state;
    const bool outermost;
    Busy(NodeMap& theMap, NodeState& theState) : map(theMap), state(theState), outermost(theMap.accessDepth()++ == 0) {
      state.flags |= kBusyAccessMode;
      if (outermost) map.accessCycle() = false;
    }
    ~Busy() {
      state.flags &= static_cast<uint16_t>(~kBusyAccessMode);
      --map.accessDepth();
    }
  };
  const EvaluationStep step(map_, *this);
  const Busy busy(map_, mine);
  const EAccessMode mode = combinedMode();
  const bool complete = busy.outermost || !map_.accessCycle();
  if (complete && step.isUnspoiled() && keepsAccessMode() && map_.graph().accessModeCacheable(index_)) {
    mine.accessMode = static_cast<uint8_t>(mode);
    mine.flags |= kHasAccessMode;
    if (!map_.graph().accessModeFollowsValues(index_)) mine.traits |= kSteadyAccessMode;
  }
  return mode;
}

EAccessMode NodeBase::combinedMode() {
  EAccessMode mode = RW;
  if (hasGuards_) {
    for (const Element guard : kGuards) {
      const Property* link = find(guard);
      if (!link) continue;
      NodeBase& source = map_.node(link->target);
      if (!IsReadable(source.accessMode())) {
        mode = Combine(mode, NA);
        break;
      }
      if (guard == Element::pBlockPolling) continue;  // its value concerns polling alone
      const bool isSet = source.readTruth();
      if (guard == Element::pIsImplemented && !isSet) return NI;
      if (guard == Element::pIsAvailable && !isSet) mode = NA;
      if (guard == Element::pIsLocked && isSet) mode = withoutWriting(mode);
    }
  }
  mode = Combine(mode, static_cast<EAccessMode>(record().imposedAccessMode));
  if (const Imposed* imposed = map_.imposed(index_)) mode = Combine(mode, imposed->accessMode);
  return Combine(mode, typeMode());
}

// The first cause that explains the mode, in words; empty when there is none to name.
std::string NodeBase::accessModeReason(int depth) {
  for (const Element guard : kGuards) {
    const Property* link = find(guard);
    if (!link) continue;
    NodeBase& source = map_.node(link->target);
    const std::string name = "'" + std::string(source.name()) + "'";
    if (!IsReadable(source.accessMode())) return name + " is not readable";
    if (guard == Element::pBlockPolling) continue;
    const int64_t value = source.readInteger({});
    if (guard == Element::pIsLocked) {
      if (value != 0) return "locked by " + name + " (value " + std::to_string(value) + ")";
    } else if (value == 0) {
      return name + " is 0";
    }
  }
  if (const Imposed* imposed = map_.imposed(index_); imposed && imposed->accessMode != RW) {
    return modeText(imposed->accessMode) + " was imposed";
  }
  if (record().imposedAccessMode != RW) {
    return "ImposedAccessMode is " + modeText(static_cast<EAccessMode>(record().imposedAccessMode));
  }
  if (depth >= 8) return {};
  for (const Property& each : properties()) {
    if (each.element != Element::pValue && each.element != Element::pPort && each.element != Element::pVariable)
      continue;
    NodeBase& source = map_.node(each.target);
    const EAccessMode mode = source.accessMode();
    if (mode == RW) continue;
    const std::string name = "'" + std::string(source.name()) + "'";
    if (source.record().type == NodeType::Port && !IsAvailable(mode)) return "port " + name + " is not connected";
    const std::string deeper = source.accessModeReason(depth + 1);
    return name + " is " + modeText(mode) + (deeper.empty() ? "" : ", " + deeper);
  }
  return {};
}

void NodeBase::refuseDefective() const {
  throw RUNTIME_EXCEPTION("%s", (map_.sourceName() + ":" + map_.description().defectText(index_)).c_str());
}

void NodeBase::refuse(const char* attempt) {
  requireSound();
  const EAccessMode mode = accessMode();
  std::string reason;
  try {
    reason = accessModeReason(0);
  } catch (const GENICAM_NAMESPACE::GenericException&) {  // the mode alone must do
    reason.clear();
  }
  if (!reason.empty()) reason.insert(0, ", ");
  throw ACCESS_EXCEPTION("%s: not %s: access mode is %s%s", map_.pathTo(*this).c_str(), attempt, modeText(mode).c_str(),
                         reason.c_str());
}

void NodeBase::refuseReading() {
  refuse("readable");
}
void NodeBase::refuseWriting() {
  refuse("writable");
}

}  // namespace GENAPI_NAMESPACE

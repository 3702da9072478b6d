// How a node's access mode follows from its guards, from what was imposed, and from its type; and the sentences that
// say why an access was refused.
#include <string>

#include "GenApi/EnumClasses.h"
#include "description/ElementRules.h"
#include "nodes/NodeBase.h"

namespace GENAPI_NAMESPACE {

namespace {

EAccessMode withoutWriting(EAccessMode mode) {
  if (mode == RW) return RO;
  return mode == WO ? NA : mode;
}

std::string modeText(EAccessMode mode) { return EAccessModeClass::ToString(mode).c_str(); }

}  // namespace

EAccessMode NodeBase::GetAccessMode() const {
  return device_.dispatch.operate(index_, [&] { return accessMode(); });
}

EAccessMode NodeBase::combinedMode() const {
  EAccessMode mode = RW;
  if (hasGuards_) {
    for (const Element guard : kGuardLinks) {
      const Property* link = find(guard);
      if (!link) continue;
      const NodeBase& source = other(link->target);
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
  if (const Imposed* imposed = device_.imposed(index_)) mode = Combine(mode, imposed->accessMode);
  return Combine(mode, typeMode());
}

// The first cause that explains the mode, in words; empty when there is none to name.
std::string NodeBase::accessModeReason(int depth) const {
  for (const Element guard : kGuardLinks) {
    const Property* link = find(guard);
    if (!link) continue;
    const NodeBase& source = other(link->target);
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
  if (const Imposed* imposed = device_.imposed(index_); imposed && imposed->accessMode != RW)
    return modeText(imposed->accessMode) + " was imposed";
  if (record().imposedAccessMode != RW)
    return "ImposedAccessMode is " + modeText(static_cast<EAccessMode>(record().imposedAccessMode));
  if (depth >= 8) return {};
  for (const Property& each : properties()) {
    if (each.element != Element::pValue && each.element != Element::pPort && each.element != Element::pVariable)
      continue;
    const NodeBase& source = other(each.target);
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
  refuse<RuntimeException>("{}:{}", device_.sourceName, description().defectText(index_));
}

void NodeBase::refuseAccess(std::string_view attempt) const {
  requireSound();
  const EAccessMode mode = accessMode();
  std::string reason;
  try {
    reason = accessModeReason(0);
  } catch (const GenericException&) {
    reason.clear();  // the mode alone says something
  }
  if (!reason.empty()) reason.insert(0, ", ");
  refuse<AccessException>("{}: not {}: access mode is {}{}", path(), attempt, modeText(mode), reason);
}

}  // namespace GENAPI_NAMESPACE

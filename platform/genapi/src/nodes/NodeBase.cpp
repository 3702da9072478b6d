#include "nodes/NodeBase.h"

#include <algorithm>

#include "Base/GCException.h"
#include "nodemap/NodeMap.h"
#include "text/Utf8.h"

namespace GENAPI_NAMESPACE {

using GENICAM_NAMESPACE::gcstring;

NodeBase::NodeBase(NodeMap& map, NodeIndex index)
    : map_(map), index_(index), defective_(map.description().node(index).defective) {
  for (const Property& each : properties()) {
    switch (each.element) {
      case Element::pIsImplemented:
      case Element::pIsAvailable:
      case Element::pIsLocked:
      case Element::pBlockPolling:
        hasGuards_ = true;
        break;
      case Element::pError:
        hasErrorLinks_ = true;
        break;
      case Element::pSelected:
        isSelector_ = true;
        break;
      default:
        break;
    }
  }
}

std::string zeroTerminated(std::string_view text) {
  return std::string(text);
}

std::string shownText(std::string_view text) {
  constexpr size_t kShownCharacters = 60;
  return text::excerpt(text, kShownCharacters);
}

NodeBase* NodeBase::linked(Element element) const {
  const Property* link = find(element);
  return link ? &map_.node(link->target) : nullptr;
}

gcstring NodeBase::GetName(bool) const {
  return gcstring(name());
}
ENameSpace NodeBase::GetNameSpace() const {
  return static_cast<ENameSpace>(record().nameSpace);
}
bool NodeBase::IsCachable() const {
  return GetCachingMode() != NoCache;
}
ECachingMode NodeBase::GetCachingMode() const {
  return cachingMode();
}
ECachingMode NodeBase::decideCachingMode() const {
  const ECachingMode mode = map_.graph().cachingMode(index_);
  cachingMode_.store(static_cast<uint8_t>(mode), std::memory_order_relaxed);
  return mode;
}
EYesNo NodeBase::IsAccessModeCacheable() const {
  return map_.graph().accessModeCacheable(index_) ? Yes : No;
}
gcstring NodeBase::GetDeviceName() const {
  return map_.GetDeviceName();
}
INodeMap* NodeBase::GetNodeMap() const {
  return &map_;
}
bool NodeBase::IsStreamable() const {
  return record().streamable;
}
bool NodeBase::IsDeprecated() const {
  return record().deprecated;
}
bool NodeBase::IsFeature() const {
  return map_.graph().isFeature(index_);
}
bool NodeBase::IsSelector() const {
  return isSelector_;
}

EVisibility NodeBase::GetVisibility() const {
  const auto own = static_cast<EVisibility>(record().visibility);
  const AutoLock lock(map_.GetLock());
  const Imposed* imposed = map_.imposed(index_);
  return imposed ? Combine(own, imposed->visibility) : own;
}

int64_t NodeBase::GetPollingTime() const {
  const Property* time = find(Element::PollingTime);
  return time ? time->integer : -1;
}

namespace {
gcstring textOf(const Property* property) {
  return property ? gcstring(property->value()) : gcstring();
}
}  // namespace

gcstring NodeBase::GetToolTip() const {
  return textOf(find(Element::ToolTip));
}
gcstring NodeBase::GetDescription() const {
  return textOf(find(Element::Description));
}
gcstring NodeBase::GetEventID() const {
  return textOf(find(Element::EventID));
}

gcstring NodeBase::GetDisplayName() const {
  const Property* given = find(Element::DisplayName);
  return given ? gcstring(given->value()) : GetName(false);
}

INode* NodeBase::GetAlias() const {
  return linked(Element::pAlias);
}
INode* NodeBase::GetCastAlias() const {
  return linked(Element::pCastAlias);
}

void NodeBase::InvalidateNode() {
  map_.operate(this, [&] { map_.invalidated(index_); });
}

void NodeBase::ImposeAccessMode(EAccessMode ImposedAccessMode) {
  map_.operate(this, [&] {
    map_.impose(index_).accessMode = ImposedAccessMode;
    map_.renewCategories();
    map_.invalidated(index_);
  });
}

void NodeBase::ImposeVisibility(EVisibility ImposedVisibility) {
  map_.operate(this, [&] {
    map_.impose(index_).visibility = ImposedVisibility;
    map_.invalidated(index_);
  });
}

CallbackHandleType NodeBase::RegisterCallback(CNodeCallback* pCallback) {
  if (!pCallback) throw INVALID_ARGUMENT_EXCEPTION("%s: no callback given", zeroTerminated(name()).c_str());
  return map_.addCallback(index_, pCallback);
}

bool NodeBase::DeregisterCallback(CallbackHandleType hCallback) {
  return map_.removeCallback(index_, hCallback);
}

void NodeBase::completeWrite(bool contentKnown) {
  map_.changed(index_);
  // What leads back to the node itself has just been dropped, and the node with it.
  NodeState& mine = state();
  if (mine.stamp == map_.stamp()) return;
  mine.flags &= static_cast<uint16_t>(~(kHasValue | kValid));
  if (contentKnown && isWriteThrough()) mine.flags |= kValid;
}

void NodeBase::checkErrors() {
  if (!hasErrorLinks_) return;
  for (const Property& each : properties()) {
    if (each.element != Element::pError) continue;
    NodeBase& source = map_.node(each.target);
    const int64_t value = source.readInteger({.ignoreCache = true});
    if (value == 0) continue;
    const std::string meaning = source.describeValue(value);
    throw RUNTIME_EXCEPTION("%s: %s", zeroTerminated(name()).c_str(), meaning.c_str());
  }
}

std::string NodeBase::describeValue(int64_t value) const {
  return std::to_string(value);
}

namespace {
[[noreturn]] void noSuchValue(const NodeBase& node, const char* what) {
  throw LOGICAL_ERROR_EXCEPTION("%s: a %s has no value as %s", node.map().pathTo(node).c_str(),
                                zeroTerminated(nodeTypeName(node.record().type)).c_str(), what);
}
}  // namespace

int64_t NodeBase::readInteger(Reading) {
  noSuchValue(*this, "integer");
}
double NodeBase::readFloat(Reading) {
  noSuchValue(*this, "float");
}
void NodeBase::writeInteger(int64_t, bool) {
  noSuchValue(*this, "integer");
}
void NodeBase::writeFloat(double, bool) {
  noSuchValue(*this, "float");
}
gcstring NodeBase::readText(Reading) {
  noSuchValue(*this, "text");
}
void NodeBase::writeText(std::string_view, bool) {
  noSuchValue(*this, "text");
}
int64_t NodeBase::integerMin() {
  return std::numeric_limits<int64_t>::min();
}
int64_t NodeBase::integerMax() {
  return std::numeric_limits<int64_t>::max();
}
double NodeBase::floatMin() {
  return std::numeric_limits<double>::lowest();
}
double NodeBase::floatMax() {
  return std::numeric_limits<double>::max();
}
double NodeBase::floatIncrement() {
  throw RUNTIME_EXCEPTION("%s: the node has no increment", map_.pathTo(*this).c_str());
}
std::vector<int64_t> NodeBase::integerValueSet(bool) {
  return {};
}
std::vector<double> NodeBase::floatValueSet(bool) {
  return {};
}
int64_t NodeBase::textMaxLength() {
  return std::numeric_limits<int64_t>::max();
}

}  // namespace GENAPI_NAMESPACE

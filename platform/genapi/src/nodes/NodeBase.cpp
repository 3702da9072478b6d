#include "nodes/NodeBase.h"

#include <limits>

#include "description/ElementRules.h"
#include "nodes/Presentation.h"
#include "text/Utf8.h"

namespace GENAPI_NAMESPACE {

using GENICAM_NAMESPACE::gcstring;

NodeBase::NodeBase(Device& device, NodeIndex index, Evaluation::Stay stay)
    : device_(device), index_(index), defective_(device.description.node(index).defective), stay_(stay) {
  for (const Property& each : properties()) {
    hasGuards_ |= kGuards.has(each.element);
    hasErrorLinks_ |= each.element == Element::pError;
    isSelector_ |= each.element == Element::pSelected;
  }
}

std::string shownText(std::string_view text) {
  constexpr size_t kShownCharacters = 60;
  return text::excerpt(text, kShownCharacters);
}

NodeBase* NodeBase::linked(Element element) const {
  const Property* link = find(element);
  return link ? &other(link->target) : nullptr;
}

gcstring NodeBase::GetName(bool) const { return gcstring(name()); }
ENameSpace NodeBase::GetNameSpace() const { return static_cast<ENameSpace>(record().nameSpace); }
bool NodeBase::IsCachable() const { return GetCachingMode() != NoCache; }
ECachingMode NodeBase::GetCachingMode() const { return evaluation().graph().traits().cachingMode(index_); }
EYesNo NodeBase::IsAccessModeCacheable() const {
  return evaluation().graph().traits().accessModeCacheable(index_) ? Yes : No;
}
gcstring NodeBase::GetDeviceName() const { return device_.name; }
INodeMap* NodeBase::GetNodeMap() const { return &device_.map; }
bool NodeBase::IsStreamable() const { return record().streamable; }
bool NodeBase::IsDeprecated() const { return record().deprecated; }
bool NodeBase::IsFeature() const { return evaluation().graph().traits().isFeature(index_); }
bool NodeBase::IsSelector() const { return isSelector_; }

EVisibility NodeBase::GetVisibility() const {
  const auto own = static_cast<EVisibility>(record().visibility);
  const AutoLock lock(device_.dispatch.lock());
  const Imposed* imposed = device_.imposed(index_);
  return imposed ? Combine(own, imposed->visibility) : own;
}

int64_t NodeBase::GetPollingTime() const {
  const Property* time = find(Element::PollingTime);
  return time ? time->integer : -1;
}

namespace {
gcstring textOf(const Property* property) { return property ? gcstring(property->value()) : gcstring(); }
}  // namespace

gcstring NodeBase::GetToolTip() const { return textOf(find(Element::ToolTip)); }
gcstring NodeBase::GetDescription() const { return textOf(find(Element::Description)); }
gcstring NodeBase::GetEventID() const { return textOf(find(Element::EventID)); }

gcstring NodeBase::GetDisplayName() const {
  const Property* given = find(Element::DisplayName);
  return given ? gcstring(given->value()) : GetName(false);
}

INode* NodeBase::GetAlias() const { return linked(Element::pAlias); }
INode* NodeBase::GetCastAlias() const { return linked(Element::pCastAlias); }

void NodeBase::InvalidateNode() {
  device_.dispatch.operate(index_, [&] { device_.dispatch.invalidated(index_); });
}

void NodeBase::ImposeAccessMode(EAccessMode ImposedAccessMode) {
  impose([&](Imposed& imposed) {
    imposed.accessMode = ImposedAccessMode;
    evaluation().renew();
  });
}

void NodeBase::ImposeVisibility(EVisibility ImposedVisibility) {
  impose([&](Imposed& imposed) { imposed.visibility = ImposedVisibility; });
}

CallbackHandleType NodeBase::RegisterCallback(CNodeCallback* pCallback) {
  if (!pCallback) refuse<InvalidArgumentException>("{}: no callback given", name());
  return device_.dispatch.addCallback(*this, index_, pCallback);
}

bool NodeBase::DeregisterCallback(CallbackHandleType hCallback) {
  return device_.dispatch.removeCallback(index_, hCallback);
}

bool NodeBase::isValueValid() const {
  const AutoLock lock(device_.dispatch.lock());
  return !isUncached() && (device_.state.nodes[index_].marks & kValueValid) != 0;
}

void NodeBase::completeWrite(bool contentKnown) const {
  // What leads back to the node itself was dropped with everything else, and stays so.
  if (device_.dispatch.changed(index_)) return;
  evaluation().noteWritten(index_, contentKnown && cachingMode() == WriteThrough);
}

void NodeBase::checkErrors() const {
  for (const Property& each : properties()) {
    if (each.element != Element::pError) continue;
    const NodeBase& source = other(each.target);
    const int64_t value = source.readInteger({.ignoreCache = true});
    if (value != 0) refuse<RuntimeException>("{}: {}", name(), source.describeValue(value));
  }
}

std::string NodeBase::describeValue(int64_t value) const { return std::to_string(value); }

namespace {
[[noreturn]] void refuseValue(const NodeBase& node, std::string_view kind) {
  refuse<LogicalErrorException>("{}: a {} has no value as {}", node.path(), nodeTypeName(node.record().type), kind);
}
}  // namespace

int64_t NodeBase::readInteger(Reading) const { refuseValue(*this, "integer"); }
double NodeBase::readFloat(Reading) const { refuseValue(*this, "float"); }
void NodeBase::writeInteger(int64_t, bool) const { refuseValue(*this, "integer"); }
void NodeBase::writeFloat(double, bool) const { refuseValue(*this, "float"); }
std::string NodeBase::readText(Reading) const { refuseValue(*this, "text"); }
void NodeBase::writeText(std::string_view, bool) const { refuseValue(*this, "text"); }
int64_t NodeBase::integerMin() const { return std::numeric_limits<int64_t>::min(); }
int64_t NodeBase::integerMax() const { return std::numeric_limits<int64_t>::max(); }
double NodeBase::floatMin() const { return std::numeric_limits<double>::lowest(); }
double NodeBase::floatMax() const { return std::numeric_limits<double>::max(); }
double NodeBase::floatIncrement() const { refuse<RuntimeException>("{}: the node has no increment", path()); }
std::vector<int64_t> NodeBase::integerValueSet(bool) const { return {}; }
std::vector<double> NodeBase::floatValueSet(bool) const { return {}; }
int64_t NodeBase::textMaxLength() const { return std::numeric_limits<int64_t>::max(); }

const Property* NodeBase::presentation(Element element) const {
  if (const auto agreed = agreedPresentation(description(), index_, element)) return *agreed;
  return askSource(static_cast<const Property*>(nullptr),
                   [&](const NodeBase& source) { return source.presentation(element); });
}

std::string_view NodeBase::unit() const {
  const Property* given = presentation(Element::Unit);
  return given ? given->value() : std::string_view();
}
ERepresentation NodeBase::representation() const {
  const Property* given = presentation(Element::Representation);
  return given ? static_cast<ERepresentation>(given->word) : PureNumber;
}
EDisplayNotation NodeBase::displayNotation() const {
  const Property* given = presentation(Element::DisplayNotation);
  return given ? static_cast<EDisplayNotation>(given->word) : fnAutomatic;
}
int64_t NodeBase::displayPrecision() const {
  const Property* given = presentation(Element::DisplayPrecision);
  return given ? given->integer : 6;
}

}  // namespace GENAPI_NAMESPACE

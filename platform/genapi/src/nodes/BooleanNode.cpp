#include "nodes/BooleanNode.h"

#include "Base/GCException.h"
#include "text/NumberSyntax.h"

namespace GENAPI_NAMESPACE {

using GENICAM_NAMESPACE::gcstring;

BooleanNode::BooleanNode(NodeMap& map, NodeIndex index) : NodeBase(map, index) {
  for (const Property& each : properties()) {
    switch (each.element) {
      case Element::Value:
        held_ = each.integer != 0;
        break;
      case Element::pValue:
        link_ = each.target;
        break;
      case Element::OnValue:
        onValue_ = each.integer;
        break;
      case Element::OffValue:
        offValue_ = each.integer;
        break;
      default:
        break;
    }
  }
}

EAccessMode BooleanNode::typeMode() {
  return isFloating() ? RW : map().node(link_).accessMode();
}

bool BooleanNode::read(Reading how) {
  if (isFloating()) return held_;
  NodeState& mine = state();
  if ((mine.flags & kHasValue) && !how.ignoreCache) {
    if (EvaluationStep* asking = map().evaluation()) asking->noteConsumption();
    return value_;
  }
  const EvaluationStep step(map(), *this);
  const int64_t number = map().node(link_).readInteger({.ignoreCache = how.ignoreCache, .asSource = true});
  if (number != onValue_ && number != offValue_) {
    throw LOGICAL_ERROR_EXCEPTION("%s: value %ld is neither OnValue %ld nor OffValue %ld", map().pathTo(*this).c_str(),
                                  static_cast<long>(number), static_cast<long>(onValue_), static_cast<long>(offValue_));
  }
  const bool value = number == onValue_;
  if (!isUncached() && step.isUnspoiled()) {
    value_ = value;
    mine.flags |= kHasValue | kValid;
  }
  return value;
}

void BooleanNode::write(bool value, bool verify) {
  const EvaluationStep step(map(), *this);
  if (isFloating()) {
    held_ = value;
  } else {
    map().node(link_).writeInteger(value ? onValue_ : offValue_, verify);
  }
  completeWrite();
  if (verify) checkErrors();
}

bool BooleanNode::GetValue(bool, bool IgnoreCache) const {
  auto* self = const_cast<BooleanNode*>(this);
  return self->reading([&] { return self->read({.ignoreCache = IgnoreCache}); });
}

void BooleanNode::SetValue(bool Value, bool Verify) {
  writing(Verify, [&] { write(Value, Verify); });
}

gcstring BooleanNode::ToString(bool, bool IgnoreCache) {
  return reading([&] { return readText({.ignoreCache = IgnoreCache}); });
}

void BooleanNode::FromString(const gcstring& ValueStr, bool Verify) {
  writing(Verify, [&] {
    const auto value = text::parseBoolean(ValueStr.view());
    if (!value) {
      throw INVALID_ARGUMENT_EXCEPTION("%s: '%s' is not true, false, 1 or 0", zeroTerminated(name()).c_str(),
                                       shownText(ValueStr.view()).c_str());
    }
    write(*value, Verify);
  });
}

bool BooleanNode::IsValueCacheValid() const {
  if (isFloating()) return true;
  const AutoLock lock(map().GetLock());
  return !isUncached() && (state().flags & kValid) != 0;
}

}  // namespace GENAPI_NAMESPACE

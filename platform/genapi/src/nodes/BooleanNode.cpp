#include "nodes/BooleanNode.h"

#include "text/NumberSyntax.h"

namespace GENAPI_NAMESPACE {

BooleanNode::BooleanNode(Device& device, NodeIndex index)
    : ValueNode(device, index),
      link_(target(Element::pValue)),
      constant_(given(Element::Value, 0) != 0),
      onValue_(given(Element::OnValue, 1)),
      offValue_(given(Element::OffValue, 0)) {}

EAccessMode BooleanNode::typeMode() const { return holdsOwnValue() ? RW : other(link_).accessMode(); }

bool BooleanNode::read(Reading how) const {
  return evaluation().answer<kValue, bool>(index(), how.ignoreCache, [this, how] { return compute(how); });
}

bool BooleanNode::compute(Reading how) const {
  requireSound();
  if (holdsOwnValue()) return evaluation().heldValue(index(), constant_);
  const int64_t number = other(link_).readInteger({.ignoreCache = how.ignoreCache, .asSource = true});
  if (number != onValue_ && number != offValue_) {
    refuse<LogicalErrorException>("{}: value {} is neither OnValue {} nor OffValue {}", path(), number, onValue_,
                                  offValue_);
  }
  return number == onValue_;
}

void BooleanNode::writeTruth(bool truth, bool verify) const {
  write(verify, [&] {
    if (holdsOwnValue())
      evaluation().holdValue(index(), truth);
    else
      other(link_).writeInteger(truth ? onValue_ : offValue_, verify);
  });
}

bool BooleanNode::GetValue(bool, bool IgnoreCache) const {
  return reading([&] { return read({.ignoreCache = IgnoreCache}); });
}

void BooleanNode::SetValue(bool Value, bool Verify) {
  writing(Verify, [&] { writeTruth(Value, Verify); });
}

void BooleanNode::writeText(std::string_view value, bool verify) const {
  const auto truth = text::parseBoolean(value);
  if (!truth) refuse<InvalidArgumentException>("{}: '{}' is not true, false, 1 or 0", name(), shownText(value));
  writeTruth(*truth, verify);
}

}  // namespace GENAPI_NAMESPACE

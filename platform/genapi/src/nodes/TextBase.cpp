#include "nodes/TextBase.h"

namespace GENAPI_NAMESPACE {

int64_t TextBase::GetMaxLength() {
  return asking([&] {
    if (!IsWritable(accessMode()) && IsReadable(accessMode())) return static_cast<int64_t>(readText({}).size());
    return textMaxLength();
  });
}

std::string TextBase::readText(Reading how) const {
  return evaluation().answer<kValue, std::string>(index(), how.ignoreCache, [this, how] {
    requireSound();
    return compute(how);
  });
}

void TextBase::writeText(std::string_view text, bool verify) const {
  write(verify, [&] { store(text, verify); });
}

StringNode::StringNode(Device& device, NodeIndex index) : TextBase(device, index), link_(target(Element::pValue)) {}

EAccessMode StringNode::typeMode() const { return holdsOwnValue() ? RW : other(link_).accessMode(); }

int64_t StringNode::textMaxLength() const {
  if (holdsOwnValue()) return NodeBase::textMaxLength();
  return ask(other(link_), [](const NodeBase& from) { return from.textMaxLength(); });
}

std::string StringNode::compute(Reading how) const {
  if (!holdsOwnValue()) return other(link_).readText({.ignoreCache = how.ignoreCache});
  const Property* constant = find(Element::Value);
  return evaluation().heldValue(index(), constant ? std::string(constant->value()) : std::string());
}

void StringNode::store(std::string_view text, bool verify) const {
  if (holdsOwnValue())
    evaluation().holdValue(index(), std::string(text));
  else
    other(link_).writeText(text, verify);
}

}  // namespace GENAPI_NAMESPACE

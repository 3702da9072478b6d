#include "nodes/TextFace.h"

namespace GENAPI_NAMESPACE {

using GENICAM_NAMESPACE::gcstring;

bool TextFace::IsValueCacheValid() const {
  if (isFloating()) return true;
  const AutoLock lock(map().GetLock());
  return !isUncached() && (state().flags & kValid) != 0;
}

gcstring TextFace::GetValue(bool Verify, bool IgnoreCache) {
  return reading([&] { return readText({.verify = Verify, .ignoreCache = IgnoreCache}); });
}

void TextFace::SetValue(const gcstring& Value, bool Verify) {
  writing(Verify, [&] { writeText(Value.view(), Verify); });
}

int64_t TextFace::GetMaxLength() {
  return asked([&] {
    if (!IsWritable(accessMode()) && IsReadable(accessMode())) return static_cast<int64_t>(readText({}).size());
    return textMaxLength();
  });
}

gcstring TextFace::readText(Reading how) {
  NodeState& mine = state();
  if ((mine.flags & kHasValue) && !how.ignoreCache) {
    if (EvaluationStep* asking = map().evaluation()) asking->noteConsumption();
    return gcstring(std::string_view(value_));
  }
  EvaluationStep step(map(), *this);
  std::string value = fetch(how);
  if (!isUncached() && step.isUnspoiled()) {
    value_ = value;
    mine.flags |= kHasValue | kValid;
  }
  return gcstring(std::move(value));
}

void TextFace::writeText(std::string_view value, bool verify) {
  const EvaluationStep step(map(), *this);
  store(value, verify);
  completeWrite();
  if (verify) checkErrors();
}

StringNode::StringNode(NodeMap& map, NodeIndex index) : TextFace(map, index) {
  for (const Property& each : properties()) {
    if (each.element == Element::Value) held_ = each.value();
    if (each.element == Element::pValue) link_ = each.target;
  }
}

EAccessMode StringNode::typeMode() {
  return isFloating() ? RW : map().node(link_).accessMode();
}
int64_t StringNode::textMaxLength() {
  if (isFloating()) return NodeBase::textMaxLength();
  return ask(map().node(link_), [](NodeBase& from) { return from.textMaxLength(); });
}

std::string StringNode::fetch(Reading how) {
  if (isFloating()) return held_;
  return std::string(map().node(link_).readText({.ignoreCache = how.ignoreCache}).view());
}

void StringNode::store(std::string_view value, bool verify) {
  if (isFloating()) {
    held_ = value;
  } else {
    map().node(link_).writeText(value, verify);
  }
}

}  // namespace GENAPI_NAMESPACE

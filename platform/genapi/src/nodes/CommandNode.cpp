#include "nodes/CommandNode.h"

#include <utility>

#include "Base/GCException.h"

namespace GENAPI_NAMESPACE {

using GENICAM_NAMESPACE::gcstring;

CommandNode::CommandNode(NodeMap& map, NodeIndex index) : NodeBase(map, index) {
  for (const Property& each : properties()) {
    if (each.element == Element::pValue) link_ = each.target;
    if (each.element == Element::pCommandValue) commandLink_ = each.target;
    if (each.element == Element::CommandValue) command_ = each.integer;
  }
}

EAccessMode CommandNode::typeMode() {
  const EAccessMode mode = link_ == kNoNode ? RW : map().node(link_).accessMode();
  if (commandLink_ == kNoNode) return mode;
  const EAccessMode command = map().node(commandLink_).accessMode();
  if (command == NI) return NI;
  return IsReadable(command) ? mode : Combine(mode, NA);
}

int64_t CommandNode::commandValue() {
  return commandLink_ == kNoNode ? command_ : map().node(commandLink_).readInteger({.ignoreCache = true});
}

void CommandNode::start(bool verify) {
  const EvaluationStep step(map(), *this);
  if (link_ != kNoNode) {
    map().node(link_).writeInteger(commandValue(), verify);
    if (!std::exchange(executing_, true)) ++starts_;
  }
  completeWrite();
  if (verify) checkErrors();
}

bool CommandNode::canBeAsked() {
  return link_ != kNoNode && IsReadable(accessMode()) && IsReadable(map().node(link_).accessMode());
}

bool CommandNode::isUnderWay() {
  const EvaluationStep step(map(), *this);
  return map().node(link_).readInteger({.ignoreCache = true, .asSource = true}) == commandValue();
}

bool CommandNode::ask() {
  const bool done = !isUnderWay();
  if (done && executing_) {
    executing_ = false;
    map().invalidated(index());
    // What the command did may show wherever its register is known.
    map().dropDependents(link_);
    map().collectDependents(link_);
  }
  return done;
}

void CommandNode::Execute(bool Verify) {
  writing(Verify, [&] { start(Verify); });
}

bool CommandNode::IsDone(bool) {
  return map().operate(this, [&] {
    if (!IsAvailable(accessMode())) refuseReading();
    return !canBeAsked() || ask();
  });
}

gcstring CommandNode::ToString(bool, bool) {
  // A read: that the command has finished is left for IsDone and polling to notice.
  return reading([&] { return gcstring(canBeAsked() && isUnderWay() ? "1" : "0"); });
}

void CommandNode::FromString(const gcstring& ValueStr, bool Verify) {
  writing(Verify, [&] {
    if (!(ValueStr == "1") && !(ValueStr == "true")) {
      throw INVALID_ARGUMENT_EXCEPTION("%s: '%s' does not execute a command, '1' or 'true' does",
                                       zeroTerminated(name()).c_str(), shownText(ValueStr.view()).c_str());
    }
    start(Verify);
  });
}

bool CommandNode::IsValueCacheValid() const {
  return link_ == kNoNode;
}

}  // namespace GENAPI_NAMESPACE

#include "nodes/CommandNode.h"

namespace GENAPI_NAMESPACE {

CommandNode::CommandNode(Device& device, NodeIndex index)
    : ValueNode(device, index),
      link_(target(Element::pValue)),
      commandLink_(target(Element::pCommandValue)),
      command_(given(Element::CommandValue, 0)) {}

EAccessMode CommandNode::typeMode() const {
  const EAccessMode mode = link_ == kNoNode ? RW : other(link_).accessMode();
  if (commandLink_ == kNoNode) return mode;
  const EAccessMode command = other(commandLink_).accessMode();
  if (command == NI) return NI;
  return IsReadable(command) ? mode : Combine(mode, NA);
}

int64_t CommandNode::commandValue() const {
  return commandLink_ == kNoNode ? command_ : other(commandLink_).readInteger({.ignoreCache = true});
}

void CommandNode::start(bool verify) const {
  write(verify, [&] {
    if (link_ == kNoNode) return;
    other(link_).writeInteger(commandValue(), verify);
    if (!isExecuting()) evaluation().beginActivity(index());
  });
}

bool CommandNode::canBeAsked() const {
  return link_ != kNoNode && IsReadable(accessMode()) && IsReadable(other(link_).accessMode());
}

bool CommandNode::isUnderWay() const {
  const Evaluation::Frame frame(evaluation(), index());
  return other(link_).readInteger({.ignoreCache = true, .asSource = true}) == commandValue();
}

bool CommandNode::askDevice() const {
  const bool done = !isUnderWay();
  if (done && isExecuting()) {
    evaluation().endActivity(index());
    device().dispatch.invalidated(index());
    // What the command did may show wherever its register is known.
    device().dispatch.changedDependents(link_);
  }
  return done;
}

void CommandNode::Execute(bool Verify) {
  writing(Verify, [&] { start(Verify); });
}

bool CommandNode::IsDone(bool) {
  return device().dispatch.operate(index(), [&] {
    if (!IsAvailable(accessMode())) refuseAccess("readable");
    return !canBeAsked() || askDevice();
  });
}

std::string CommandNode::readText(Reading) const { return canBeAsked() && isUnderWay() ? "1" : "0"; }

void CommandNode::writeText(std::string_view value, bool verify) const {
  if (value != "1" && value != "true") {
    refuse<InvalidArgumentException>("{}: '{}' does not execute a command, '1' or 'true' does", name(),
                                     shownText(value));
  }
  start(verify);
}

}  // namespace GENAPI_NAMESPACE

#include "evaluation/Evaluation.h"

#include <algorithm>

#include "evaluation/Registers.h"
#include "text/Refusal.h"

namespace GENAPI_NAMESPACE {

using GENICAM_NAMESPACE::gcstring;

void Evaluation::refuseDepth(NodeIndex node) {
  refuse<LogicalErrorException>("{}: more than {} nodes depend on each other in one evaluation",
                                description_.node(node).name(), kMaxLinkDepth);
}

void Evaluation::refuseSteps(NodeIndex node) {
  refuse<RuntimeException>("{}: one call wrote to nodes more than {} times", path(node), kMaxOperationSteps);
}

void Evaluation::notePassingAnswer(const NodeState& state, Question question) {
  if (!top_) return;
  noteUse();
  if (!(state.kept & question)) top_->passing_ = true;  // in check mode kept answers pass, too
  if (state.provisional & question) top_->guessedFor_ = std::min(top_->guessedFor_, provisional_.back().outermost);
}

bool Evaluation::isOpen(NodeIndex node, Question question) {
  // Frames of an interrupted call are not among these: a call from inside a port computes for itself.
  for (const Frame* frame = top_; frame; frame = frame->up_) {
    if (frame->node_ != node || frame->question_ != question) continue;
    noteUse();
    top_->guessedFor_ = std::min(top_->guessedFor_, frame->depth_);
    return true;
  }
  return false;
}

Evaluation::Memory Evaluation::memoryFor(const Frame& frame) const {
  if (isMixed(frame)) return Memory::None;
  if (frame.guessedFor_ < frame.depth_) return Memory::UntilClosed;
  const bool hasGuess = frame.guessedFor_ == frame.depth_;
  return frame.passing_ || hasGuess ? Memory::Call : Memory::Lasting;
}

bool Evaluation::rememberLonger(const Frame& frame, Stay stay) {
  NodeState& state = nodes_[frame.node_];
  const Question question = frame.question_;
  const Memory memory = memoryFor(frame);
  if (memory == Memory::None) return false;
  const bool forCall = memory == Memory::Call && stay == Stay::UntilDropped;
  if (!forCall && stay == Stay::Never) return false;
  noteRemembered();
  noteMemory(frame.node_);
  if (forCall) return rememberForCall(state, question);
  if (memory == Memory::UntilClosed) {
    const int before = provisional_.empty() ? frame.guessedFor_ : provisional_.back().outermost;
    provisional_.push_back({frame.node_, question, std::min(before, frame.guessedFor_)});
    ++provisionalCount_;
    rememberForCall(state, question);
    state.provisional |= question;
    return true;
  }
  state.kept |= question;
  if (question == kValue) state.marks |= kValueValid;
  if (stay == Stay::UntilRenewed) {
    state.lasting |= question;
    state_.withLasting.push_back(frame.node_);
  } else if (!followsValues(frame.node_, question)) {
    state.steady |= question;
  }
  // In check mode what is kept is computed again, but once in a call.
  return !check_ || rememberForCall(state, question);
}

void Evaluation::closeCircle(uint32_t openedAt) {
  while (provisionalCount_ > openedAt) {
    NodeState& state = nodes_[provisional_.back().node];
    const Questions question = state.provisional & provisional_.back().question;
    state.passing &= static_cast<Questions>(~question);
    state.provisional &= static_cast<Questions>(~question);
    provisional_.pop_back();
    --provisionalCount_;
  }
}

bool Evaluation::followsValues(NodeIndex node, Question question) const {
  if (question == kAccessMode) return graph().traits().accessModeFollowsValues(node);
  if (question == kMin || question == kMax) return graph().traits().limitsFollowValues(node);
  return true;
}

void Evaluation::noteDisturbance() {
  for (Frame* frame = top_; frame; frame = frame->up_) frame->disturbed_ = true;
}

void Evaluation::noteReading(const Frame& frame) {
  if (memoryFor(frame) != Memory::Lasting) return;
  noteMemory(frame.node_);
  nodes_[frame.node_].marks |= kValueValid;
}

void Evaluation::noteWritten(NodeIndex node, bool valid) {
  dropValue(node);
  noteMemory(node);
  uint8_t& marks = nodes_[node].marks;
  marks = static_cast<uint8_t>(valid ? marks | kValueValid : marks & ~kValueValid);
}

Activity Evaluation::activity(NodeIndex node) const {
  const auto found = state_.activities.find(node);
  return found == state_.activities.end() ? Activity() : found->second;
}

void Evaluation::beginActivity(NodeIndex node, int64_t value) {
  Activity& activity = state_.activities[node];
  if (isActive(node) && activity.value == value) return;
  activity.value = value;
  ++activity.turns;
  nodes_[node].marks |= kActive;
}

void Evaluation::dropContentOf(NodeIndex node) { dropContent(state_, *state_.detailsOf(node).range); }

bool Evaluation::dropNoted(NodeIndex node, std::span<const NodeIndex> dependents) {
  // What an interrupted call works at is not to be seen from here.
  if (interrupted_ != 0) return false;
  if (!repeated_.hasRoomFor(node)) forgetRepeatedDrops();
  const auto noted = repeated_.beginDrop(node, revision_);
  if (!noted) return false;
  visits_ += noted->size();
  const auto dropDependent = [&](NodeIndex each) {
    if (std::binary_search(dependents.begin(), dependents.end(), each)) drop(each, false);
  };
  for (const NodeIndex each : *noted) dropDependent(each);
  dropDependent(node);
  for (const Frame* frame = top_; frame; frame = frame->up_) dropDependent(frame->node_);
  return true;
}

void Evaluation::noteMemoryAnew(NodeIndex node) {
  if (!repeated_.hasRoom()) return forgetRepeatedDrops();
  nodes_[node].marks |= kNoted;
  repeated_.note(node);
}

void Evaluation::settleAnew(NodeIndex node) {
  for (const RepeatedDrops::Hub& hub : repeated_.hubs()) {
    if (nodes_[node].dropped >= hub.revision) continue;
    const std::span<const NodeIndex> nodes = graph().dependents(hub.node, settling_);
    if (std::binary_search(nodes.begin(), nodes.end(), node)) nodes_[node].dropped = hub.revision;
  }
}

void Evaluation::forgetRepeatedDrops() {
  for (const RepeatedDrops::Hub& hub : repeated_.hubs())
    for (const NodeIndex each : graph().dependents(hub.node, settling_))
      nodes_[each].dropped = std::max(nodes_[each].dropped, hub.revision);
  repeated_.forget();
}

void Evaluation::dropAll() {
  ++revision_;
  for (NodeIndex node = 0; node < state_.count; ++node) drop(node, true);
  state_.ranges.forEach([&](RegisterRange& range) { dropContent(state_, range); });
  renew();
}

void Evaluation::renew() {
  for (const NodeIndex node : state_.withLasting) {
    NodeState& state = nodes_[node];
    state.kept &= static_cast<Questions>(~state.lasting);
    state.passing = state.provisional = state.lasting = 0;
  }
  state_.withLasting.clear();
}

void Evaluation::restartNumbers() {
  for (NodeIndex node = 0; node < state_.count; ++node) nodes_[node].call = 0;
  state_.ranges.forEach([](RegisterRange& range) { range.readCall = range.passingCall = 0; });
  lastCall_ = 1;
}

Evaluation::Suspended Evaluation::suspend() {
  const Suspended suspended{std::exchange(top_, nullptr), call_, steps_};
  ++interrupted_;
  startCall();
  return suspended;
}

void Evaluation::resume(const Suspended& suspended) {
  top_ = suspended.top;
  call_ = suspended.call;
  steps_ = suspended.steps;
  hasPassing_ = true;
  --interrupted_;
}

std::string Evaluation::path(NodeIndex last) const {
  std::vector<NodeIndex> nodes{last};
  for (const Frame* frame = top_; frame; frame = frame->up_)
    if (frame->node_ != nodes.back()) nodes.push_back(frame->node_);  // a node that reads its own limits stands once
  std::string path;
  for (auto each = nodes.rbegin(); each != nodes.rend(); ++each) {
    if (!path.empty()) path += " > ";
    path += description_.node(*each).name();
  }
  return path;
}

void Evaluation::reportAnswer(NodeIndex node) const {
  CacheDifference difference;
  difference.node = gcstring(description_.node(node).name());
  check_->OnDifference(difference);
}

void Evaluation::reportContent(NodeIndex node, const RegisterRange& range, const uint8_t* remembered,
                               const uint8_t* read) const {
  CacheDifference difference;
  difference.node = gcstring(description_.node(node).name());
  difference.port = gcstring(description_.node(range.key.port).name());
  difference.address = range.key.address;
  difference.remembered.assign(remembered, remembered + range.key.length);
  if (read) difference.read.assign(read, read + range.key.length);
  check_->OnDifference(difference);
}

}  // namespace GENAPI_NAMESPACE

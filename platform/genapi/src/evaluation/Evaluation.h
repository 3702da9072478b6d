// Decides whether a remembered answer may be used and whether a new one is kept. Nodes ask through it and know nothing
// of how long their answers live.
//
// An answer is kept until it is dropped, unless what it was made of forbids that (Evaluation::memoryFor):
//   - it used something that must not outlive the call, a register that may not be cached above all: it stays for the
//     rest of the call, so that one call computes every question once and sees each place once;
//   - it is part of a circle and used a guess (RW, full range) for a question that is still being computed: it stays
//     until that question is answered, and that answer for the rest of the call, so that no answer depends on what
//     another call asked first;
//   - one of its inputs was used before, another after the node was dropped: nothing of it stays;
//   - the map was changed while a port was asked: nothing of it stays.
// Guarded by the node map's lock.
#pragma once
#include <algorithm>
#include <string>
#include <type_traits>
#include <utility>

#include "GenApi/CacheCheck.h"
#include "description/DependencyGraph.h"
#include "description/Description.h"
#include "description/Limits.h"
#include "description/NodeTraits.h"
#include "evaluation/RepeatedDrops.h"
#include "evaluation/State.h"

namespace GENAPI_NAMESPACE {

class Evaluation {
 public:
  // One question at work, on the caller's stack. Frames make up the path in error texts, bound the depth, and carry
  // what decides about remembering. Nodes open frames of their own only for writes and for questions that nobody
  // remembers.
  class Frame {
   public:
    // Throws LogicalErrorException past kMaxLinkDepth.
    Frame(Evaluation& evaluation, NodeIndex node, Question question = kNothing);
    ~Frame();
    Frame(const Frame&) = delete;
    Frame& operator=(const Frame&) = delete;

   private:
    friend class Evaluation;
    static constexpr int kNoGuess = kMaxLinkDepth + 1;
    Evaluation& evaluation_;
    Frame* const up_;
    Revision firstUse_ = ~Revision{0};  // when the first input was used; answers dropped since are a mix of old and new
    const NodeIndex node_;
    const int depth_;
    int guessedFor_ = kNoGuess;  // depth of the outermost question that a guess stood for
    const uint32_t openedAt_;    // number of provisional answers at the start
    const Question question_;
    bool passing_ = false;  // used something that must not outlive the call
    bool disturbed_ = false;
  };

  // What a call that is interrupted by another one, from inside a port, goes on with.
  struct Suspended {
    Frame* top;
    uint32_t call;
    int steps;
  };

  // How long an answer stays when nothing forbids it.
  enum class Stay : uint8_t { UntilDropped, UntilRenewed, Never };
  struct NoGuess {};

  Evaluation(const Description& description, State& state)
      : description_(description), state_(state), nodes_(state.nodes), repeated_(state.count) {}
  Evaluation(const Evaluation&) = delete;
  Evaluation& operator=(const Evaluation&) = delete;

  // --- questions ---

  // The answer to a question about a node: remembered, or computed and remembered. `fresh` goes past what is
  // remembered. Guess::kAnswer answers when the question is being computed already and its answer leads back to it.
  // Evaluations inside each other meet here at every level: `compute` is best two words that need no stack.
  template <Question question, class Answer, class Guess = NoGuess, class Compute>
  Answer answer(NodeIndex node, bool fresh, Compute compute, Stay stay = Stay::UntilDropped) {
    if ((nodes_[node].kept & question) && !fresh && !check_) [[likely]] {
      noteUse();
      return recall<question, Answer>(node);
    }
    return answerAnew<question, Answer, Guess>(node, fresh, compute, stay);
  }

  // The value of a node without a source: what was written last, at first the constant of the description.
  template <class Value>
  Value heldValue(NodeIndex node, Value constant) const {
    return nodes_[node].marks & kHoldsValue ? recall<kValue, Value>(node) : constant;
  }
  template <class Value>
  void holdValue(NodeIndex node, const Value& value) {
    nodes_[node].marks |= kHoldsValue;
    store<kValue, Value>(node, value);
  }

  // The question at work uses what was remembered elsewhere; ...
  void noteUse() {
    if (top_) top_->firstUse_ = std::min(top_->firstUse_, revision_);
  }
  // ... something that must not outlive the call; ...
  void notePassingUse() {
    if (!top_) return;
    noteUse();
    top_->passing_ = hasPassing_ = true;
  }
  // ... something that was changed while it was read.
  void noteDisturbance();
  // After a frame of a reading that is not remembered itself: the node's value counts as valid if it could be kept.
  void noteReading(const Frame& frame);
  // After a node's own write: its value follows from its source's content, and counts as valid if `valid`.
  void noteWritten(NodeIndex node, bool valid);
  // What goes on in the device by the node's doing: begun, or begun again with another value, and ended.
  bool isActive(NodeIndex node) const { return (nodes_[node].marks & kActive) != 0; }
  Activity activity(NodeIndex node) const;
  void beginActivity(NodeIndex node, int64_t value = 0);
  void endActivity(NodeIndex node) { nodes_[node].marks &= static_cast<uint8_t>(~kActive); }
  // Counts one visit of a node by a write. Throws RuntimeException past kMaxOperationSteps.
  void countStep(NodeIndex node) {
    hasPassing_ = true;
    ++visits_;
    if (++steps_ > kMaxOperationSteps) [[unlikely]]
      refuseSteps(node);
  }

  // --- drops ---

  Revision revision() const { return revision_; }
  // Drops what the node answered. What no value can change stays, unless `evenSteady`.
  void drop(NodeIndex node, bool evenSteady) {
    NodeState& state = nodes_[node];
    state.dropped = revision_;
    state.kept &= static_cast<Questions>(state.lasting | (evenSteady ? 0 : state.steady));
    state.passing = state.provisional = 0;
    const uint8_t marks = state.marks;
    state.marks = static_cast<uint8_t>(marks & ~(kValueValid | kNoted));
    if (marks & kHasRange) dropContentOf(node);
  }
  // The same for everything that depends on the node: what dependents() returns, valid as long.
  std::span<const NodeIndex> dropDependents(NodeIndex node, bool evenSteady = false) {
    ++revision_;
    const std::span<const NodeIndex> nodes = dependents(node);
    if (nodes.size() >= RepeatedDrops::kManyDependents && !evenSteady && dropNoted(node, nodes)) return nodes;
    visits_ += nodes.size();
    for (const NodeIndex each : nodes) drop(each, evenSteady);
    return nodes;
  }
  void dropAll();
  // Drops only the node's value.
  void dropValue(NodeIndex node) {
    nodes_[node].kept &= static_cast<Questions>(~(kValue | kEntry));
    nodes_[node].passing &= static_cast<Questions>(~(kValue | kEntry));
  }
  // Drops answers that stay until they are renewed.
  void renew();
  // False while no answer was ever remembered and none is being computed: there is nothing to drop.
  bool hasMemory() const { return remembered_ != 0 || depth_ != 0; }
  // Counts what was remembered.
  uint64_t remembered() const { return remembered_; }
  void noteRemembered() { ++remembered_; }
  // Whether noteMemory() has anything to do.
  bool isNoting() const { return repeated_.isNoting(); }
  // The node, or a range that it uses, remembers something: its next drop must not be spared.
  void noteMemory(NodeIndex node) {
    if (repeated_.isNoting() && !(nodes_[node].marks & kNoted)) [[unlikely]]
      noteMemoryAnew(node);
  }
  // The node is about to use what others remember: makes up for drops that it was spared.
  void settle(NodeIndex node) {
    if (repeated_.isNoting()) [[unlikely]]
      settleAnew(node);
  }
  // Everything that depends on the node, in description order; valid until the next use.
  std::span<const NodeIndex> dependents(NodeIndex node) { return graph().dependents(node, scratch_); }

  // --- calls ---

  uint32_t call() const { return call_; }
  // Something was remembered for this call only.
  void noteCallMemory() { hasPassing_ = true; }
  Suspended suspend();
  void resume(const Suspended& suspended);
  // Forgets what stays for one call only.
  void endCall() {
    if (hasPassing_) startCall();
  }

  // "Addressed > ... > Inner", down to the question at work, and to `last` when that is another node.
  std::string path(NodeIndex last) const;

  const DependencyGraph& graph() const { return description_.graph(); }
  ECachingMode cachingMode(NodeIndex node) {
    NodeState& state = nodes_[node];
    if (state.caching == 0) state.caching = static_cast<uint8_t>(graph().traits().cachingMode(node) + 1);
    return static_cast<ECachingMode>(state.caching - 1);
  }

  // --- check mode ---

  void setCheck(ICacheCheck* check) { check_ = check; }
  ICacheCheck* check() const { return check_; }
  // Tells the check of content that the device does not confirm.
  void reportContent(NodeIndex node, const RegisterRange& range, const uint8_t* remembered, const uint8_t* read) const;

  // How many nodes drops and writes have visited; for tests of cost.
  uint64_t visits() const { return visits_; }

 private:
  enum class Memory : uint8_t { None, UntilClosed, Call, Lasting };
  struct Busy {
    NodeState& state;
    const Questions before = state.busy;
    Busy(NodeState& theState, Question question) : state(theState) { state.busy |= question; }
    ~Busy() { state.busy = before; }
  };
  // An answer from inside an open circle.
  struct Provisional {
    NodeIndex node;
    Question question;
    int outermost;  // depth of the outermost question that this answer or an earlier one guessed
  };

  template <Question question, class Answer, class Guess, class Compute>
  [[gnu::noinline]] Answer answerAnew(NodeIndex node, bool fresh, Compute compute, Stay stay);
  template <Question question, class Answer>
  Answer recall(NodeIndex node) const;
  template <Question question, class Answer>
  void store(NodeIndex node, const Answer& answer);
  template <Question question>
  Slot& slot(NodeIndex node) const;

  // The question at work uses an answer that stays for this call.
  void notePassingAnswer(const NodeState& state, Question question);
  // Whether the question is being computed further up in this call; notes the guess.
  bool isOpen(NodeIndex node, Question question);
  // Whether another node's value can change the answer.
  bool followsValues(NodeIndex node, Question question) const;
  // Whether the answer may come from before and after a change: nothing of it stays.
  bool isMixed(const Frame& frame) const { return frame.disturbed_ || nodes_[frame.node_].dropped > frame.firstUse_; }
  // How long the frame's answer may stay.
  Memory memoryFor(const Frame& frame) const;
  // Marks the frame's answer as remembered as long as it may be; false when it must not be.
  bool remember(const Frame& frame, Stay stay) {
    const bool isPlain = frame.passing_ && frame.guessedFor_ == Frame::kNoGuess && stay == Stay::UntilDropped;
    return isPlain ? rememberPassing(frame) : rememberLonger(frame, stay);
  }
  // The common case over registers that may not be cached: the answer stays for the call.
  bool rememberPassing(const Frame& frame) {
    if (isMixed(frame)) return false;
    noteRemembered();
    noteMemory(frame.node_);
    return rememberForCall(nodes_[frame.node_], frame.question_);
  }
  bool rememberLonger(const Frame& frame, Stay stay);
  bool rememberForCall(NodeState& state, Question question) {
    hasPassing_ = true;
    if (state.call != call_) {
      state.call = call_;
      state.passing = state.provisional = 0;
    }
    state.passing |= question;
    return true;
  }
  void closeCircle(uint32_t openedAt);
  void startCall() {
    hasPassing_ = false;
    steps_ = 0;
    if (++lastCall_ == 0) restartNumbers();
    call_ = lastCall_;
  }
  // Call numbers begin anew: nothing may look as if it came from one of them.
  void restartNumbers();
  void dropContentOf(NodeIndex node);
  // Drops, of these dependents of the node, only those that remember something or are at work; false when they are not
  // known.
  bool dropNoted(NodeIndex node, std::span<const NodeIndex> dependents);
  void noteMemoryAnew(NodeIndex node);
  void settleAnew(NodeIndex node);
  void forgetRepeatedDrops();
  [[noreturn]] void refuseDepth(NodeIndex node);
  [[noreturn]] void refuseSteps(NodeIndex node);
  void reportAnswer(NodeIndex node) const;

  const Description& description_;
  State& state_;
  NodeState* const nodes_;
  Frame* top_ = nullptr;
  ICacheCheck* check_ = nullptr;
  Revision revision_ = 1;
  uint64_t remembered_ = 0;
  uint64_t visits_ = 0;
  uint32_t call_ = 1;      // of the call at work
  uint32_t lastCall_ = 1;  // the highest number given
  int depth_ = 0;          // of all frames, those of interrupted calls included
  int steps_ = 0;
  int interrupted_ = 0;      // calls
  bool hasPassing_ = false;  // something to forget at the end of the call
  std::vector<Provisional> provisional_;
  uint32_t provisionalCount_ = 0;
  WalkScratch scratch_, settling_;
  RepeatedDrops repeated_;
};

inline Evaluation::Frame::Frame(Evaluation& evaluation, NodeIndex node, Question question)
    : evaluation_(evaluation),
      up_(evaluation.top_),
      node_(node),
      depth_(evaluation.depth_ + 1),
      openedAt_(evaluation.provisionalCount_),
      question_(question) {
  if (depth_ > kMaxLinkDepth) evaluation.refuseDepth(node);
  evaluation.depth_ = depth_;
  evaluation.top_ = this;
}

inline Evaluation::Frame::~Frame() {
  evaluation_.top_ = up_;
  --evaluation_.depth_;
  const bool isOpen = guessedFor_ < depth_;
  if (!isOpen && evaluation_.provisionalCount_ > openedAt_) evaluation_.closeCircle(openedAt_);
  if (!up_) return;
  // What this one used, the question above has used as early.
  up_->firstUse_ = std::min(up_->firstUse_, std::min(firstUse_, evaluation_.revision_));
  if (isOpen) up_->guessedFor_ = std::min(up_->guessedFor_, guessedFor_);
  up_->passing_ |= passing_;
}

template <Question question>
Slot& Evaluation::slot(NodeIndex node) const {
  if constexpr (question == kValue)
    return nodes_[node].value;
  else if constexpr (question == kMin)
    return state_.detailsOf(node).min;
  else if constexpr (question == kMax)
    return state_.detailsOf(node).max;
  else
    return state_.detailsOf(node).address;
}

template <Question question, class Answer>
Answer Evaluation::recall(NodeIndex node) const {
  if constexpr (question == kAccessMode)
    return static_cast<EAccessMode>(nodes_[node].accessMode);
  else if constexpr (std::is_same_v<Answer, double>)
    return slot<question>(node).real;
  else if constexpr (std::is_same_v<Answer, std::string>)
    return *slot<question>(node).text;
  else if constexpr (std::is_same_v<Answer, const EntryRecord*>)
    return slot<question>(node).entry;
  else
    return static_cast<Answer>(slot<question>(node).integer);
}

template <Question question, class Answer>
void Evaluation::store(NodeIndex node, const Answer& answer) {
  if constexpr (question == kAccessMode) {
    nodes_[node].accessMode = static_cast<uint8_t>(answer);
  } else if constexpr (std::is_same_v<Answer, double>) {
    slot<question>(node).real = answer;
  } else if constexpr (std::is_same_v<Answer, std::string>) {
    std::string*& text = slot<question>(node).text;
    if (!text) text = &state_.texts.emplace_back();
    *text = answer;
  } else if constexpr (std::is_same_v<Answer, const EntryRecord*>) {
    slot<question>(node).entry = answer;
  } else {
    slot<question>(node).integer = static_cast<int64_t>(answer);
  }
}

template <Question question, class Answer, class Guess, class Compute>
Answer Evaluation::answerAnew(NodeIndex node, bool fresh, Compute compute, Stay stay) {
  NodeState& state = nodes_[node];
  if (!fresh && (state.passing & question) && state.call == call_) {
    notePassingAnswer(state, question);
    return recall<question, Answer>(node);
  }
  if constexpr (!std::is_same_v<Guess, NoGuess>) {
    if ((state.busy & question) && isOpen(node, question)) return Guess::kAnswer;
  }
  const Frame frame(*this, node, question);
  const bool isChecked = check_ && !fresh && (state.kept & question);
  Answer answer = [&] {
    if constexpr (std::is_same_v<Guess, NoGuess>) {
      return compute();
    } else {
      const Busy busy(state, question);
      return compute();
    }
  }();
  if (isChecked && (state.kept & question)) [[unlikely]] {
    if (recall<question, Answer>(node) != answer && answer == answer) reportAnswer(node);  // NaN differs from itself
  }
  // After the addressed node's own question what passes is of no use: its inputs are remembered.
  const bool isLast = frame.passing_ && !frame.up_ && stay == Stay::UntilDropped;
  if (!isLast && remember(frame, stay)) store<question, Answer>(node, answer);
  return answer;
}

}  // namespace GENAPI_NAMESPACE

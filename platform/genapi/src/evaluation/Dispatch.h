// Operations: what changed in a public call, who is told, in which order, inside and outside the lock. Writes, polling,
// events, chunks and invalidation by the client all come through here.
#pragma once
#include <vector>

#include "GenApi/Synch.h"
#include "evaluation/CallbackRegistry.h"
#include "evaluation/Evaluation.h"

namespace GENAPI_NAMESPACE {

class Dispatch {
 public:
  Dispatch(State& state, Evaluation& evaluation) : state_(state), evaluation_(evaluation) {}
  Dispatch(const Dispatch&) = delete;
  Dispatch& operator=(const Dispatch&) = delete;

  // Runs one public operation: takes the lock, runs the body, and, when this was the outermost operation of the thread
  // and something was collected, fires the callbacks: inside the lock, then outside, those of the addressed node
  // first. What the body throws leaves after the callbacks of what was really changed. Throws LogicalErrorException
  // inside too many ports and callbacks of each other.
  template <class Body>
  auto operate(NodeIndex addressed, Body&& body) -> decltype(body());
  // Throws when operations nest too deeply; every write calls it before it changes anything.
  static void requireShallowNesting();

  // The node's value has changed: drops and collects what depends on it, and collects the node. True when the node
  // depends on itself and was dropped, too.
  bool changed(NodeIndex node);
  // The same for what depends on the node only.
  void changedDependents(NodeIndex node) { dropAndCollectDependents(node); }
  // A read has found a change. It is told only while polling.
  void noticed(NodeIndex node);
  // Drops and collects the node with everything that depends on it. Access modes and limits that follow from no value
  // may be spared.
  void invalidated(NodeIndex node, bool evenSteady = true);
  void invalidatedAll();
  // Drops what depends on a port, and nobody is told.
  void portChanged(NodeIndex port, bool evenSteady);

  // While it lives, changes that reads notice are told.
  class Polling {
   public:
    explicit Polling(Dispatch& dispatch) : dispatch_(dispatch), before_(std::exchange(dispatch.polling_, true)) {}
    ~Polling() { dispatch_.polling_ = before_; }
    Polling(const Polling&) = delete;
    Polling& operator=(const Polling&) = delete;

   private:
    Dispatch& dispatch_;
    const bool before_;
  };

  CallbackHandleType addCallback(INode& owner, NodeIndex node, CNodeCallback* callback);
  bool removeCallback(NodeIndex node, CallbackHandleType handle);
  void removeAllCallbacks() { callbacks_.clear(); }

  CLock& lock() { return lock_; }

 private:
  class Operation;

  void collect(NodeIndex node) {
    if (state_.nodes[node].marks & kHasCallbacks) collected_.push_back(node);
  }
  void collect(std::span<const NodeIndex> nodes);
  // False when an earlier change has done so already.
  bool dropAndCollectDependents(NodeIndex node);
  // Whether everything that depends on the node was dropped and collected by the last change already.
  bool isCovered(NodeIndex node);

  State& state_;
  Evaluation& evaluation_;
  CLock lock_;
  int operations_ = 0;  // of this thread inside each other's ports
  bool polling_ = false;
  std::vector<NodeIndex> collected_;
  CallbackRegistry callbacks_;
  // The last node whose dependents were dropped and collected, and what was remembered then.
  NodeIndex lastChanged_ = kNoNode;
  uint64_t rememberedAtChange_ = 0;
};

// The frame of one public call. Leaving it gives the lock back.
class Dispatch::Operation {
 public:
  explicit Operation(Dispatch& dispatch) : dispatch_(dispatch) {
    dispatch.lock_.Lock();
    if (dispatch.operations_++ != 0) [[unlikely]]
      interrupt();
  }
  ~Operation() {
    if (held_) leave();
  }
  Operation(const Operation&) = delete;
  Operation& operator=(const Operation&) = delete;
  bool mustFire() const { return held_ && dispatch_.operations_ == 1 && !dispatch_.collected_.empty(); }
  // Fires what was collected and gives the lock back in between. Throws the first exception of a callback.
  void fire(NodeIndex addressed);

 private:
  void interrupt();
  void resume();
  void leave() {
    if (--dispatch_.operations_ != 0) [[unlikely]]
      resume();
    else
      dispatch_.evaluation_.endCall();
    dispatch_.lastChanged_ = kNoNode;
    dispatch_.lock_.Unlock();
    held_ = false;
  }

  Dispatch& dispatch_;
  Evaluation::Suspended interrupted_;  // of the operation that this one interrupts
  bool held_ = true;
};

template <class Body>
auto Dispatch::operate(NodeIndex addressed, Body&& body) -> decltype(body()) {
  Operation operation(*this);
  try {
    if constexpr (std::is_void_v<decltype(body())>) {
      body();
      if (operation.mustFire()) [[unlikely]]
        operation.fire(addressed);
    } else {
      decltype(body()) result = body();
      if (operation.mustFire()) [[unlikely]]
        operation.fire(addressed);
      return result;
    }
  } catch (...) {
    if (operation.mustFire()) {
      try {
        operation.fire(addressed);
      } catch (...) {  // NOLINT: the operation's own failure is the one to report
      }
    }
    throw;
  }
}

}  // namespace GENAPI_NAMESPACE

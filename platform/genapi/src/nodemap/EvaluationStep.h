// Where an evaluation stands: the chain of nodes from the one addressed to the one at work, kept on the stack. It gives
// error texts their path, bounds the depth, and tells which nodes may keep what they compute.
#pragma once
#include <cstdint>

#include "Base/GCTypes.h"

namespace GENAPI_NAMESPACE {

class NodeBase;
class NodeMap;

class EvaluationStep {
 public:
  // Throws LogicalErrorException past kMaxLinkDepth, RuntimeException for a defective node.
  EvaluationStep(NodeMap& map, NodeBase& node);
  ~EvaluationStep();
  EvaluationStep(const EvaluationStep&) = delete;
  EvaluationStep& operator=(const EvaluationStep&) = delete;

  NodeBase& node() const { return node_; }
  EvaluationStep* up() const { return up_; }
  // True when nothing that the result may depend on was invalidated since the step began: the result may be kept.
  bool isUnspoiled() const;
  // To be called when the node at work uses a value that another node had ready.
  void noteConsumption() { consumed_ = true; }
  // A change that concerns only what the node is about to use for the first time does not spoil it.
  bool mayBeSpared() const { return !consumed_ && isUnspoiled(); }
  bool isSpared() const { return spared_; }
  void spare(bool on);
  // The evaluation came back to a node that is still at work and was given a stand-in: neither its result nor those
  // between are kept, so that no answer depends on what was asked before.
  static void taintUpTo(const NodeBase& node, EvaluationStep* from);

 private:
  NodeMap& map_;
  NodeBase& node_;
  EvaluationStep* up_;
  uint64_t begun_;  // the map's stamp at the start
  int depth_;
  bool consumed_ = false;  // a value of another node was already used
  bool spared_ = false;
  bool tainted_ = false;
};

}  // namespace GENAPI_NAMESPACE

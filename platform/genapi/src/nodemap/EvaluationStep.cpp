#include "nodemap/EvaluationStep.h"

#include "Base/GCException.h"
#include "description/Limits.h"
#include "nodes/NodeBase.h"

namespace GENAPI_NAMESPACE {

EvaluationStep::EvaluationStep(NodeMap& map, NodeBase& node)
    : map_(map), node_(node), up_(map.evaluation()), begun_(map.stamp()), depth_(up_ ? up_->depth_ + 1 : 1) {
  if (depth_ > kMaxLinkDepth) {
    throw LOGICAL_ERROR_EXCEPTION("%.*s: more than %d nodes depend on each other in one evaluation",
                                  static_cast<int>(node.name().size()), node.name().data(), kMaxLinkDepth);
  }
  node.requireSound();  // a defective node lacks what an evaluation counts on
  map.noteUse();
  map.evaluation() = this;
}

bool EvaluationStep::isUnspoiled() const {
  return !tainted_ && node_.state().stamp <= begun_;
}

void EvaluationStep::spare(bool on) {
  spared_ = on;
  if (!on) node_.state().stamp = begun_;
}

void EvaluationStep::taintUpTo(const NodeBase& node, EvaluationStep* from) {
  for (EvaluationStep* step = from; step; step = step->up_) {
    step->tainted_ = true;
    if (&step->node_ == &node) return;
  }
}

}  // namespace GENAPI_NAMESPACE

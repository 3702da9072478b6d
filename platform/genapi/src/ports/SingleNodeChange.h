// One operation of the node map around a change that concerns one bound port.
#pragma once
#include "ports/PortBinding.h"

namespace GENAPI_NAMESPACE {

// `change` runs under the map's lock and answers whether anything changed; if so the node is invalidated with its
// dependents and calls back. Without a node map the change runs alone.
template <typename Change>
void changeNode(PortBinding& binding, bool accessMayChange, Change change) {
  if (!binding.live()) {
    change();
    return;
  }
  struct Operation final : LiveChange {
    Operation(PortBinding& itsBinding, Change& itsChange) : binding(itsBinding), change(itsChange) {}
    std::span<INode* const> apply() override {
      node = binding.node();
      return {&node, change() && node ? size_t{1} : size_t{0}};
    }
    PortBinding& binding;
    Change& change;
    INode* node = nullptr;
  };
  Operation operation(binding, change);
  operation.accessMayChange = accessMayChange;
  binding.live()->changeTogether(operation);
}

}  // namespace GENAPI_NAMESPACE

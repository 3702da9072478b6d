// Which nodes lie on a circle of dependencies.
#pragma once
#include <vector>

#include "description/AdjacencyLists.h"
#include "description/Derivations.h"

namespace GENAPI_NAMESPACE {

class Circles final : public Derived {
 public:
  Circles(const AdjacencyLists& edges, size_t nodes);
  bool has(NodeIndex node) const { return onCircle_[node]; }

 private:
  std::vector<bool> onCircle_;
};

}  // namespace GENAPI_NAMESPACE

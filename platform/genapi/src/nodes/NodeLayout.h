// What all node maps of one description share: where each node lies in a map's arena, and what nodes derive from their
// records at first use (compiled formulas, tables of entries).
#pragma once
#include <cstddef>
#include <cstdint>
#include <vector>

#include "description/Derivations.h"
#include "description/NodeIndex.h"

namespace GENAPI_NAMESPACE {

class Description;

class NodeLayout final : public Derived {
 public:
  explicit NodeLayout(const Description& description);
  // The layout of that description, made at the first call.
  static const NodeLayout& of(const Description& description);

  size_t offset(NodeIndex node) const { return size_t{offsets_[node]} * kUnit; }
  size_t arenaBytes() const { return arenaBytes_; }
  const Derivations& derived() const { return derived_; }

 private:
  static constexpr size_t kUnit = 8;
  std::vector<uint32_t> offsets_;  // in units
  size_t arenaBytes_ = 0;
  Derivations derived_;  // by node
};

}  // namespace GENAPI_NAMESPACE

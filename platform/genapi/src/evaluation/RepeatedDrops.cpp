#include "evaluation/RepeatedDrops.h"

#include <utility>

namespace GENAPI_NAMESPACE {

std::optional<std::span<const NodeIndex>> RepeatedDrops::beginDrop(NodeIndex node, uint64_t revision) {
  const Hub hub{node, revision, log_.size()};
  for (Hub& known : hubs_)
    if (known.node == node) return std::span<const NodeIndex>(log_).subspan(std::exchange(known, hub).seen);
  log_.reserve(longestLog_);  // note() must not allocate
  hubs_.push_back(hub);
  return std::nullopt;
}

}  // namespace GENAPI_NAMESPACE

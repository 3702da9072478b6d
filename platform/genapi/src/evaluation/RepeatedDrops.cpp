#include "evaluation/RepeatedDrops.h"

#include <algorithm>
#include <utility>

namespace GENAPI_NAMESPACE {

std::optional<std::span<const NodeIndex>> RepeatedDrops::beginDrop(NodeIndex node, uint64_t revision) {
  const Hub hub{node, revision, log_.size()};
  const auto known = std::find_if(hubs_.begin(), hubs_.end(), [&](const Hub& each) { return each.node == node; });
  if (known != hubs_.end()) return std::span<const NodeIndex>(log_).subspan(std::exchange(*known, hub).seen);
  log_.reserve(longestLog_);  // so that notes need no memory
  hubs_.push_back(hub);
  return std::nullopt;
}

}  // namespace GENAPI_NAMESPACE

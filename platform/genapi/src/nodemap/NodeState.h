// What a node map remembers of each node beside the node itself: small, flat, and walked by every invalidation. Changed
// only under the map's lock, also for nodes that are not built yet.
#pragma once
#include <cstdint>

#include "Base/GCTypes.h"

namespace GENAPI_NAMESPACE {

enum StateFlag : uint16_t {
  kHasValue = 1 << 0,       // the node holds its value, ready to be handed out
  kValid = 1 << 1,          // the node's own "cache is valid" answer; its value may still have to be computed
  kHasAccessMode = 1 << 2,  // NodeState::accessMode is current
  kHasMin = 1 << 3,
  kHasMax = 1 << 10,
  kHasAddress = 1 << 4,
  kHasPlace = 1 << 5,  // a register that points to a remembered place
  kHasCallbacks = 1 << 6,
  kImposed = 1 << 7,         // something was imposed on the node from outside
  kBusyAccessMode = 1 << 8,  // its access mode is being computed
  kBusyLimits = 1 << 9,
};

// What a value written elsewhere takes from a node; what no value can change stays (see DependencyGraph).
enum StateTrait : uint8_t {
  kSteadyAccessMode = 1 << 0,
  kSteadyLimits = 1 << 1,
};

inline constexpr uint16_t kForgettable = kHasValue | kValid | kHasAccessMode | kHasMin | kHasMax | kHasAddress;

struct NodeState {
  uint64_t stamp;  // of the node's last invalidation
  uint16_t flags;
  uint8_t accessMode;
  uint8_t traits;  // set when something that may be steady is first kept
};

}  // namespace GENAPI_NAMESPACE

// What one device holds between calls: answers that nodes gave, values that nodes hold themselves, contents of
// registers. Plain data, guarded by the node map's lock; Evaluation and Registers have the rules.
#pragma once
#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <string>
#include <unordered_map>
#include <vector>

#include "GenApi/Types.h"
#include "description/NodeIndex.h"
#include "evaluation/RegisterRanges.h"
#include "evaluation/ZeroPages.h"

namespace GENAPI_NAMESPACE {

struct Property;
struct EntryRecord;

// Counts changes: each drop of remembered answers makes a new one.
using Revision = uint64_t;

// What can be asked of a node and remembered, as bits of a set.
using Questions = uint8_t;
enum Question : Questions {
  kNothing = 0,  // frames of writes and of questions that nobody remembers
  kValue = 1 << 0,
  kAccessMode = 1 << 1,
  kMin = 1 << 2,
  kMax = 1 << 3,
  kAddress = 1 << 4,
  kEntry = 1 << 5,  // the entry that stands for an enumeration's value
};

enum NodeMark : uint8_t {
  kHoldsValue = 1 << 0,    // NodeState::value was written; the node has no source
  kValueValid = 1 << 1,    // the node's answer to IsValueCacheValid
  kHasRange = 1 << 2,      // NodeDetails::range is set
  kHasCallbacks = 1 << 3,  // somebody wants to be called back
  kImposed = 1 << 4,       // State::imposed has an entry
  kActive = 1 << 5,        // a command is executing, an enumeration's entry is about to clear itself
  kNoted = 1 << 6,         // in the notes of RepeatedDrops since it was dropped last
};

union Slot {
  int64_t integer;
  double real;
  std::string* text;  // in State::texts
  const EntryRecord* entry;
};

// What calls and drops look at; the rest is in NodeDetails, which fewer nodes need.
struct NodeState {
  Revision dropped;       // when answers were dropped last
  Slot value;             // kValue, or the value that the node holds
  uint32_t call;          // the call that `passing` belongs to
  uint32_t details;       // of State::detailsOf(), 0 for none yet
  Questions kept;         // answers that stay until they are dropped
  Questions passing;      // answers that stay for the rest of the call
  Questions provisional;  // of these, answers from inside an open circle
  Questions busy;         // being computed
  Questions steady;       // kept answers that no other node's value can change
  Questions lasting;      // kept answers that only renewing drops
  uint8_t marks;
  uint8_t accessMode : 4;  // kAccessMode
  uint8_t caching : 4;     // 1 + ECachingMode; 0 until it is asked for
};
static_assert(sizeof(NodeState) == 32);

struct NodeDetails {
  Slot min, max;         // kMin, kMax
  Slot address;          // kAddress, kEntry
  RegisterRange* range;  // the one that the register used last
};

// What a client imposed on a node.
struct Imposed {
  EAccessMode accessMode = RW;
  EVisibility visibility = Beginner;
  bool hasMin = false, hasMax = false;
  Slot min{}, max{};
};

// Of a node that is polled while something goes on in the device.
struct Activity {
  uint32_t turns = 0;  // how often it has begun
  int64_t value = 0;   // enumeration: of the entry that is to clear itself
};

struct State {
  explicit State(size_t nodeCount)
      : pages(nodeCount * (sizeof(NodeState) + sizeof(NodeDetails))),
        nodes(static_cast<NodeState*>(pages.start())),
        count(nodeCount) {}

  // Side by side in the order of first use: what is not used takes no memory.
  NodeDetails& detailsOf(NodeIndex node) {
    uint32_t& number = nodes[node].details;
    if (number == 0) number = ++detailCount;
    return reinterpret_cast<NodeDetails*>(nodes + count)[number - 1];
  }

  ZeroPages pages;
  NodeState* const nodes;
  const size_t count;
  uint32_t detailCount = 0;

  std::deque<std::string> texts;
  std::unordered_map<const Property*, Slot> cells;  // constants of index tables that were written
  std::map<NodeIndex, Imposed> imposed;
  std::unordered_map<NodeIndex, Activity> activities;
  std::vector<NodeIndex> withLasting;  // nodes with lasting answers
  RegisterRanges ranges;
};

}  // namespace GENAPI_NAMESPACE

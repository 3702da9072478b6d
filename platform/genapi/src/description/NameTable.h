// Node names to indices, by open addressing. Names themselves stay where they are.
#pragma once
#include <cstdint>
#include <cstring>
#include <memory_resource>
#include <string_view>
#include <vector>

#include "description/NodeIndex.h"

namespace GENAPI_NAMESPACE {

class NameTable {
 public:
  explicit NameTable(std::pmr::memory_resource* memory) : slots_(memory) {}

  // Names are short, so eight bytes at a time are mixed in with one multiplication each; the last eight may overlap
  // those before.
  static uint64_t hashOf(std::string_view name) {
    constexpr uint64_t kFactor = 0x9E3779B97F4A7C15u;
    const char* const text = name.data();
    const size_t size = name.size();
    uint64_t hash = size * kFactor;
    const auto mix = [&](uint64_t word) {
      hash = (hash ^ word) * kFactor;
      hash ^= hash >> 32;
    };
    if (size >= 8) {
      for (size_t at = 0; at + 8 < size; at += 8) mix(load<uint64_t>(text + at));
      mix(load<uint64_t>(text + size - 8));
    } else if (size >= 4) {
      mix(load<uint32_t>(text) | uint64_t{load<uint32_t>(text + size - 4)} << 32);
    } else if (size != 0) {
      mix(load<uint8_t>(text) | uint64_t{load<uint8_t>(text + size / 2)} << 8 |
          uint64_t{load<uint8_t>(text + size - 1)} << 16);
    }
    return hash;
  }

  // Empties the table and makes room for `names` names.
  void prepare(size_t names) {
    size_t size = 16;
    while (size < names * 2) size *= 2;
    slots_.assign(size, {0, kNoNode});
  }
  // `nameOf(index)` gives a node's name. kNoNode when there is none.
  template <class NameOf>
  NodeIndex find(std::string_view name, uint64_t hash, NameOf&& nameOf) const {
    for (size_t slot = first(hash);; slot = next(slot)) {
      const Slot& entry = slots_[slot];
      if (entry.node == kNoNode) return kNoNode;
      if (entry.tag == tagOf(hash) && nameOf(entry.node) == name) return entry.node;
    }
  }
  // Adds a node, unless another one has its name: then gives that one's index, else kNoNode.
  template <class NameOf>
  NodeIndex add(NodeIndex node, NameOf&& nameOf) {
    const std::string_view name = nameOf(node);
    const uint64_t hash = hashOf(name);
    size_t slot = first(hash);
    for (; slots_[slot].node != kNoNode; slot = next(slot))
      if (slots_[slot].tag == tagOf(hash) && nameOf(slots_[slot].node) == name) return slots_[slot].node;
    slots_[slot] = {tagOf(hash), node};
    return kNoNode;
  }
  // A find with that hash will come soon.
  void prefetch(uint64_t hash) const { __builtin_prefetch(&slots_[first(hash)]); }
  // The node that such a find will probably look at, or kNoNode.
  NodeIndex likely(uint64_t hash) const { return slots_[first(hash)].node; }

 private:
  struct Slot {
    uint32_t tag;  // the hash bits that do not choose the slot
    NodeIndex node;
  };
  template <class Word>
  static Word load(const char* at) {
    Word word;
    std::memcpy(&word, at, sizeof word);
    return word;
  }
  static uint32_t tagOf(uint64_t hash) { return static_cast<uint32_t>(hash >> 32); }
  size_t first(uint64_t hash) const { return hash & (slots_.size() - 1); }
  size_t next(size_t slot) const { return (slot + 1) & (slots_.size() - 1); }

  std::pmr::vector<Slot> slots_;  // a power of two of them
};

}  // namespace GENAPI_NAMESPACE

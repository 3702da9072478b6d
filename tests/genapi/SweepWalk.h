// What a sweep over a description has to ask the device for, worked out from the links of the description. What guards,
// indices and formulas lead to comes from a second node map, whose own accesses nobody counts.
#pragma once
#include <map>
#include <set>

#include "TestMap.h"
#include "description/Description.h"
#include "description/ElementRules.h"
#include "formula/FormulaProgram.h"
#include "nodes/FormulaSet.h"

// Bytes without end: zero, or a pattern that follows from the address alone.
class EndlessPort : public CPortImpl {
 public:
  explicit EndlessPort(bool patterned = false) : patterned_(patterned) {}
  EAccessMode GetAccessMode() const override { return RW; }
  void Read(void* buffer, int64_t address, int64_t length) override {
    ++reads[{address, length}];
    for (int64_t i = 0; i < length; ++i) {
      const auto mixed = (static_cast<uint64_t>(address) + static_cast<uint64_t>(i)) * 0x9E3779B97F4A7C15;
      static_cast<uint8_t*>(buffer)[i] = patterned_ ? static_cast<uint8_t>(mixed >> 56) : uint8_t{0};
    }
  }
  void Write(const void*, int64_t, int64_t) override { ADD_FAILURE() << "a sweep writes nothing"; }

  std::map<BytePort::Access, int> reads;

 private:
  bool patterned_;
};

class SweepWalk {
 public:
  using Place = std::pair<NodeIndex, BytePort::Access>;
  SweepWalk(const Description& description, INodeMap& oracle)
      : description_(description), oracle_(oracle), known_(description.nodeCount()) {}

  // The accesses of one more sweep over these nodes. What may be cached was read by the sweeps before.
  std::map<Place, int> sweep(const std::vector<NodeIndex>& features);

 private:
  struct Stop {};  // the engine gives up here
  struct Variables;
  struct Known {
    bool value = false, mode = false, min = false, max = false, clearing = false;
  };

  void feature(NodeIndex node);
  void mode(NodeIndex node);
  void modeOfType(NodeIndex node);
  void value(NodeIndex node, bool past = false);
  void fetch(NodeIndex node, bool past);
  void access(NodeIndex node, bool past);
  void length(NodeIndex node) { link(node, Element::pLength); }
  void limit(NodeIndex node, bool upper);
  void convert(NodeIndex node, int64_t integer, double real);
  void link(NodeIndex node, Element element) {
    if (const Property* given = description_.find(node, element)) value(given->target);
  }
  void current(NodeIndex enumeration);
  void modeOfEntry(NodeIndex entry);

  NodeType type(NodeIndex node) const { return description_.node(node).type; }
  // What the second map says; Stop where it cannot.
  INode& node(NodeIndex index) const;
  template <class Interface>
  Interface* as(NodeIndex index) const {
    return dynamic_cast<Interface*>(&node(index));
  }
  bool readable(NodeIndex node) const;
  int64_t integer(NodeIndex node) const;
  double real(NodeIndex node) const;
  double limitOf(NodeIndex node, bool upper) const;
  const Property* cell(NodeIndex table);
  bool hasLimits(NodeIndex node) const {
    return type(node) != NodeType::Boolean && type(node) != NodeType::Enumeration;
  }

  const Description& description_;
  INodeMap& oracle_;
  std::vector<Known> known_;
  std::set<Place> remembered_;
  std::map<Place, int> accesses_;
};

// Integer and Float: nodes that hold a number, forward to another node, or choose from a table by an index.
#pragma once
#include <vector>

#include "nodes/FloatBase.h"
#include "nodes/IntegerBase.h"

namespace GENAPI_NAMESPACE {

template <class Base>
class NumberNode final : public Base {
  using Number = typename Base::NumberType;
  using Traits = typename Base::Traits;

 public:
  NumberNode(Device& device, NodeIndex index);
  EAccessMode typeMode() const override;
  const NodeBase* valueSource() const override;
  bool hasValueSet() const override;

 protected:
  Number compute(Reading how) const override;
  void store(Number value, bool verify) const override;
  Number computeMin() const override;
  Number computeMax() const override;
  Number computeIncrement() const override;
  bool hasIncrement() const override;
  std::vector<Number> valueSet(bool bounded) const override;
  bool holdsOwnValue() const override { return form_ == Form::Held; }

 private:
  enum class Form : uint8_t { Held, Forwarder, Table };

  static bool isLink(const Property& cell) {
    return cell.element == Element::pValueIndexed || cell.element == Element::pValueDefault;
  }
  // The table's constant or link that the index selects now; null when the table has no default and no such entry.
  const Property* selected() const;
  // The same; throws OutOfRangeException instead of null.
  const Property& requireSelected() const;
  // A number that the node's own link gives: limits and increments.
  Number linkedNumber(const Property& link) const;
  // A limit: the node's own, what its targets give together, or its source's.
  template <class Of, class Narrower>
  Number limit(Element constant, Element link, Number unlimited, Of&& of, Narrower&& narrower) const;
  // Calls visit for pValue and the copies, in XML order.
  template <class Visit>
  void forEachTarget(Visit&& visit) const;
  bool copiesAgreeOnIncrement() const;

  const Property* const constant_;  // what a held value begins with
  NodeIndex link_;                  // pValue, or pIndex of a table
  Form form_ = Form::Held;
  const bool hasCopies_;
  const bool hasOwnSet_;        // ValidValueSet
  const bool hasOwnIncrement_;  // Inc or pInc
};

using IntegerNode = NumberNode<IntegerBase>;
using FloatNode = NumberNode<FloatBase>;
extern template class NumberNode<IntegerBase>;
extern template class NumberNode<FloatBase>;

}  // namespace GENAPI_NAMESPACE

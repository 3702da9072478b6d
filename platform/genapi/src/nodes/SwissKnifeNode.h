// SwissKnife and IntSwissKnife: the result of a formula.
#pragma once
#include "nodes/FloatBase.h"
#include "nodes/FormulaSet.h"
#include "nodes/IntegerBase.h"

namespace GENAPI_NAMESPACE {

template <class Base>
class SwissKnifeNode final : public Base {
  using Number = typename Base::NumberType;

 public:
  SwissKnifeNode(Device& device, NodeIndex index)
      : Base(device, index), formulas_(FormulaSet::of(device.description, index)) {}
  EAccessMode typeMode() const override { return restrictedByVariables(*this, RO); }

 protected:
  Number compute(Reading) const override {
    FormulaVariables variables(*this, formulas_);
    return Base::Traits::evaluate(formulas_.value(), variables, Number{});
  }
  void store(Number, bool) const override { this->refuseAccess("writable"); }

 private:
  const FormulaSet& formulas_;
};

}  // namespace GENAPI_NAMESPACE

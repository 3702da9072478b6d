// Converter and IntConverter: a formula from the source and one back.
#pragma once
#include <vector>

#include "nodes/FloatBase.h"
#include "nodes/FormulaSet.h"
#include "nodes/IntegerBase.h"

namespace GENAPI_NAMESPACE {

template <class Base>
class ConverterNode final : public Base {
  using Number = typename Base::NumberType;
  using Traits = typename Base::Traits;

 public:
  ConverterNode(Device& device, NodeIndex index);
  EAccessMode typeMode() const override { return restrictedByVariables(*this, source().accessMode()); }
  const NodeBase* valueSource() const override { return &source(); }
  bool hasValueSet() const override {
    return this->ask(source(), [](const NodeBase& from) { return from.hasValueSet(); });
  }

 protected:
  Number compute(Reading how) const override;
  void store(Number value, bool verify) const override;
  Number computeMin() const override { return limit(false); }
  Number computeMax() const override { return limit(true); }
  Number computeIncrement() const override;
  bool hasIncrement() const override;
  std::vector<Number> valueSet(bool bounded) const override;

 private:
  const NodeBase& source() const { return this->other(link_); }
  // FormulaFrom over a value of the source.
  Number converted(Number sourceValue) const;
  Number limit(bool upper) const;

  const FormulaSet& formulas_;
  const NodeIndex link_;
  ESlope slope_ = Automatic;
};

using IntConverterNode = ConverterNode<IntegerBase>;
using FloatConverterNode = ConverterNode<FloatBase>;
extern template class ConverterNode<IntegerBase>;
extern template class ConverterNode<FloatBase>;

}  // namespace GENAPI_NAMESPACE

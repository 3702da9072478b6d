#include "nodes/ConverterNode.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace GENAPI_NAMESPACE {

template <class Base>
ConverterNode<Base>::ConverterNode(Device& device, NodeIndex index)
    : Base(device, index), formulas_(FormulaSet::of(device.description, index)), link_(this->target(Element::pValue)) {
  if (const Property* given = this->find(Element::Slope)) slope_ = static_cast<ESlope>(given->word);
}

template <class Base>
auto ConverterNode<Base>::converted(Number sourceValue) const -> Number {
  FormulaVariables variables(*this, formulas_);
  return Traits::evaluate(formulas_.value(), variables, sourceValue);
}

template <class Base>
auto ConverterNode<Base>::compute(Reading how) const -> Number {
  return converted(Traits::read(source(), {.ignoreCache = how.ignoreCache, .asSource = true}));
}

template <class Base>
void ConverterNode<Base>::store(Number value, bool verify) const {
  FormulaVariables variables(*this, formulas_);
  Traits::write(source(), Traits::evaluate(formulas_.inverse(), variables, value), verify);
}

template <class Base>
auto ConverterNode<Base>::limit(bool upper) const -> Number {
  const Number unlimited = upper ? Base::kHighest : Base::kLowest;
  if (slope_ == Varying || !source().hasLimits()) return unlimited;
  const Number sourceMin = Traits::min(source());
  const Number sourceMax = Traits::max(source());
  try {
    if (slope_ != Automatic) return converted((slope_ == Increasing) == upper ? sourceMax : sourceMin);
    const Number atMin = converted(sourceMin);
    const Number atMax = converted(sourceMax);
    return upper ? std::max(atMin, atMax) : std::min(atMin, atMax);
  } catch (const LogicalErrorException&) {
    // The end of the source's range does not map: overflow, a pole, or a defective formula.
    return unlimited;
  }
}

template <class Base>
auto ConverterNode<Base>::computeIncrement() const -> Number {
  if (!hasIncrement()) return Base::computeIncrement();
  return std::abs(converted(this->ask(source(), Traits::increment)) - converted(Number{}));
}

template <class Base>
bool ConverterNode<Base>::hasIncrement() const {
  const Property* linear = this->find(Element::IsLinear);
  return linear && linear->word == Yes && slope_ != Varying &&
         this->ask(source(), [](const NodeBase& from) { return from.hasFloatIncrement(); });
}

template <class Base>
auto ConverterNode<Base>::valueSet(bool bounded) const -> std::vector<Number> {
  std::vector<Number> values =
      this->ask(source(), [&](const NodeBase& from) { return Traits::valueSet(from, bounded); });
  for (Number& each : values) each = converted(each);
  return values;
}

template class ConverterNode<IntegerBase>;
template class ConverterNode<FloatBase>;

}  // namespace GENAPI_NAMESPACE

#include "nodes/FormulaNodes.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "Base/GCException.h"
#include "nodes/OwnElements.h"

namespace GENAPI_NAMESPACE {

IntKnifeNode::IntKnifeNode(NodeMap& map, NodeIndex index)
    : IntegerFace(map, index), formulas_(FormulaSet::of(map.description(), index)) {}

int64_t IntKnifeNode::fetch(Reading) {
  FormulaVariables variables(*this, formulas_);
  variables.requireVariables();
  return formulas_.value().evaluateInteger(variables);
}

void IntKnifeNode::store(int64_t, bool) {
  refuseWriting();
}
std::string_view IntKnifeNode::unit() {
  return ownUnit(*this);
}
ERepresentation IntKnifeNode::representation() {
  return ownRepresentation(*this);
}

KnifeNode::KnifeNode(NodeMap& map, NodeIndex index)
    : FloatFace(map, index), formulas_(FormulaSet::of(map.description(), index)) {}

double KnifeNode::fetch(Reading) {
  FormulaVariables variables(*this, formulas_);
  variables.requireVariables();
  return formulas_.value().evaluateFloat(variables);
}

void KnifeNode::store(double, bool) {
  refuseWriting();
}
std::string_view KnifeNode::unit() {
  return ownUnit(*this);
}
ERepresentation KnifeNode::representation() {
  return ownRepresentation(*this);
}

EDisplayNotation KnifeNode::displayNotation() {
  return ownDisplayNotation(*this);
}

int64_t KnifeNode::displayPrecision() {
  return ownDisplayPrecision(*this);
}

template <class Face, class Number>
ConverterNode<Face, Number>::ConverterNode(NodeMap& map, NodeIndex index)
    : Face(map, index), formulas_(FormulaSet::of(map.description(), index)) {
  if (const Property* link = this->find(Element::pValue)) link_ = link->target;
  if (const Property* given = this->find(Element::Slope)) slope_ = static_cast<ESlope>(given->word);
}

template <class Face, class Number>
Number ConverterNode<Face, Number>::converted(Number sourceValue) {
  FormulaVariables variables(*this, formulas_);
  variables.requireVariables();
  if constexpr (std::is_integral_v<Number>) {
    return formulas_.value().evaluateInteger(variables, sourceValue);
  } else {
    return formulas_.value().evaluateFloat(variables, sourceValue);
  }
}

template <class Face, class Number>
Number ConverterNode<Face, Number>::fetch(Reading how) {
  const Reading ofSource{.ignoreCache = how.ignoreCache, .asSource = true};
  if constexpr (std::is_integral_v<Number>) {
    return converted(source().readInteger(ofSource));
  } else {
    return converted(source().readFloat(ofSource));
  }
}

template <class Face, class Number>
void ConverterNode<Face, Number>::store(Number value, bool verify) {
  FormulaVariables variables(*this, formulas_);
  variables.requireVariables();
  if constexpr (std::is_integral_v<Number>) {
    source().writeInteger(formulas_.inverse().evaluateInteger(variables, value), verify);
  } else {
    source().writeFloat(formulas_.inverse().evaluateFloat(variables, value), verify);
  }
}

template <class Face, class Number>
Number ConverterNode<Face, Number>::limit(bool upper) {
  constexpr Number kLowest = std::numeric_limits<Number>::lowest();
  constexpr Number kHighest = std::numeric_limits<Number>::max();
  const Number unlimited = upper ? kHighest : kLowest;
  if (slope_ == Varying || !source().hasLimits()) return unlimited;
  Number sourceMin, sourceMax;
  if constexpr (std::is_integral_v<Number>) {
    sourceMin = source().integerMin();
    sourceMax = source().integerMax();
  } else {
    sourceMin = source().floatMin();
    sourceMax = source().floatMax();
  }
  try {
    if (slope_ != Automatic) return converted((slope_ == Increasing) == upper ? sourceMax : sourceMin);
    const Number atMin = converted(sourceMin);
    const Number atMax = converted(sourceMax);
    return upper ? std::max(atMin, atMax) : std::min(atMin, atMax);
  } catch (const GENICAM_NAMESPACE::LogicalErrorException&) {
    // The end of the source's range does not map: overflow, a pole, or a formula that is none.
    return unlimited;
  }
}

template <class Face, class Number>
int64_t ConverterNode<Face, Number>::integerIncrement() {
  if constexpr (std::is_integral_v<Number>) {
    return 1;
  } else {
    return Face::integerIncrement();
  }
}

template <class Face, class Number>
bool ConverterNode<Face, Number>::hasFloatIncrement() {
  if constexpr (std::is_integral_v<Number>) {
    return true;
  } else {
    const Property* linear = this->find(Element::IsLinear);
    return linear && linear->word == Yes && slope_ != Varying &&
           ofSource([](NodeBase& from) { return from.hasFloatIncrement(); });
  }
}

template <class Face, class Number>
double ConverterNode<Face, Number>::floatIncrement() {
  if constexpr (std::is_integral_v<Number>) {
    return 1.0;
  } else {
    if (!hasFloatIncrement()) return NodeBase::floatIncrement();
    return std::fabs(converted(ofSource([](NodeBase& from) { return from.floatIncrement(); })) - converted(0.0));
  }
}

template <class Face, class Number>
std::vector<int64_t> ConverterNode<Face, Number>::integerValueSet(bool bounded) {
  if constexpr (std::is_integral_v<Number>) {
    std::vector<int64_t> values = ofSource([&](NodeBase& from) { return from.integerValueSet(bounded); });
    for (int64_t& each : values) each = converted(each);
    return values;
  } else {
    return Face::integerValueSet(bounded);
  }
}

template <class Face, class Number>
std::vector<double> ConverterNode<Face, Number>::floatValueSet(bool bounded) {
  if constexpr (std::is_integral_v<Number>) {
    return Face::floatValueSet(bounded);
  } else {
    std::vector<double> values = ofSource([&](NodeBase& from) { return from.floatValueSet(bounded); });
    for (double& each : values) each = converted(each);
    return values;
  }
}

template <class Face, class Number>
std::string_view ConverterNode<Face, Number>::unit() {
  const Property* own = this->find(Element::Unit);
  return own ? own->value() : ofSource([](NodeBase& from) { return from.unit(); });
}

template <class Face, class Number>
ERepresentation ConverterNode<Face, Number>::representation() {
  const Property* own = this->find(Element::Representation);
  return own ? static_cast<ERepresentation>(own->word) : ofSource([](NodeBase& from) { return from.representation(); });
}

template <class Face, class Number>
EDisplayNotation ConverterNode<Face, Number>::displayNotation() {
  const Property* own = this->find(Element::DisplayNotation);
  return own ? static_cast<EDisplayNotation>(own->word)
             : ofSource([](NodeBase& from) { return from.displayNotation(); });
}

template <class Face, class Number>
int64_t ConverterNode<Face, Number>::displayPrecision() {
  const Property* own = this->find(Element::DisplayPrecision);
  return own ? own->integer : ofSource([](NodeBase& from) { return from.displayPrecision(); });
}

template class ConverterNode<IntegerFace, int64_t>;
template class ConverterNode<FloatFace, double>;

}  // namespace GENAPI_NAMESPACE

// Nodes whose value a formula computes: SwissKnife, IntSwissKnife, Converter, IntConverter.
#pragma once
#include "nodes/FloatFace.h"
#include "nodes/FormulaSet.h"
#include "nodes/IntegerFace.h"

namespace GENAPI_NAMESPACE {

class IntKnifeNode final : public IntegerFace {
 public:
  IntKnifeNode(NodeMap& map, NodeIndex index);
  EAccessMode typeMode() override { return restrictedByVariables(*this, RO); }
  std::string_view unit() override;
  ERepresentation representation() override;

 protected:
  int64_t fetch(Reading how) override;
  void store(int64_t value, bool verify) override;

 private:
  const FormulaSet& formulas_;
};

class KnifeNode final : public FloatFace {
 public:
  KnifeNode(NodeMap& map, NodeIndex index);
  EAccessMode typeMode() override { return restrictedByVariables(*this, RO); }
  std::string_view unit() override;
  ERepresentation representation() override;
  EDisplayNotation displayNotation() override;
  int64_t displayPrecision() override;

 protected:
  double fetch(Reading how) override;
  void store(double value, bool verify) override;

 private:
  const FormulaSet& formulas_;
};

// Converter and IntConverter: a formula to the source and one back.
template <class Face, class Number>
class ConverterNode final : public Face {
 public:
  ConverterNode(NodeMap& map, NodeIndex index);
  EAccessMode typeMode() override { return restrictedByVariables(*this, source().accessMode()); }
  int64_t integerIncrement() override;
  bool hasFloatIncrement() override;
  double floatIncrement() override;
  bool hasValueSet() override {
    return ofSource([](NodeBase& from) { return from.hasValueSet(); });
  }
  std::vector<int64_t> integerValueSet(bool bounded) override;
  std::vector<double> floatValueSet(bool bounded) override;
  std::string_view unit() override;
  ERepresentation representation() override;
  EDisplayNotation displayNotation() override;
  int64_t displayPrecision() override;

 protected:
  Number fetch(Reading how) override;
  void store(Number value, bool verify) override;
  Number fetchMin() override { return limit(false); }
  Number fetchMax() override { return limit(true); }

 private:
  NodeBase& source() const { return this->map().node(link_); }
  template <class Question>
  auto ofSource(Question&& question) {
    return this->ask(source(), question);
  }
  // FormulaFrom over a value of the source.
  Number converted(Number sourceValue);
  Number limit(bool upper);

  const FormulaSet& formulas_;
  NodeIndex link_ = kNoNode;
  ESlope slope_ = Automatic;
};

using IntConverterNode = ConverterNode<IntegerFace, int64_t>;
using FloatConverterNode = ConverterNode<FloatFace, double>;
extern template class ConverterNode<IntegerFace, int64_t>;
extern template class ConverterNode<FloatFace, double>;

}  // namespace GENAPI_NAMESPACE

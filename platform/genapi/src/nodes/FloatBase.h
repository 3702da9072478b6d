// Everything that float nodes have in common: the float interface over what NumberBase computes.
#pragma once
#include "nodes/NumberBase.h"

namespace GENAPI_NAMESPACE {

class FloatBase : public NumberBase<double> {
 public:
  using NumberBase::NumberBase;

  // IFloat
  bool HasInc() override;
  const GENICAM_NAMESPACE::gcstring GetUnit() const override;
  EDisplayNotation GetDisplayNotation() const override;
  int64_t GetDisplayPrecision() const override;
  EInterfaceType GetPrincipalInterfaceType() const override { return intfIFloat; }

  // inner operations
  int64_t readInteger(Reading how) const override;
  double readFloat(Reading how) const override { return readNumber(how); }
  bool readTruth() const override { return readNumber({}) != 0; }
  void writeInteger(int64_t value, bool verify) const override { writeNumber(static_cast<double>(value), verify); }
  void writeFloat(double value, bool verify) const override { writeNumber(value, verify); }
  std::string readText(Reading how) const override;
  void writeText(std::string_view value, bool verify) const override;
  int64_t integerMin() const override;
  int64_t integerMax() const override;
  int64_t integerIncrement() const override;
  double floatMin() const override { return minimum(); }
  double floatMax() const override { return maximum(); }
  bool hasFloatIncrement() const final { return hasIncrement(); }
  double floatIncrement() const override { return computeIncrement(); }
  std::vector<int64_t> integerValueSet(bool bounded) const final;
  std::vector<double> floatValueSet(bool bounded) const final { return valueSet(bounded); }

 protected:
  double computeIncrement() const override { return NodeBase::floatIncrement(); }
  void check(double value) const override;

 private:
  [[noreturn]] void refuseCast(double value) const;
};

}  // namespace GENAPI_NAMESPACE

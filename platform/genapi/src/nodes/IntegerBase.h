// Everything that integer nodes have in common: the integer interface over what NumberBase computes.
#pragma once
#include "nodes/NumberBase.h"

namespace GENAPI_NAMESPACE {

class IntegerBase : public NumberBase<int64_t> {
 public:
  using NumberBase::NumberBase;

  const GENICAM_NAMESPACE::gcstring GetUnit() override;
  EInterfaceType GetPrincipalInterfaceType() const override { return intfIInteger; }

  // inner operations
  int64_t readInteger(Reading how) const override { return readNumber(how); }
  double readFloat(Reading how) const override { return static_cast<double>(readNumber(how)); }
  void writeInteger(int64_t value, bool verify) const override { writeNumber(value, verify); }
  void writeFloat(double value, bool verify) const override;
  std::string readText(Reading how) const override;
  void writeText(std::string_view value, bool verify) const override;
  int64_t integerMin() const override { return minimum(); }
  int64_t integerMax() const override { return maximum(); }
  int64_t integerIncrement() const override { return computeIncrement(); }
  double floatMin() const override { return static_cast<double>(minimum()); }
  double floatMax() const override { return static_cast<double>(maximum()); }
  bool hasFloatIncrement() const final { return true; }
  double floatIncrement() const override { return static_cast<double>(computeIncrement()); }
  std::vector<int64_t> integerValueSet(bool bounded) const final { return valueSet(bounded); }
  std::vector<double> floatValueSet(bool bounded) const final;

 protected:
  int64_t computeIncrement() const override { return 1; }
  void check(int64_t value) const override;
};

}  // namespace GENAPI_NAMESPACE

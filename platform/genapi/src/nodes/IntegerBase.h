// Everything that integer nodes have in common: the integer interface over what NumberBase computes.
#pragma once
#include "GenApi/IInteger.h"
#include "nodes/NumberBase.h"

namespace GENAPI_NAMESPACE {

class IntegerBase : public NumberBase<int64_t>, public IInteger {
 public:
  using NumberBase::NumberBase;

  // IValue, IInteger
  INode* GetNode() override { return this; }
  GENICAM_NAMESPACE::gcstring ToString(bool Verify, bool IgnoreCache) override;
  void FromString(const GENICAM_NAMESPACE::gcstring& ValueStr, bool Verify) override;
  bool IsValueCacheValid() const override { return isCacheValid(); }
  void SetValue(int64_t Value, bool Verify) override;
  int64_t GetValue(bool Verify, bool IgnoreCache) override;
  int64_t GetMin() override;
  int64_t GetMax() override;
  EIncMode GetIncMode() override;
  int64_t GetInc() override;
  const int64_autovector_t GetListOfValidValues(bool bounded) override;
  ERepresentation GetRepresentation() override;
  const GENICAM_NAMESPACE::gcstring GetUnit() override;
  void ImposeMin(int64_t Value) override { imposeMin(Value); }
  void ImposeMax(int64_t Value) override { imposeMax(Value); }
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
  bool hasFloatIncrement() const override { return true; }
  double floatIncrement() const override { return static_cast<double>(computeIncrement()); }
  std::vector<double> floatValueSet(bool bounded) const override;

 protected:
  int64_t computeIncrement() const override { return 1; }
  void check(int64_t value) const override;
};

}  // namespace GENAPI_NAMESPACE

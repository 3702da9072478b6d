// Everything that float nodes have in common: the float interface over two inner operations, fetch and store.
#pragma once
#include "GenApi/IFloat.h"
#include "nodes/NodeBase.h"

namespace GENAPI_NAMESPACE {

class FloatFace : public NodeBase, public IFloat {
 public:
  using NodeBase::NodeBase;

  // IValue, IFloat
  INode* GetNode() override { return this; }
  GENICAM_NAMESPACE::gcstring ToString(bool Verify, bool IgnoreCache) override;
  void FromString(const GENICAM_NAMESPACE::gcstring& ValueStr, bool Verify) override;
  bool IsValueCacheValid() const override;
  void SetValue(double Value, bool Verify) override;
  double GetValue(bool Verify, bool IgnoreCache) override;
  double GetMin() override;
  double GetMax() override;
  bool HasInc() override;
  EIncMode GetIncMode() override;
  double GetInc() override;
  const double_autovector_t GetListOfValidValues(bool bounded) override;
  ERepresentation GetRepresentation() override;
  const GENICAM_NAMESPACE::gcstring GetUnit() const override;
  EDisplayNotation GetDisplayNotation() const override;
  int64_t GetDisplayPrecision() const override;
  void ImposeMin(double Value) override;
  void ImposeMax(double Value) override;
  EInterfaceType GetPrincipalInterfaceType() const override { return intfIFloat; }

  // inner operations
  int64_t readInteger(Reading how) override;
  double readFloat(Reading how) override;
  bool readTruth() override { return readFloat({}) != 0; }
  void writeInteger(int64_t value, bool verify) override { writeFloat(static_cast<double>(value), verify); }
  void writeFloat(double value, bool verify) override;
  GENICAM_NAMESPACE::gcstring readText(Reading how) override;
  void writeText(std::string_view value, bool verify) override;
  bool hasLimits() override { return true; }
  int64_t integerMin() override;
  int64_t integerMax() override;
  int64_t integerIncrement() override;
  double floatMin() override;
  double floatMax() override;
  std::vector<int64_t> integerValueSet(bool bounded) override;

 protected:
  virtual double fetch(Reading how) = 0;
  virtual void store(double value, bool verify) = 0;
  virtual double fetchMin() { return NodeBase::floatMin(); }
  virtual double fetchMax() { return NodeBase::floatMax(); }
  virtual bool isFloating() const { return false; }
  void check(double value);
  std::vector<double> withinLimits(std::vector<double> values);

 private:
  [[noreturn]] void refuseCast(double value);

  double value_ = 0;
  double min_ = 0;
  double max_ = 0;
};

}  // namespace GENAPI_NAMESPACE

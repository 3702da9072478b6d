// Everything that integer nodes have in common: the integer interface over two inner operations, fetch and store.
#pragma once
#include "GenApi/IInteger.h"
#include "nodes/NodeBase.h"

namespace GENAPI_NAMESPACE {

class IntegerFace : public NodeBase, public IInteger {
 public:
  using NodeBase::NodeBase;

  // IValue, IInteger
  INode* GetNode() override { return this; }
  GENICAM_NAMESPACE::gcstring ToString(bool Verify, bool IgnoreCache) override;
  void FromString(const GENICAM_NAMESPACE::gcstring& ValueStr, bool Verify) override;
  bool IsValueCacheValid() const override;
  void SetValue(int64_t Value, bool Verify) override;
  int64_t GetValue(bool Verify, bool IgnoreCache) override;
  int64_t GetMin() override;
  int64_t GetMax() override;
  EIncMode GetIncMode() override;
  int64_t GetInc() override;
  const int64_autovector_t GetListOfValidValues(bool bounded) override;
  ERepresentation GetRepresentation() override;
  const GENICAM_NAMESPACE::gcstring GetUnit() override;
  void ImposeMin(int64_t Value) override;
  void ImposeMax(int64_t Value) override;
  EInterfaceType GetPrincipalInterfaceType() const override { return intfIInteger; }

  // inner operations
  int64_t readInteger(Reading how) override;
  double readFloat(Reading how) override { return static_cast<double>(readInteger(how)); }
  void writeInteger(int64_t value, bool verify) override;
  void writeFloat(double value, bool verify) override;
  GENICAM_NAMESPACE::gcstring readText(Reading how) override;
  void writeText(std::string_view value, bool verify) override;
  bool hasLimits() override { return true; }
  int64_t integerMin() override;
  int64_t integerMax() override;
  double floatMin() override { return static_cast<double>(integerMin()); }
  double floatMax() override { return static_cast<double>(integerMax()); }
  bool hasFloatIncrement() override { return true; }
  double floatIncrement() override { return static_cast<double>(integerIncrement()); }
  std::vector<double> floatValueSet(bool bounded) override;

 protected:
  // The value from where it comes; what the node knows itself was already tried.
  virtual int64_t fetch(Reading how) = 0;
  // The value to where it goes; checked already.
  virtual void store(int64_t value, bool verify) = 0;
  // Limits before anything imposed from outside.
  virtual int64_t fetchMin() { return NodeBase::integerMin(); }
  virtual int64_t fetchMax() { return NodeBase::integerMax(); }
  // A node that holds its own value always knows it.
  virtual bool isFloating() const { return false; }
  void check(int64_t value);
  std::vector<int64_t> withinLimits(std::vector<int64_t> values);

 private:
  int64_t value_ = 0;  // kHasValue
  int64_t min_ = 0;    // kHasMin
  int64_t max_ = 0;    // kHasMax
};

}  // namespace GENAPI_NAMESPACE

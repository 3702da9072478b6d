// Boolean: an own value, or two values of an integer node.
#pragma once
#include "GenApi/IBoolean.h"
#include "nodes/ValueNode.h"

namespace GENAPI_NAMESPACE {

class BooleanNode final : public ValueNode<IBoolean> {
 public:
  BooleanNode(Device& device, NodeIndex index);

  // IBoolean
  void SetValue(bool Value, bool Verify) override;
  bool GetValue(bool Verify, bool IgnoreCache) const override;
  EInterfaceType GetPrincipalInterfaceType() const override { return intfIBoolean; }

  // inner operations: 1 and 0 whatever the on and off values are
  EAccessMode typeMode() const override;
  int64_t readInteger(Reading how) const override { return read(how) ? 1 : 0; }
  double readFloat(Reading how) const override { return read(how) ? 1.0 : 0.0; }
  void writeInteger(int64_t value, bool verify) const override { writeTruth(value != 0, verify); }
  void writeFloat(double value, bool verify) const override { writeTruth(value != 0, verify); }
  std::string readText(Reading how) const override { return read(how) ? "1" : "0"; }
  void writeText(std::string_view value, bool verify) const override;

 protected:
  bool holdsOwnValue() const override { return link_ == kNoNode; }

 private:
  bool read(Reading how) const;
  bool compute(Reading how) const;
  void writeTruth(bool truth, bool verify) const;

  const NodeIndex link_;
  const bool constant_;  // what a held value begins with
  const int64_t onValue_, offValue_;
};

}  // namespace GENAPI_NAMESPACE

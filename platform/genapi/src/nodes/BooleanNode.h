// Boolean: an own value, or two values of an integer node.
#pragma once
#include "GenApi/IBoolean.h"
#include "nodes/NodeBase.h"

namespace GENAPI_NAMESPACE {

class BooleanNode final : public NodeBase, public IBoolean {
 public:
  BooleanNode(NodeMap& map, NodeIndex index);

  // IValue, IBoolean
  INode* GetNode() override { return this; }
  GENICAM_NAMESPACE::gcstring ToString(bool Verify, bool IgnoreCache) override;
  void FromString(const GENICAM_NAMESPACE::gcstring& ValueStr, bool Verify) override;
  bool IsValueCacheValid() const override;
  void SetValue(bool Value, bool Verify) override;
  bool GetValue(bool Verify, bool IgnoreCache) const override;
  EInterfaceType GetPrincipalInterfaceType() const override { return intfIBoolean; }

  // inner operations: 1 and 0 whatever the on and off values are
  EAccessMode typeMode() override;
  int64_t readInteger(Reading how) override { return read(how) ? 1 : 0; }
  double readFloat(Reading how) override { return read(how) ? 1.0 : 0.0; }
  void writeInteger(int64_t value, bool verify) override { write(value != 0, verify); }
  void writeFloat(double value, bool verify) override { write(value != 0, verify); }
  GENICAM_NAMESPACE::gcstring readText(Reading how) override { return read(how) ? "1" : "0"; }

 private:
  bool isFloating() const { return link_ == kNoNode; }
  bool read(Reading how);
  void write(bool value, bool verify);

  NodeIndex link_ = kNoNode;
  bool held_ = false;
  bool value_ = false;  // kHasValue
  int64_t onValue_ = 1;
  int64_t offValue_ = 0;
};

}  // namespace GENAPI_NAMESPACE

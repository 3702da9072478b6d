// Everything that string nodes have in common.
#pragma once
#include <string>

#include "GenApi/IString.h"
#include "nodes/ValueNode.h"

namespace GENAPI_NAMESPACE {

class TextBase : public ValueNode<IString> {
 public:
  using ValueNode::ValueNode;

  // IString
  void SetValue(const GENICAM_NAMESPACE::gcstring& Value, bool Verify) override { FromString(Value, Verify); }
  GENICAM_NAMESPACE::gcstring GetValue(bool Verify, bool IgnoreCache) override { return ToString(Verify, IgnoreCache); }
  int64_t GetMaxLength() override;
  EInterfaceType GetPrincipalInterfaceType() const override { return intfIString; }

  // inner operations
  std::string readText(Reading how) const override;
  void writeText(std::string_view text, bool verify) const override;

 protected:
  virtual std::string compute(Reading how) const = 0;
  virtual void store(std::string_view text, bool verify) const = 0;
};

// String: its own text, or another string node's.
class StringNode final : public TextBase {
 public:
  StringNode(Device& device, NodeIndex index);
  EAccessMode typeMode() const override;
  int64_t textMaxLength() const override;

 protected:
  std::string compute(Reading how) const override;
  void store(std::string_view text, bool verify) const override;
  bool holdsOwnValue() const override { return link_ == kNoNode; }

 private:
  const NodeIndex link_;
};

}  // namespace GENAPI_NAMESPACE

// Everything that string nodes have in common.
#pragma once
#include <string>

#include "GenApi/IString.h"
#include "nodes/NodeBase.h"

namespace GENAPI_NAMESPACE {

class TextFace : public NodeBase, public IString {
 public:
  using NodeBase::NodeBase;

  // IValue, IString
  INode* GetNode() override { return this; }
  GENICAM_NAMESPACE::gcstring ToString(bool Verify, bool IgnoreCache) override { return GetValue(Verify, IgnoreCache); }
  void FromString(const GENICAM_NAMESPACE::gcstring& ValueStr, bool Verify) override { SetValue(ValueStr, Verify); }
  bool IsValueCacheValid() const override;
  void SetValue(const GENICAM_NAMESPACE::gcstring& Value, bool Verify) override;
  GENICAM_NAMESPACE::gcstring GetValue(bool Verify, bool IgnoreCache) override;
  int64_t GetMaxLength() override;
  EInterfaceType GetPrincipalInterfaceType() const override { return intfIString; }

  // inner operations
  GENICAM_NAMESPACE::gcstring readText(Reading how) override;
  void writeText(std::string_view value, bool verify) override;

 protected:
  virtual std::string fetch(Reading how) = 0;
  virtual void store(std::string_view value, bool verify) = 0;
  virtual bool isFloating() const { return false; }

 private:
  std::string value_;  // kHasValue
};

// String: its own text, or another string node's.
class StringNode final : public TextFace {
 public:
  StringNode(NodeMap& map, NodeIndex index);
  EAccessMode typeMode() override;
  int64_t textMaxLength() override;

 protected:
  std::string fetch(Reading how) override;
  void store(std::string_view value, bool verify) override;
  bool isFloating() const override { return link_ == kNoNode; }

 private:
  std::string held_;
  NodeIndex link_ = kNoNode;
};

}  // namespace GENAPI_NAMESPACE

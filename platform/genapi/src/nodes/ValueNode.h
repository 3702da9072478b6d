// What all nodes with a value have in common: it can be read and written as text.
#pragma once
#include "nodes/NodeBase.h"

namespace GENAPI_NAMESPACE {

template <class Interface>
class ValueNode : public NodeBase, public Interface {
 public:
  using NodeBase::NodeBase;

  // IValue
  INode* GetNode() override { return this; }
  GENICAM_NAMESPACE::gcstring ToString(bool Verify, bool IgnoreCache) override {
    return reading(
        [&] { return GENICAM_NAMESPACE::gcstring(readText({.verify = Verify, .ignoreCache = IgnoreCache})); });
  }
  void FromString(const GENICAM_NAMESPACE::gcstring& ValueStr, bool Verify) override {
    writing(Verify, [&] { writeText(ValueStr.view(), Verify); });
  }
  bool IsValueCacheValid() const override { return holdsOwnValue() || isValueValid(); }

 protected:
  // A node without a source always knows its value.
  virtual bool holdsOwnValue() const { return false; }
};

}  // namespace GENAPI_NAMESPACE

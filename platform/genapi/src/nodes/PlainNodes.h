// Nodes without a value of their own: Node and Category.
#pragma once
#include "GenApi/ICategory.h"
#include "nodes/ValueNode.h"

namespace GENAPI_NAMESPACE {

class PlainNode final : public ValueNode<IValue> {
 public:
  using ValueNode::ValueNode;
  void FromString(const GENICAM_NAMESPACE::gcstring& ValueStr, bool Verify) override;
  bool IsValueCacheValid() const override { return true; }
  EInterfaceType GetPrincipalInterfaceType() const override { return intfIValue; }
  std::string readText(Reading) const override { return {}; }
};

class CategoryNode final : public ValueNode<ICategory> {
 public:
  // A category that was once there stays, whatever its features do later.
  CategoryNode(Device& device, NodeIndex index) : ValueNode(device, index, Evaluation::Stay::UntilRenewed) {}
  EVisibility GetVisibility() const override;
  GENICAM_NAMESPACE::gcstring ToString(bool Verify, bool IgnoreCache) override;
  void FromString(const GENICAM_NAMESPACE::gcstring& ValueStr, bool Verify) override;
  bool IsValueCacheValid() const override { return true; }
  void GetFeatures(FeatureList_t& Features) const override;
  EInterfaceType GetPrincipalInterfaceType() const override { return intfICategory; }

 protected:
  EAccessMode combinedMode() const override;
};

}  // namespace GENAPI_NAMESPACE

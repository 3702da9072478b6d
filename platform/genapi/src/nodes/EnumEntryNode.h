// EnumEntry: one name and value of an enumeration.
#pragma once
#include "GenApi/IEnumEntry.h"
#include "nodes/ValueNode.h"

namespace GENAPI_NAMESPACE {

class EnumEntryNode final : public ValueNode<IEnumEntry> {
 public:
  using ValueNode::ValueNode;

  GENICAM_NAMESPACE::gcstring GetDisplayName() const override;

  // IValue, IEnumEntry
  void FromString(const GENICAM_NAMESPACE::gcstring& ValueStr, bool Verify) override;
  bool IsValueCacheValid() const override { return true; }
  int64_t GetValue() override;
  GENICAM_NAMESPACE::gcstring GetSymbolic() const override;
  double GetNumericValue() override;
  bool IsSelfClearing() override;
  EInterfaceType GetPrincipalInterfaceType() const override { return intfIEnumEntry; }

  EAccessMode typeMode() const override { return RO; }
  std::string readText(Reading how) const override;
};

}  // namespace GENAPI_NAMESPACE

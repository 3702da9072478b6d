// EnumEntry: one name and value of an enumeration.
#pragma once
#include "GenApi/IEnumEntry.h"
#include "nodes/NodeBase.h"

namespace GENAPI_NAMESPACE {

class EnumEntryNode final : public NodeBase, public IEnumEntry {
 public:
  using NodeBase::NodeBase;

  GENICAM_NAMESPACE::gcstring GetDisplayName() const override;

  // IValue, IEnumEntry
  INode* GetNode() override { return this; }
  GENICAM_NAMESPACE::gcstring ToString(bool Verify, bool IgnoreCache) override;
  void FromString(const GENICAM_NAMESPACE::gcstring& ValueStr, bool Verify) override;
  bool IsValueCacheValid() const override { return true; }
  int64_t GetValue() override;
  GENICAM_NAMESPACE::gcstring GetSymbolic() const override;
  double GetNumericValue() override;
  bool IsSelfClearing() override;
  EInterfaceType GetPrincipalInterfaceType() const override { return intfIEnumEntry; }

  EAccessMode typeMode() const override { return RO; }
};

}  // namespace GENAPI_NAMESPACE

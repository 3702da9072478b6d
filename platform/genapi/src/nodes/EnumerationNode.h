// Enumeration: an integer whose values have names.
#pragma once
#include "GenApi/IEnumeration.h"
#include "nodes/EntryTable.h"
#include "nodes/NodeBase.h"

namespace GENAPI_NAMESPACE {

class EnumerationNode final : public NodeBase, public IEnumeration {
 public:
  EnumerationNode(NodeMap& map, NodeIndex index);

  // IValue, IEnumeration
  INode* GetNode() override { return this; }
  GENICAM_NAMESPACE::gcstring ToString(bool Verify, bool IgnoreCache) override;
  void FromString(const GENICAM_NAMESPACE::gcstring& ValueStr, bool Verify) override;
  bool IsValueCacheValid() const override;
  void GetSymbolics(StringList_t& Symbolics) override;
  void GetEntries(NodeList_t& Entries) override;
  void SetIntValue(int64_t Value, bool Verify) override;
  int64_t GetIntValue(bool Verify, bool IgnoreCache) override;
  IEnumEntry* GetEntryByName(const GENICAM_NAMESPACE::gcstring& Symbolic) override;
  IEnumEntry* GetEntry(const int64_t IntValue) override;
  IEnumEntry* GetCurrentEntry(bool Verify, bool IgnoreCache) override;
  EInterfaceType GetPrincipalInterfaceType() const override { return intfIEnumeration; }

  // inner operations
  EAccessMode typeMode() override;
  int64_t readInteger(Reading how) override;
  double readFloat(Reading how) override;
  void writeInteger(int64_t value, bool verify) override;
  void writeFloat(double value, bool verify) override;
  std::string describeValue(int64_t value) const override;

  // For polling: from when a self-clearing entry became current until something else was seen.
  bool isClearing() const { return clearing_; }
  // How often that has begun.
  uint32_t clearings() const { return clearings_; }

  // The value of the entry with that symbolic name. Throws RuntimeException when there is none.
  int64_t entryValue(std::string_view symbolic);

 private:
  const EntryTable& table() const { return *table_; }
  EAccessMode modeOf(const EntryRecord& entry) const;
  bool isAvailable(const EntryRecord& entry) const;
  // The entry that stands for a value: the first available one, else the first; null when there is none.
  const EntryRecord* entryOf(int64_t value) const;
  IEnumEntry* publicEntry(const EntryRecord* entry) const;
  int64_t value(Reading how);
  // The numeric value of the entry that stands for a value. Throws InvalidArgumentException when there is none.
  long double numericValue(int64_t value) const;
  void writeNearest(long double value, bool verify);
  void write(const EntryRecord& entry, bool verify);
  void noteCurrent(int64_t value);
  void beginClearing(int64_t value);
  void verifyEntry(int64_t value);
  bool isFloating() const { return link_ == kNoNode; }

  const EntryTable* table_;
  NodeIndex link_ = kNoNode;
  bool clearing_ = false;
  uint32_t clearings_ = 0;
  int64_t clearingValue_ = 0;  // the value of the entry that is to clear itself
  int64_t held_ = 0;
  int64_t value_ = 0;  // kHasValue
  // The last entry found that is the only one with its value: mostly the current one. Guarded by the map's lock.
  mutable const EntryRecord* soleEntry_ = nullptr;
};

}  // namespace GENAPI_NAMESPACE

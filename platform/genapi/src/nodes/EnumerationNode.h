// Enumeration: an integer whose values have names.
#pragma once
#include "GenApi/IEnumeration.h"
#include "nodes/EntryTable.h"
#include "nodes/ValueNode.h"

namespace GENAPI_NAMESPACE {

class EnumerationNode final : public ValueNode<IEnumeration> {
 public:
  EnumerationNode(Device& device, NodeIndex index);

  // IValue. Builds the text in the caller's object: moving a short string costs as much as the rest of the call.
  GENICAM_NAMESPACE::gcstring ToString(bool Verify, bool IgnoreCache) override;

  // IEnumeration
  void GetSymbolics(StringList_t& Symbolics) override;
  void GetEntries(NodeList_t& Entries) override;
  void SetIntValue(int64_t Value, bool Verify) override;
  int64_t GetIntValue(bool Verify, bool IgnoreCache) override;
  IEnumEntry* GetEntryByName(const GENICAM_NAMESPACE::gcstring& Symbolic) override;
  IEnumEntry* GetEntry(const int64_t IntValue) override;
  IEnumEntry* GetCurrentEntry(bool Verify, bool IgnoreCache) override;
  EInterfaceType GetPrincipalInterfaceType() const override { return intfIEnumeration; }

  // inner operations
  EAccessMode typeMode() const override;
  int64_t readInteger(Reading how) const override;
  double readFloat(Reading how) const override;
  void writeInteger(int64_t value, bool verify) const override;
  void writeFloat(double value, bool verify) const override;
  std::string readText(Reading how) const override { return std::string(readEntry(how).symbolic); }
  void writeText(std::string_view value, bool verify) const override;
  std::string describeValue(int64_t value) const override;

  // For polling: from when a self-clearing entry became current until something else was seen.
  bool isClearing() const { return evaluation().isActive(index()); }
  // How often that has begun.
  uint32_t clearings() const { return evaluation().activity(index()).turns; }

  // The value of the entry with that symbolic name. Throws RuntimeException when there is none.
  int64_t entryValue(std::string_view symbolic) const;

 protected:
  bool holdsOwnValue() const override { return link_ == kNoNode; }

 private:
  EAccessMode modeOf(const EntryRecord& entry) const;
  bool isAvailable(const EntryRecord& entry) const { return IsAvailable(modeOf(entry)); }
  // The entry that stands for a value: the first available one, else the first; null when there is none.
  const EntryRecord* entryOf(int64_t value) const;
  // The same; throws InvalidArgumentException instead of null.
  const EntryRecord& requireEntry(int64_t value) const;
  // The current entry, remembered with the value; null when there is none.
  const EntryRecord* currentEntry(Reading how) const;
  // The current entry. Throws InvalidArgumentException if the value has no entry, and, with how.verify,
  // AccessException if the entry is not available.
  const EntryRecord& readEntry(Reading how) const;
  IEnumEntry* publicEntry(const EntryRecord* entry) const;
  int64_t readValue(Reading how) const;
  int64_t compute(bool fresh) const;
  void writeNearest(long double number, bool verify) const;
  void writeEntry(const EntryRecord& entry, bool verify) const;
  void requireAvailable(const EntryRecord& entry) const;
  // Begins or ends polling by what was seen. While the current entry clears itself, the device is asked each time; a
  // change seen then concerns all dependents.
  void noteCurrent(int64_t value) const;
  // Without an entry, or one that is not available: throws.
  void verifyEntry(int64_t value) const;

  const EntryTable& table_;
  NodeIndex link_ = kNoNode;
  int64_t constant_ = 0;  // what a held value begins with
};

}  // namespace GENAPI_NAMESPACE

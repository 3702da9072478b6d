// Enumerations.
#pragma once
#include "Base/GCStringVector.h"
#include "GenApi/Container.h"
#include "GenApi/IEnumEntry.h"
#include "GenApi/IValue.h"

namespace GENAPI_NAMESPACE {

using StringList_t = GENICAM_NAMESPACE::gcstring_vector;

class IEnumeration : virtual public IValue {
 public:
  // Symbolic names of the available entries.
  virtual void GetSymbolics(StringList_t& Symbolics) = 0;
  // All entries in description order, those that are not available included.
  virtual void GetEntries(NodeList_t& Entries) = 0;
  IEnumeration& operator=(const GENICAM_NAMESPACE::gcstring& ValueStr) {
    FromString(ValueStr);
    return *this;
  }
  GENICAM_NAMESPACE::gcstring operator*() { return ToString(); }
  // Throws InvalidArgumentException when no entry has the value, AccessException when its entry is not available.
  virtual void SetIntValue(int64_t Value, bool Verify = true) = 0;
  virtual int64_t GetIntValue(bool Verify = false, bool IgnoreCache = false) = 0;
  // Null when there is none.
  virtual IEnumEntry* GetEntryByName(const GENICAM_NAMESPACE::gcstring& Symbolic) = 0;
  virtual IEnumEntry* GetEntry(const int64_t IntValue) = 0;
  virtual IEnumEntry* GetCurrentEntry(bool Verify = false, bool IgnoreCache = false) = 0;
};

}  // namespace GENAPI_NAMESPACE

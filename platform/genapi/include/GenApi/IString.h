// String features.
#pragma once
#include "GenApi/IValue.h"

namespace GENAPI_NAMESPACE {

class IString : virtual public IValue {
 public:
  // Throws OutOfRangeException when the text does not fit its register.
  virtual void SetValue(const GENICAM_NAMESPACE::gcstring& Value, bool Verify = true) = 0;
  IString& operator=(const GENICAM_NAMESPACE::gcstring& Value) {
    SetValue(Value);
    return *this;
  }
  virtual GENICAM_NAMESPACE::gcstring GetValue(bool Verify = false, bool IgnoreCache = false) = 0;
  GENICAM_NAMESPACE::gcstring operator()() { return GetValue(); }
  GENICAM_NAMESPACE::gcstring operator*() { return GetValue(); }
  // Longest text in bytes.
  virtual int64_t GetMaxLength() = 0;
};

}  // namespace GENAPI_NAMESPACE

// Boolean features.
#pragma once
#include "GenApi/IValue.h"

namespace GENAPI_NAMESPACE {

class IBoolean : virtual public IValue {
 public:
  virtual void SetValue(bool Value, bool Verify = true) = 0;
  IBoolean& operator=(bool Value) {
    SetValue(Value);
    return *this;
  }
  // Throws LogicalErrorException when the device's number is neither the on nor the off value.
  virtual bool GetValue(bool Verify = false, bool IgnoreCache = false) const = 0;
  bool operator()() const { return GetValue(); }
};

}  // namespace GENAPI_NAMESPACE

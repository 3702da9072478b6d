// Integer features.
#pragma once
#include "GenApi/Autovector.h"
#include "GenApi/IValue.h"

namespace GENAPI_NAMESPACE {

class IInteger : virtual public IValue {
 public:
  // Throws AccessException (not writable), OutOfRangeException (limits, increment, value set), LogicalErrorException
  // (increment 0 or negative); Verify false switches these checks off.
  virtual void SetValue(int64_t Value, bool Verify = true) = 0;
  IInteger& operator=(int64_t Value) {
    SetValue(Value);
    return *this;
  }
  // Throws AccessException when not readable; with Verify also OutOfRangeException.
  virtual int64_t GetValue(bool Verify = false, bool IgnoreCache = false) = 0;
  int64_t operator()() { return GetValue(); }
  int64_t operator*() { return GetValue(); }
  virtual int64_t GetMin() = 0;
  virtual int64_t GetMax() = 0;
  virtual EIncMode GetIncMode() = 0;
  virtual int64_t GetInc() = 0;
  // The valid value set, empty without one; bounded: only members inside the limits.
  virtual const int64_autovector_t GetListOfValidValues(bool bounded = true) = 0;
  virtual ERepresentation GetRepresentation() = 0;
  virtual const GENICAM_NAMESPACE::gcstring GetUnit() = 0;
  // Narrow the limits; later calls replace earlier ones. Fire callbacks.
  virtual void ImposeMin(int64_t Value) = 0;
  virtual void ImposeMax(int64_t Value) = 0;
};

}  // namespace GENAPI_NAMESPACE

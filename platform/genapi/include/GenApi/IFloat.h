// Floating point features.
#pragma once
#include "GenApi/Autovector.h"
#include "GenApi/IValue.h"

namespace GENAPI_NAMESPACE {

class IFloat : virtual public IValue {
 public:
  // Throws AccessException (not writable), OutOfRangeException (limits; NaN); Verify false switches these checks off.
  virtual void SetValue(double Value, bool Verify = true) = 0;
  IFloat& operator=(double Value) {
    SetValue(Value);
    return *this;
  }
  // Throws AccessException when not readable; with Verify also OutOfRangeException.
  virtual double GetValue(bool Verify = false, bool IgnoreCache = false) = 0;
  double operator()() { return GetValue(); }
  double operator*() { return GetValue(); }
  virtual double GetMin() = 0;
  virtual double GetMax() = 0;
  virtual bool HasInc() = 0;
  virtual EIncMode GetIncMode() = 0;
  // Throws RuntimeException when the node has no increment.
  virtual double GetInc() = 0;
  // The valid value set, empty without one; bounded: only members inside the limits.
  virtual const double_autovector_t GetListOfValidValues(bool bounded = true) = 0;
  virtual ERepresentation GetRepresentation() = 0;
  virtual const GENICAM_NAMESPACE::gcstring GetUnit() const = 0;
  virtual EDisplayNotation GetDisplayNotation() const = 0;
  virtual int64_t GetDisplayPrecision() const = 0;
  // Narrow the limits; later calls replace earlier ones. Fire callbacks.
  virtual void ImposeMin(double Value) = 0;
  virtual void ImposeMax(double Value) = 0;
};

}  // namespace GENAPI_NAMESPACE

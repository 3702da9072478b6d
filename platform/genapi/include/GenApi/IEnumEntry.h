// One entry of an enumeration.
#pragma once
#include "GenApi/IValue.h"

namespace GENAPI_NAMESPACE {

class IEnumEntry : virtual public IValue {
 public:
  virtual int64_t GetValue() = 0;
  virtual GENICAM_NAMESPACE::gcstring GetSymbolic() const = 0;
  virtual double GetNumericValue() = 0;
  virtual bool IsSelfClearing() = 0;
};

}  // namespace GENAPI_NAMESPACE

// Registers as blocks of bytes.
#pragma once
#include "GenApi/IValue.h"

namespace GENAPI_NAMESPACE {

class IRegister : virtual public IValue {
 public:
  // Writes Length bytes from the register's start. Throws InvalidArgumentException (null buffer, negative length),
  // OutOfRangeException (longer than the register), AccessException, and what the port throws.
  virtual void Set(const uint8_t* pBuffer, int64_t Length, bool Verify = true) = 0;
  // Reads Length bytes from the register's start; errors as Set.
  virtual void Get(uint8_t* pBuffer, int64_t Length, bool Verify = false, bool IgnoreCache = false) = 0;
  // Bytes.
  virtual int64_t GetLength(bool Verify = false) = 0;
  virtual int64_t GetAddress(bool Verify = false) = 0;
};

}  // namespace GENAPI_NAMESPACE

// Ports: where registers are read and written.
#pragma once
#include "GenApi/IBase.h"

namespace GENAPI_NAMESPACE {

class IPort : virtual public IBase {
 public:
  // Length bytes at Address, exactly; failures are exceptions.
  virtual void Read(void* pBuffer, int64_t Address, int64_t Length) = 0;
  virtual void Write(const void* pBuffer, int64_t Address, int64_t Length) = 0;
};

}  // namespace GENAPI_NAMESPACE

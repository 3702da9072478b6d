// A caller's register access as a GenApi port.
#pragma once
#include <cstdint>
#include <memory>

#include "GenApi/PortImpl.h"
#include "OxGenApi/Types.h"

namespace orxGenApi {

// Lives in a shared_ptr: a call in it keeps it alive, so that its callback may replace it or load anew.
class Port : public GENAPI_NAMESPACE::CPortImpl, public std::enable_shared_from_this<Port> {
 public:
  // Each callback may be null.
  Port(TReadMem read, TWriteMem write, TPortAccessMode accessMode, void* userData) noexcept
      : read_(read), write_(write), accessMode_(accessMode), userData_(userData) {}

  // From the callback, else from which of the other callbacks exist.
  GENAPI_NAMESPACE::EAccessMode GetAccessMode() const override;
  // Throw AccessException (no callback; refused with 0x8000000e or 0x80000013), RuntimeException (any other negative
  // result), each with the text that the callback left as last error under the code it returned; what callOut throws
  // for a callback that throws.
  void Read(void* pBuffer, int64_t Address, int64_t Length) override;
  void Write(const void* pBuffer, int64_t Address, int64_t Length) override;

 private:
  TReadMem read_;
  TWriteMem write_;
  TPortAccessMode accessMode_;
  void* userData_;
};

}  // namespace orxGenApi

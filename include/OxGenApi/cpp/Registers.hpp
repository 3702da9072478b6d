/// @file
/// What a node map is connected to.
#ifndef OXGENAPI_CPP_REGISTERS_HPP
#define OXGENAPI_CPP_REGISTERS_HPP

#include <OxBase/OxBase.h>

#include <exception>

#include "OxGenApi/cpp/Error.hpp"

namespace oxgenapi {

/// A device's registers, given to NodeMap::connect. Called on the thread that uses a feature, one access at a time per
/// node map. To refuse an access, throw: an Error travels to the feature's caller with code and text, any other
/// std::exception with its text.
class Registers {
 public:
  Registers() = default;
  Registers(const Registers&) = default;
  Registers& operator=(const Registers&) = default;
  virtual ~Registers() = default;

  /// Fills `buffer` with `length` bytes from `address`.
  virtual void read(void* buffer, int64_t address, int64_t length) = 0;
  /// Writes `length` bytes to `address`.
  virtual void write(const void* buffer, int64_t address, int64_t length) = 0;
  /// What the device allows at the moment; must not throw.
  virtual TAccessMode accessMode() noexcept { return AM_ReadWrite; }
};

namespace detail {

template <class Access>
int refusedOr(Access access) noexcept {
  uint32_t code = OXGENAPI_E_UNSPECIFIED;
  try {
    access();
    return 0;
  } catch (const Error& error) {
    code = error.code();
    OxSetLastError(code, error.what());
  } catch (const std::exception& error) {
    OxSetLastError(code, error.what());
  } catch (...) {
    OxSetLastError(code, "Unspecified error");
  }
  return static_cast<int>(code);
}

inline int readRegisters(void* buffer, int64_t address, int64_t length, void* registers) {
  return refusedOr([&] { static_cast<Registers*>(registers)->read(buffer, address, length); });
}

inline int writeRegisters(const void* buffer, int64_t address, int64_t length, void* registers) {
  return refusedOr([&] { static_cast<Registers*>(registers)->write(buffer, address, length); });
}

inline TAccessMode registersAccess(void* registers) { return static_cast<Registers*>(registers)->accessMode(); }

}  // namespace detail
}  // namespace oxgenapi

#endif

// A device seen as a space of bytes: what every simulated device has in common.
#pragma once

#include <cstdint>
#include <string>

namespace ox::simulation {

/// Results of an access. 0 is success; failures are negative and can be handed on by a port callback as they are.
enum ResultCode : int32_t {
  kSuccess = 0,
  kUnspecifiedFailure = static_cast<int32_t>(0x80000001),
  kInvalidArgument = static_cast<int32_t>(0x80000002),
  kRuntimeFailure = static_cast<int32_t>(0x80000003),
  kOutOfMemory = static_cast<int32_t>(0x80000005),
  kAccessRefused = static_cast<int32_t>(0x8000000e),
  kNotSupported = static_cast<int32_t>(0x80000013),
};

/// Access modes of a port, numbered as the port callbacks number them.
enum PortAccess : int32_t {
  kPortNotImplemented = 0,
  kPortNotAvailable = 1,
  kPortReadOnly = 2,
  kPortWriteOnly = 3,
  kPortReadWrite = 4,
};

/// A device with registers. Implementations are safe to use from several threads at once.
class RegisterDevice {
 public:
  RegisterDevice() = default;
  RegisterDevice(const RegisterDevice&) = delete;
  RegisterDevice& operator=(const RegisterDevice&) = delete;
  virtual ~RegisterDevice();

  /// Fills `buffer` with `length` bytes from `address`. Returns 0, or a negative code: kAccessRefused when a byte of
  /// the range is not readable, kInvalidArgument for a null buffer or a negative length, others as a device likes.
  /// After a failure the content of `buffer` is unspecified and lastFailureText() tells the reason.
  virtual int read(void* buffer, int64_t address, int64_t length) = 0;

  /// Writes `length` bytes to `address`; results as for read(). A refused write changes nothing.
  virtual int write(const void* buffer, int64_t address, int64_t length) = 0;

  /// One of PortAccess.
  virtual int accessMode() = 0;

  /// Why the last failed access of the calling thread failed, one line; empty when that access gave no reason. Valid
  /// until the next access of this thread. A port callback puts it into the last error together with the code.
  static const std::string& lastFailureText() noexcept;

 protected:
  /// Notes the text for the calling thread and returns the code.
  static int fail(int code, std::string text) noexcept;
};

}  // namespace ox::simulation

// How failures travel: as exceptions up to an export, from there as a code and the calling thread's last error.
#pragma once

#include <OxCamera/CameraTypes.h>
#include <OxCameraTransport/Transport.h>

#include <cstdint>
#include <stdexcept>
#include <string>

namespace ox::camera {

class CameraError : public std::runtime_error {
 public:
  CameraError(uint32_t code, const std::string& text) : std::runtime_error(text), code_(code) {}
  uint32_t code() const noexcept { return code_; }

 private:
  uint32_t code_;
};

uint32_t codeOf(Reason reason) noexcept;

// Makes the calling thread's last error, if `code` is its code, an exception.
CameraError lastFailure(uint32_t code);

// The one place where exceptions become codes: call it from a handler. Sets the last error, returns its code.
uint32_t failWithCurrentException() noexcept;

}  // namespace ox::camera

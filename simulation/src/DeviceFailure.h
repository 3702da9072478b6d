// How a register or a behaviour refuses an access: thrown inside, turned into a result code at the edge of the device.
#pragma once

#include <stdexcept>
#include <string>

#include "OxSimulation/RegisterDevice.h"

namespace ox::simulation {

class DeviceFailure : public std::runtime_error {
 public:
  DeviceFailure(int code, const std::string& text) : std::runtime_error(text), code_(code) {}
  int code() const noexcept { return code_; }

 private:
  int code_;
};

}  // namespace ox::simulation

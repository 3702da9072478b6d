// The addresses of a GigE Vision camera.
#pragma once

#include <OxCameraTransport/Transport.h>

namespace ox::camera::gige {

// The registers of an open camera, as numbers.
class Registers {
 public:
  virtual uint32_t readRegister(uint32_t address) = 0;
  virtual void writeRegister(uint32_t address, uint32_t value) = 0;

 protected:
  ~Registers() = default;
};

NetworkConfiguration readConfiguration(Registers& registers);
// Reads back what it has stored; fails if the camera has kept something else.
void storeConfiguration(Registers& registers, const NetworkAddress& address);

// Of a camera that was found.
NetworkAddress propose(const CameraFacts& camera);
void force(const CameraFacts& camera, const NetworkAddress& address);

}  // namespace ox::camera::gige

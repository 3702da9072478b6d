// What the tool connects a node map to: a device's registers, and the file they are kept in between runs.
#pragma once

#include <OxSimulation/RegisterDevice.h>

#include <memory>
#include <string>

namespace tool {

class Device {
 public:
  Device() = default;
  Device(const Device&) = delete;
  Device& operator=(const Device&) = delete;
  virtual ~Device() = default;

  virtual ox::simulation::RegisterDevice& registers() = 0;

  // What a power cycle does to the device.
  virtual void restart() = 0;

  // Writes the registers back to the file they came from, if they came from one. Throws Failure.
  virtual void keep() = 0;
};

// The simulated camera; its registers come from the file `state` and are kept there, or begin with factory settings and
// are forgotten where `state` is empty. Throws Failure.
std::unique_ptr<Device> openCamera(const std::string& state);
std::string cameraDescription();

// Plain memory over the whole address space: what `image` gives, else zero. Kept in `image` unless that is empty.
// Throws Failure.
std::unique_ptr<Device> openMemory(const std::string& image);

}  // namespace tool

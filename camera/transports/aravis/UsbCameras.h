// What the system says about USB3 Vision cameras, also about those that this user may not open.
#pragma once

#include <OxCameraTransport/Transport.h>

#include <filesystem>
#include <string>
#include <vector>

namespace ox::camera::usb {

struct UsbCamera {
  std::string position;      // "2-1.4": the bus and its ports
  std::string vendorNumber;  // four hexadecimal digits
  std::string manufacturer;
  std::string product;
  std::string serial;
  std::string driver;  // of its control interface; empty: none has it
  std::string node;    // "/dev/bus/usb/002/005"
  uint64_t speed = 0;  // bits per second
  bool mayOpen = false;
};

// Devices with an interface of the class of USB3 Vision.
std::vector<UsbCamera> systemCameras(const std::filesystem::path& devices = "/sys/bus/usb/devices",
                                     const std::filesystem::path& nodes = "/dev/bus/usb");

// Facts of a camera that this user may not open: nobody but the system can be asked about it.
CameraFacts factsOf(const UsbCamera& camera);

// Adds what the system knows to what the driver has found.
void complete(CameraFacts& facts, const UsbCamera& camera);

}  // namespace ox::camera::usb

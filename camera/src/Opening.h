// From what a caller names to an opened device.
#pragma once

#include <OxCamera/CameraTypes.h>

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "CameraList.h"

namespace ox::camera {

// TCameraOptions with the defaults filled in and texts of its own.
struct OpenOptions {
  bool control = true;
  Milliseconds search{1000};
  Milliseconds answer{2000};
  Milliseconds retry{0};
  Milliseconds heartbeat{3000};
  TByteOrder byteOrder = BO_Automatic;
  std::string description;  // file
  std::string registers;    // file
};

// Throws CameraError for options that cannot be used.
OpenOptions readOptions(const TCameraOptions* options);

// Keeps this process from opening a camera for control twice.
class Reservation {
 public:
  // Throws CameraError IN_USE.
  explicit Reservation(std::string key);
  ~Reservation();
  Reservation(const Reservation&) = delete;
  Reservation& operator=(const Reservation&) = delete;

 private:
  std::string key_;
};

struct OpenedCamera {
  ListedCamera camera;  // its first way is the one in use
  std::unique_ptr<Reservation> reservation;
  std::unique_ptr<Device> device;
};

// Who waits for the camera.
struct Caller {
  std::function<void(const std::string& reason)> onLost;  // goes to the device
  std::function<bool()> gaveUp;                           // ends the tries; may be called at any time
};

// Finds and opens the one camera of that name, again and again for as long as the options say. Throws CameraError or
// TransportError.
OpenedCamera openCamera(const std::string& name, const OpenOptions& options, const Caller& caller);

// Finds and opens the same camera again, wherever it answers now.
OpenedCamera openAgain(const ListedCamera& camera, const OpenOptions& options, const Caller& caller);

}  // namespace ox::camera

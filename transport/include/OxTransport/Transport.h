// How the tool reaches cameras on a bus or a network. A transport is a module of its own, loaded while the tool runs,
// so that neither the library nor the tool needs what the transport stands on.
#pragma once

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace ox::transport {

// One camera that answers now.
struct CameraEntry {
  std::string id;      // names the camera in open(); stable as long as the camera keeps its place and name
  std::string vendor;  // the fields below are empty where the camera does not tell
  std::string model;
  std::string serial;
  std::string address;   // network address or bus position
  std::string protocol;  // "GigEVision", "USB3Vision"
};

// What went wrong on the way to a camera, one line.
class TransportError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// An open camera: its registers and its own description. One thread at a time.
class Camera {
 public:
  Camera() = default;
  Camera(const Camera&) = delete;
  Camera& operator=(const Camera&) = delete;
  virtual ~Camera() = default;

  // Moves `length` bytes from or to `address`, whole or not at all as far as the protocol can tell. Throw
  // TransportError.
  virtual void read(void* buffer, uint64_t address, uint32_t length) = 0;
  virtual void write(const void* buffer, uint64_t address, uint32_t length) = 0;

  // The description that the camera carries, XML text. Throws TransportError for a camera without one.
  virtual std::string description() = 0;
};

// A transport finds cameras and opens them. One thread at a time; it outlives its cameras.
class Transport {
 public:
  Transport() = default;
  Transport(const Transport&) = delete;
  Transport& operator=(const Transport&) = delete;
  virtual ~Transport() = default;

  // Asks every interface of the machine; takes about a second.
  virtual std::vector<CameraEntry> cameras() = 0;

  // Takes control of a camera, named by its ID, address or serial number. Throws TransportError.
  virtual std::unique_ptr<Camera> open(const std::string& name) = 0;
};

// The one symbol a module exports, under the name kEntryPoint. `version` is kInterfaceVersion of the tool; a module of
// another version answers null.
inline constexpr int kInterfaceVersion = 1;
inline constexpr const char* kEntryPoint = "oxOpenTransport";
using OpenTransport = Transport* (*)(int version);

}  // namespace ox::transport

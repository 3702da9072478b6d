// What the tool connects a node map to: a device's registers and description, what it sends, and the file that keeps
// its registers between runs.
#pragma once

#include <OxGenApi/Types.h>
#include <OxSimulation/RegisterDevice.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Failure.h"
#include "NodeMap.h"

namespace tool {

struct EventMessage {
  std::string id;  // hexadecimal digits, as the description writes it
  std::vector<uint8_t> payload;
};

struct Chunk {
  uint64_t id = 0;
  int64_t offset = 0;  // bytes from the start of the buffer
  int64_t length = 0;  // bytes
};

// One image buffer as it came from the device. No data: the device sends no image now.
struct Image {
  std::vector<uint8_t> data;
  uint64_t frameId = 0;
  std::vector<Chunk> chunks;
};

class Device {
 public:
  Device() = default;
  Device(const Device&) = delete;
  Device& operator=(const Device&) = delete;
  virtual ~Device() = default;

  virtual ox::simulation::RegisterDevice& registers() = 0;

  // Loads the description that fits the device now. Throws Failure.
  virtual void describe(NodeMap& map) = 0;

  // The bytes that describe() loads: XML or a zip archive. Throws Failure.
  virtual std::string description() = 0;

  // The device restarts, as its new firmware makes it: wait so long, then expect it back within about `duration`.
  // Throws Failure when it does not come.
  virtual void restart(std::chrono::milliseconds delay, std::chrono::milliseconds duration) = 0;

  // The oldest event message not yet taken, if there is one. Throws Failure for a device that sends none.
  virtual std::optional<EventMessage> nextEvent();

  // The oldest image not yet taken, or the next one. Throws Failure for a device that sends none.
  virtual Image nextImage();

  // Writes registers that have changed back to the file they came from, if they came from one. Throws Failure.
  virtual void keep() = 0;
};

// The simulated camera; its registers come from the file `state` and are kept there, or begin with factory settings and
// are forgotten where `state` is empty. Throws Failure.
std::unique_ptr<Device> openCamera(const std::string& state);

// Plain memory behind the description `xml`, over the whole address space: what `image` gives, else zero. Kept in
// `image` unless that is empty. Throws Failure.
std::unique_ptr<Device> openMemory(const std::string& xml, const std::string& image);

}  // namespace tool

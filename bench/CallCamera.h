// A device of plain bytes for programs that measure single calls.
#pragma once
#include <OxBase/OxBase.h>
#include <OxGenApi/OxGenApi.h>

#include <cstdlib>
#include <cstring>

#include "CallDescription.h"

struct Device {
  uint8_t bytes[256] = {};
  long reads = 0;
  long writes = 0;
};

inline int readDevice(void* to, int64_t address, int64_t length, void* user) {
  auto& device = *static_cast<Device*>(user);
  ++device.reads;
  std::memcpy(to, device.bytes + address, static_cast<size_t>(length));
  return 0;
}

inline int writeDevice(const void* from, int64_t address, int64_t length, void* user) {
  auto& device = *static_cast<Device*>(user);
  ++device.writes;
  std::memcpy(device.bytes + address, from, static_cast<size_t>(length));
  return 0;
}

inline void require(uint32_t result) {
  if (result != OXGENAPI_OK) std::abort();
}

// A node map over a device of its own.
struct CallCamera {
  CallCamera() {
    require(CreateNodeMap(map));
    require(NMLoadXMLString(map, callDescription().c_str()));
    require(NMConnectPort(map, readDevice, writeDevice, nullptr, &device));
  }
  ~CallCamera() { OxIfaceContainerReleaseUseCounter(map); }
  CallCamera(const CallCamera&) = delete;
  CallCamera& operator=(const CallCamera&) = delete;

  NODE node(const char* name) const {
    NODE found = nullptr;
    require(NMGetNode(map, name, found));
    return found;
  }

  Device device;
  NODEMAP map = nullptr;
};

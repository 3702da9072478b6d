#include "NodeMap.h"

#include <OxBase/OxBase.h>

namespace tool {
namespace {

using ox::simulation::RegisterDevice;

// A refused access leaves its reason in the last error, from where the library carries it to the caller of the node.
int finished(int result) {
  if (result < 0) {
    OxSetLastError(static_cast<uint32_t>(result), RegisterDevice::lastFailureText().c_str());
  }
  return result;
}

int readMemory(void* buffer, int64_t address, int64_t length, void* device) noexcept {
  return finished(static_cast<RegisterDevice*>(device)->read(buffer, address, length));
}

int writeMemory(const void* buffer, int64_t address, int64_t length, void* device) noexcept {
  return finished(static_cast<RegisterDevice*>(device)->write(buffer, address, length));
}

TAccessMode portAccess(void* device) noexcept {
  return static_cast<TAccessMode>(static_cast<RegisterDevice*>(device)->accessMode());
}

}  // namespace

void NodeMap::connect(const std::string& port, RegisterDevice& device) {
  oxgenapi::NodeMap::connect(readMemory, writeMemory, portAccess, &device, port);
}

}  // namespace tool

// A device of plain memory whose accesses are counted, fail on demand and may be watched.
#pragma once
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "Device.h"

template <class Handle>
void release(Handle handle) {
  OxIfaceContainerReleaseUseCounter(reinterpret_cast<OxHandle>(handle));
}

class MemoryDevice {
 public:
  // `nodes` as for description().
  explicit MemoryDevice(const std::string& nodes) : memory(0x10000) {
    EXPECT_EQ(CreateNodeMap(map), OXGENAPI_OK) << lastErrorText();
    load(nodes);
  }
  ~MemoryDevice() { release(map); }
  MemoryDevice(const MemoryDevice&) = delete;
  MemoryDevice& operator=(const MemoryDevice&) = delete;

  void load(const std::string& nodes) {
    ASSERT_EQ(NMLoadXMLString(map, description(nodes).c_str()), OXGENAPI_OK) << lastErrorText();
    ASSERT_EQ(NMConnectPort(map, &MemoryDevice::read, &MemoryDevice::write, nullptr, this), OXGENAPI_OK);
  }

  NODE node(const char* name) const {
    NODE found{};
    EXPECT_EQ(NMGetNode(map, name, found), OXGENAPI_OK) << lastErrorText();
    return found;
  }
  uint32_t set(const char* name, const char* value) const {
    const NODE found = node(name);
    const uint32_t result = NSetAsString(found, value);
    release(found);
    return result;
  }
  std::string get(const char* name) const {
    const NODE found = node(name);
    std::string text(256, '\0');
    size_t size = text.size();
    EXPECT_EQ(NGetAsString(found, text.data(), size), OXGENAPI_OK) << lastErrorText();
    release(found);
    return text.c_str();
  }

  NODEMAP map{};
  std::vector<uint8_t> memory;
  int64_t accesses = 0;       // how often the port was asked, in either direction
  int64_t writes = 0;         // writes among them
  int64_t failingAccess = 0;  // the access with this number, counted from 1, fails with "port broken"
  // Called after each access of either kind with the address and whether it was a write; may change the memory.
  std::function<void(int64_t address, bool isWrite)> after;

 private:
  // The access is counted and carried out, unless it is its turn to fail.
  int access(int64_t address, int64_t length, bool isWrite, const std::function<void(uint8_t*)>& copy) {
    ++accesses;
    if (isWrite) ++writes;
    if (accesses == failingAccess || address < 0 || address + length > static_cast<int64_t>(memory.size())) {
      OxSetLastError(OXGENAPI_E_ACCESS_DENIED, "port broken");
      return static_cast<int>(OXGENAPI_E_ACCESS_DENIED);
    }
    copy(memory.data() + address);
    if (after) after(address, isWrite);
    return 0;
  }
  static int read(void* buffer, int64_t address, int64_t length, void* self) {
    return static_cast<MemoryDevice*>(self)->access(
        address, length, false, [&](uint8_t* place) { std::memcpy(buffer, place, static_cast<size_t>(length)); });
  }
  static int write(const void* buffer, int64_t address, int64_t length, void* self) {
    return static_cast<MemoryDevice*>(self)->access(
        address, length, true, [&](uint8_t* place) { std::memcpy(place, buffer, static_cast<size_t>(length)); });
  }
};

// What calls are tried on while memory runs out.
#pragma once
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "OxBase/OxBase.h"
#include "OxGenApi/OxGenApi.h"
#include "OxSimulation/SimulatedCamera.h"
#include "calls/Vocabulary.h"
#include "memory/FailingAllocator.h"

template <class Handle>
void release(Handle handle) {
  if (handle != nullptr) OxIfaceContainerReleaseUseCounter(reinterpret_cast<OxHandle>(handle));
}

// The simulated camera and the small description over plain memory, each behind a node map, made anew for each try:
// what is built on first use is built within the call that is tried.
class Bench {
 public:
  Bench() : camera({.clock = [] { return int64_t{0}; }, .fileBufferBytes = 64}), memory(0x1000) {
    load(cameraMap, camera.description());
    NMConnectPort(cameraMap, &readCamera, &writeCamera, nullptr, this);
    load(smallMap, calls::smallDescription());
    NMConnectPort(smallMap, &readMemory, &writeMemory, nullptr, this);
  }
  ~Bench() {
    for (const NODE node : nodes_) release(node);
    release(stream);
    release(updater);
    release(createdUpdater);
    for (const NODEMAP map : {cameraMap, smallMap, created}) release(map);
  }
  Bench(const Bench&) = delete;
  Bench& operator=(const Bench&) = delete;

  NODE camera_(const char* name) { return node(cameraMap, name); }
  NODE small(const char* name) { return node(smallMap, name); }
  NODE keep(NODE node) {
    nodes_.push_back(node);
    return node;
  }
  static bool note(NODE, uint32_t code, void* self) {
    const memory::Plenty plenty;
    static_cast<Bench*>(self)->problems.push_back(code);
    return true;
  }

  ox::simulation::SimulatedCamera camera;
  std::vector<uint8_t> memory;
  NODEMAP cameraMap{}, smallMap{}, created{};
  NODEMAPSTREAM stream{};
  FWUPDATER updater{}, createdUpdater{};
  std::vector<uint32_t> problems;  // told by a settings call
  char text[4096] = {};
  wchar_t wide[4096] = {};
  size_t size = 4096;
  int64_t integer = 0;
  double real = 0;
  TCallbackHandle registration = 0;
  int notified = 0;  // of the end of a proxy
  uint8_t chunk[64] = {};

 private:
  static void load(NODEMAP& map, std::string_view description) {
    EXPECT_EQ(CreateNodeMap(map), 0u);
    EXPECT_EQ(NMLoadXMLString(map, std::string(description).c_str()), 0u);
  }
  NODE node(NODEMAP map, const char* name) {
    NODE found{};
    EXPECT_EQ(NMGetNode(map, name, found), 0u) << name;
    return keep(found);
  }
  static int readCamera(void* buffer, int64_t address, int64_t length, void* self) {
    const memory::Plenty plenty;
    return static_cast<Bench*>(self)->camera.read(buffer, address, length);
  }
  static int writeCamera(const void* buffer, int64_t address, int64_t length, void* self) {
    const memory::Plenty plenty;
    return static_cast<Bench*>(self)->camera.write(buffer, address, length);
  }
  static int readMemory(void* buffer, int64_t address, int64_t length, void* self) {
    std::memcpy(buffer, static_cast<Bench*>(self)->memory.data() + (address & 0x7ff), static_cast<size_t>(length));
    return 0;
  }
  static int writeMemory(const void* buffer, int64_t address, int64_t length, void* self) {
    std::memcpy(static_cast<Bench*>(self)->memory.data() + (address & 0x7ff), buffer, static_cast<size_t>(length));
    return 0;
  }
  std::vector<NODE> nodes_;
};

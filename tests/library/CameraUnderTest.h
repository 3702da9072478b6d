// The simulated camera behind a node map, its time standing still.
#pragma once
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "MemoryDevice.h"
#include "OxSimulation/SimulatedCamera.h"

class CameraUnderTest {
 public:
  CameraUnderTest() : camera({.clock = [] { return int64_t{0}; }}) {
    EXPECT_EQ(CreateNodeMap(map), OXGENAPI_OK);
    EXPECT_EQ(NMLoadXMLString(map, std::string(camera.description()).c_str()), OXGENAPI_OK) << lastErrorText();
    EXPECT_EQ(NMConnectPort(map, &read, &write, &accessMode, &camera), OXGENAPI_OK) << lastErrorText();
  }
  ~CameraUnderTest() { release(map); }
  CameraUnderTest(const CameraUnderTest&) = delete;
  CameraUnderTest& operator=(const CameraUnderTest&) = delete;

  std::string save() const {
    size_t size = 0;
    EXPECT_EQ(NMSaveSetString(map, nullptr, &size, nullptr, nullptr), OXGENAPI_OK) << lastErrorText();
    std::string text(size, '\0');
    EXPECT_EQ(NMSaveSetString(map, text.data(), &size, nullptr, nullptr), OXGENAPI_OK) << lastErrorText();
    text.pop_back();
    return text;
  }

  // Gives every streamable feature that takes it another value; returns how many took one.
  int changeEverything() const {
    int changed = 0;
    uint32_t count = 0;
    EXPECT_EQ(NMNodeCount(map, count), OXGENAPI_OK);
    for (uint32_t i = 0; i < count; ++i) {
      char name[128];
      size_t size = sizeof name;
      EXPECT_EQ(NMListNode(map, i, name, size), OXGENAPI_OK);
      NODE node{};
      if (NMGetNode(map, name, node) != OXGENAPI_OK) continue;
      bool streamable = false;
      if (NInfoAsBoolean(node, NI_IsStreamable, &streamable) == OXGENAPI_OK && streamable && change(node)) ++changed;
      release(node);
    }
    return changed;
  }

  ox::simulation::SimulatedCamera camera;
  NODEMAP map{};

 private:
  static bool change(NODE node) {
    TNodeType type{};
    if (NType(node, &type) != OXGENAPI_OK) return false;
    if (type == NT_Enumeration) {
      int64_t value = 0, entries = 0;
      if (NGetAsInteger(node, &value) != OXGENAPI_OK) return false;
      NInfoAsInteger(node, NI_NumEnumEntries, &entries);
      for (int64_t other = 0; other < entries; ++other) {
        int64_t entry = 0;
        size_t size = 0;
        if (NInfoEnum(node, NI_Name, other, &entry, nullptr, &size) != OXGENAPI_OK) continue;
        if (entry != value && NSetAsInteger(node, entry) == OXGENAPI_OK) return true;
      }
      return false;
    }
    if (type == NT_String) return NSetAsString(node, "changed") == OXGENAPI_OK;
    if (type == NT_Boolean) {
      bool value = false;
      return NGetAsBoolean(node, &value) == OXGENAPI_OK && NSetAsBoolean(node, !value) == OXGENAPI_OK;
    }
    // Numbers go to their least value, or to their largest.
    for (const TNodeInfo limit : {NI_Min, NI_Max}) {
      double value = 0, wanted = 0;
      if (NGetAsFloat(node, &value) != OXGENAPI_OK || NInfoAsFloat(node, limit, &wanted) != OXGENAPI_OK) return false;
      if (value != wanted && NSetAsFloat(node, wanted) == OXGENAPI_OK) return true;
    }
    return false;
  }

  static int finish(int result) {
    if (result < 0)
      OxSetLastError(static_cast<uint32_t>(result), ox::simulation::RegisterDevice::lastFailureText().c_str());
    return result;
  }
  static int read(void* buffer, int64_t address, int64_t length, void* camera) {
    return finish(static_cast<ox::simulation::SimulatedCamera*>(camera)->read(buffer, address, length));
  }
  static int write(const void* buffer, int64_t address, int64_t length, void* camera) {
    return finish(static_cast<ox::simulation::SimulatedCamera*>(camera)->write(buffer, address, length));
  }
  static TAccessMode accessMode(void* camera) {
    return static_cast<TAccessMode>(static_cast<ox::simulation::SimulatedCamera*>(camera)->accessMode());
  }
};

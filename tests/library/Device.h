// A node map over a byte array, for tests of the flat interface.
#pragma once
#include <gtest/gtest.h>

#include <charconv>
#include <cmath>
#include <cstring>
#include <functional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "OxBase/OxBase.h"
#include "OxGenApi/OxGenApi.h"

// What a call left behind: its code and, after a failure, the last error's text.
struct Outcome {
  uint32_t code;
  std::string text;
  bool operator==(const Outcome&) const = default;
};
inline std::ostream& operator<<(std::ostream& stream, const Outcome& outcome) {
  return stream << "0x" << std::hex << outcome.code << std::dec << " \"" << outcome.text << '"';
}

inline std::string lastErrorText() {
  size_t size = 0;
  OxGetLastError(nullptr, nullptr, &size);
  std::string text(size, '\0');
  OxGetLastError(nullptr, text.data(), &size);
  text.resize(size - 1);
  return text;
}

// The last error must carry the code that was returned.
inline Outcome outcome(uint32_t result) {
  if (result == 0) return {0, ""};
  uint32_t code = 0;
  OxGetLastError(&code, nullptr, nullptr);
  EXPECT_EQ(code, result);
  return {result, lastErrorText()};
}
inline Outcome succeeds() { return {0, ""}; }
inline Outcome fails(uint32_t code, const char* text) { return {code, text}; }

#define EXPECT_OK(call) EXPECT_EQ(outcome(call), succeeds())
#define ASSERT_OK(call) ASSERT_EQ(outcome(call), succeeds())
#define EXPECT_FAILS(call, code, text) EXPECT_EQ(outcome(call), fails(code, text))

// No number: NaN. Streams and std::stod would read it as the locale has it.
inline double numberIn(std::string_view text) {
  double number = 0;
  const auto read = std::from_chars(text.data(), text.data() + text.size(), number);
  return read.ec == std::errc() && read.ptr == text.data() + text.size() ? number : std::nan("");
}

// The text that a call hands out: asks for the size first, then for the text.
template <class Call>
std::string textOf(Call&& call) {
  size_t size = 0;
  EXPECT_OK(call(nullptr, size));
  std::string text(size, '?');
  EXPECT_OK(call(text.data(), size));
  EXPECT_EQ(text.back(), '\0');
  text.pop_back();
  return text;
}

// A description with the nodes given, a category "Root" with the features given, and the port "Device".
inline std::string description(const std::string& nodes, const std::string& features = "") {
  return R"(<RegisterDescription ModelName="Model" VendorName="Vendor" ToolTip="A camera" StandardNameSpace="GEV"
    SchemaMajorVersion="1" SchemaMinorVersion="1" SchemaSubMinorVersion="7" MajorVersion="4" MinorVersion="5"
    SubMinorVersion="6" ProductGuid="11111111-2222-3333-4444-555555555555"
    VersionGuid="66666666-7777-8888-9999-AAAAAAAAAAAA" xmlns="http://www.genicam.org/GenApi/Version_1_1">
    <Category Name="Root">)" +
         features + "</Category>\n" + nodes + "<Port Name=\"Device\"/></RegisterDescription>";
}

// A register of the byte array: its element, its address, and more elements.
inline std::string registerNode(const std::string& element, const std::string& name, int address, int length,
                                const std::string& more = "") {
  return "<" + element + " Name=\"" + name + "\"><Address>" + std::to_string(address) + "</Address><Length>" +
         std::to_string(length) + "</Length><AccessMode>RW</AccessMode><pPort>Device</pPort>" + more + "</" + element +
         ">\n";
}

inline std::string integerRegister(const std::string& name, int address, const std::string& more = "") {
  return registerNode("IntReg", name, address, 4, more + "<Sign>Signed</Sign><Endianess>LittleEndian</Endianess>");
}

template <class Handle>
void release(Handle handle) {
  OxIfaceContainerReleaseUseCounter(reinterpret_cast<OxHandle>(handle));
}

// A device of plain memory whose accesses are counted, fail on demand and may be watched.
class Device {
 public:
  Device() { EXPECT_OK(CreateNodeMap(map)); }
  // An access beyond the bytes is refused.
  explicit Device(const std::string& nodes, const std::string& features = "", size_t bytes = 0x10000) : memory(bytes) {
    EXPECT_OK(CreateNodeMap(map));
    load(description(nodes, features));
    connect();
  }
  ~Device() {
    for (NODE handle : handles_) release(handle);
    release(map);
  }
  Device(const Device&) = delete;
  Device& operator=(const Device&) = delete;

  void load(const std::string& xml) { ASSERT_OK(NMLoadXMLString(map, xml.c_str())); }
  void connect() { ASSERT_OK(NMConnectPort(map, read, write, nullptr, this)); }

  // Released with the device.
  NODE node(const char* name) {
    NODE handle = nullptr;
    EXPECT_OK(NMGetNode(map, name, handle)) << name;
    handles_.push_back(handle);
    return handle;
  }

  // The value of an integer feature, or -1 when it cannot be read.
  int64_t value(const char* name) {
    int64_t result = -1;
    NGetAsInteger(node(name), &result);
    return result;
  }
  uint32_t set(const char* name, const char* value) { return NSetAsString(node(name), value); }
  std::string get(const char* name) {
    const NODE found = node(name);
    return textOf([&](char* buffer, size_t& size) { return NGetAsString(found, buffer, size); });
  }

  int64_t integerAt(size_t address) const {
    int32_t value = 0;
    std::memcpy(&value, &memory.at(address), sizeof value);
    return value;
  }
  void setInteger(size_t address, int32_t value) { std::memcpy(&memory.at(address), &value, sizeof value); }

  NODEMAP map = nullptr;
  std::vector<uint8_t> memory = std::vector<uint8_t>(256);
  int64_t accesses = 0;       // how often the port was asked
  int reads = 0, writes = 0;  // those carried out
  int64_t failingAccess = 0;  // the access with this number, counted from 1, fails with "port broken"
  // Called after each access that was carried out; may change the memory.
  std::function<void(int64_t address, bool isWrite)> after;

 private:
  template <class Copy>
  int access(int64_t address, int64_t length, bool isWrite, Copy copy) {
    if (++accesses == failingAccess) {
      OxSetLastError(OXGENAPI_E_ACCESS_DENIED, "port broken");
      return static_cast<int>(OXGENAPI_E_ACCESS_DENIED);
    }
    if (address < 0 || length < 0 || address + length > static_cast<int64_t>(memory.size()))
      return static_cast<int>(OXGENAPI_E_ACCESS_DENIED);
    ++(isWrite ? writes : reads);
    copy(memory.data() + address, static_cast<size_t>(length));
    if (after) after(address, isWrite);
    return 0;
  }
  static int read(void* buffer, int64_t address, int64_t length, void* self) {
    return static_cast<Device*>(self)->access(
        address, length, false, [&](const uint8_t* place, size_t bytes) { std::memcpy(buffer, place, bytes); });
  }
  static int write(const void* buffer, int64_t address, int64_t length, void* self) {
    return static_cast<Device*>(self)->access(address, length, true,
                                              [&](uint8_t* place, size_t bytes) { std::memcpy(place, buffer, bytes); });
  }

  std::vector<NODE> handles_;
};

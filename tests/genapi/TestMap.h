// A node map from a snippet of a description, over a port of plain bytes that counts what is asked of it.
#pragma once
#include <GenApi/GenApi.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

using namespace GENAPI_NAMESPACE;
using namespace GENICAM_NAMESPACE;

// Memory behind a port. Hooks run before the bytes move: they may throw, or use the node map; written() runs after
// them.
class BytePort : public CPortImpl {
 public:
  using Access = std::pair<int64_t, int64_t>;  // address, length
  explicit BytePort(size_t bytes = 4096) : memory(bytes) {}

  EAccessMode GetAccessMode() const override { return mode; }
  void Read(void* buffer, int64_t address, int64_t length) override {
    begin(reads, onRead, address, length);
    std::memcpy(buffer, at(address, length), static_cast<size_t>(length));
  }
  void Write(const void* buffer, int64_t address, int64_t length) override {
    begin(writes, onWrite, address, length);
    std::memcpy(at(address, length), buffer, static_cast<size_t>(length));
    written(address);
  }

  static int total(const std::map<Access, int>& accesses) {
    int sum = 0;
    for (const auto& [access, count] : accesses) sum += count;
    return sum;
  }
  // "2r1w" and counting starts anew.
  std::string counts() {
    const std::string text = std::to_string(total(reads)) + "r" + std::to_string(total(writes)) + "w";
    reads.clear();
    writes.clear();
    return text;
  }
  void poke(size_t address, std::vector<uint8_t> bytes) {
    std::copy(bytes.begin(), bytes.end(), memory.begin() + static_cast<ptrdiff_t>(address));
  }
  std::vector<uint8_t> peek(size_t address, size_t length) const {
    const auto first = memory.begin() + static_cast<ptrdiff_t>(address);
    return {first, first + static_cast<ptrdiff_t>(length)};
  }
  uint32_t word(size_t address) const {
    uint32_t value;
    std::memcpy(&value, &memory.at(address), sizeof(value));
    return value;
  }
  void setWord(size_t address, uint32_t value) { std::memcpy(&memory.at(address), &value, sizeof(value)); }

  std::vector<uint8_t> memory;
  std::map<Access, int> reads, writes;
  int accesses = 0;
  int failAt = 0;  // the number of the access that fails, from 1; 0 for none
  EAccessMode mode = RW;
  std::function<void(int64_t address, int64_t length)> onRead, onWrite;

 protected:
  virtual void written(int64_t) {}

 private:
  using Hook = std::function<void(int64_t address, int64_t length)>;
  void begin(std::map<Access, int>& counts, const Hook& hook, int64_t address, int64_t length) {
    ++counts[{address, length}];
    if (++accesses == failAt) throw TIMEOUT_EXCEPTION("the line is dead");
    if (hook) hook(address, length);
  }
  uint8_t* at(int64_t address, int64_t length) {
    if (address < 0 || address > static_cast<int64_t>(memory.size()) - length)
      throw ACCESS_EXCEPTION("the device has no bytes at %ld", static_cast<long>(address));
    return memory.data() + address;
  }
};

// A register at a fixed address of the port "Device"; RW unless `more` names another AccessMode.
inline std::string reg(const std::string& type, const std::string& name, int address, int length,
                       const std::string& more = "") {
  const bool hasMode = more.find("<AccessMode>") != std::string::npos;
  return "<" + type + " Name=\"" + name + "\"><Address>" + std::to_string(address) + "</Address><Length>" +
         std::to_string(length) + "</Length>" + (hasMode ? "" : "<AccessMode>RW</AccessMode>") +
         "<pPort>Device</pPort>" + more + "</" + type + ">";
}

// "<pValue>X</pValue>" from ("pValue", "X").
inline std::string tag(const std::string& element, const std::string& text) {
  return "<" + element + ">" + text + "</" + element + ">";
}

// An Integer that holds its value.
inline std::string held(const std::string& name, int64_t value = 0, const std::string& more = "") {
  return "<Integer Name='" + name + "'>" + tag("Value", std::to_string(value)) + more + "</Integer>";
}
// A node over another one.
inline std::string over(const std::string& name, const std::string& source, const std::string& more = "",
                        const std::string& type = "Integer") {
  return "<" + type + " Name='" + name + "'>" + tag("pValue", source) + more + "</" + type + ">";
}
// An IntSwissKnife over one variable X.
inline std::string knife(const std::string& name, const std::string& x, const std::string& formula = "X") {
  return "<IntSwissKnife Name='" + name + "'><pVariable Name='X'>" + x + "</pVariable>" + tag("Formula", formula) +
         "</IntSwissKnife>";
}

// `nodes` with the root element of schema 1.1 or 1.0 around them, and a port "Device" unless they bring one.
inline std::string description(const std::string& nodes, int minorVersion = 1) {
  const std::string minor = std::to_string(minorVersion);
  const bool hasPort = nodes.find("<Port Name=\"Device\"") != std::string::npos;
  return "<?xml version=\"1.0\"?><RegisterDescription ModelName=\"Model\" VendorName=\"Vendor\" ToolTip=\"\" "
         "StandardNameSpace=\"None\" SchemaMajorVersion=\"1\" SchemaMinorVersion=\"" +
         minor +
         "\" SchemaSubMinorVersion=\"0\" MajorVersion=\"1\" MinorVersion=\"2\" SubMinorVersion=\"3\" "
         "ProductGuid=\"1F3C6A72-7842-4edd-9130-E2E90A2058BA\" VersionGuid=\"7645D2A1-A41E-4ac6-B486-1531FB7BECE6\" "
         "xmlns=\"http://www.genicam.org/GenApi/Version_1_" +
         minor + "\">" + nodes + (hasPort ? "" : "<Port Name=\"Device\"/>") + "</RegisterDescription>";
}

struct TestMap {
  explicit TestMap(const std::string& nodes, int minorVersion = 1)
      : map(CNodeMapFactory(gcstring(description(nodes, minorVersion).c_str())).CreateNodeMap("Device")) {
    map->Connect(&port);
  }
  ~TestMap() { end(); }
  TestMap(const TestMap&) = delete;
  TestMap& operator=(const TestMap&) = delete;
  void end() {
    if (map) dynamic_cast<IDestroy*>(std::exchange(map, nullptr))->Destroy();
  }

  INode* node(const std::string& name) const {
    INode* found = map->GetNode(name.c_str());
    if (!found) ADD_FAILURE() << "no node named " << name;
    return found;
  }
  CIntegerPtr integer(const std::string& name) const { return node(name); }
  CFloatPtr real(const std::string& name) const { return node(name); }
  CBooleanPtr boolean(const std::string& name) const { return node(name); }
  CCommandPtr command(const std::string& name) const { return node(name); }
  CEnumerationPtr enumeration(const std::string& name) const { return node(name); }
  CStringPtr text(const std::string& name) const { return node(name); }
  CRegisterPtr bytes(const std::string& name) const { return node(name); }
  CValuePtr value(const std::string& name) const { return node(name); }
  EAccessMode mode(const std::string& name) const { return node(name)->GetAccessMode(); }

  BytePort port;
  INodeMap* map;
};

// What the exception of that class says; the test fails when nothing or something else is thrown.
template <class Exception, class Action>
std::string refusal(Action&& action) {
  try {
    action();
    ADD_FAILURE() << "nothing was thrown";
  } catch (const Exception& refused) {
    return refused.what();
  } catch (const std::exception& other) {
    ADD_FAILURE() << "another class was thrown: " << other.what();
  }
  return "";
}

// A node map from the few lines of XML that a test is about, and what tests watch it with.
#pragma once
#include <Base/GCException.h>
#include <GenApi/GenApi.h>
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <vector>

// Wraps nodes into a register description.
inline std::string description(const std::string& nodes) {
  return R"(<RegisterDescription ModelName="Test" VendorName="Tests" StandardNameSpace="None" SchemaMajorVersion="1"
    SchemaMinorVersion="1" SchemaSubMinorVersion="0" MajorVersion="1" MinorVersion="0" SubMinorVersion="0"
    ProductGuid="11111111-1111-1111-1111-111111111111" VersionGuid="22222222-2222-2222-2222-222222222222"
    xmlns="http://www.genicam.org/GenApi/Version_1_1">)" +
         nodes + "</RegisterDescription>";
}

class TestNodeMap {
 public:
  explicit TestNodeMap(const std::string& nodes)
      : map_(GENAPI_NAMESPACE::CNodeMapFactory(description(nodes).c_str()).CreateNodeMap()) {}
  ~TestNodeMap() { end(); }
  TestNodeMap(const TestNodeMap&) = delete;
  TestNodeMap& operator=(const TestNodeMap&) = delete;
  void end() {
    if (map_) dynamic_cast<GENAPI_NAMESPACE::IDestroy*>(map_)->Destroy();
    map_ = nullptr;
  }

  GENAPI_NAMESPACE::INodeMap* operator->() const { return map_; }
  GENAPI_NAMESPACE::INodeMap* get() const { return map_; }
  template <typename T>
  T& node(const char* name) const {
    T* found = dynamic_cast<T*>(map_->GetNode(name));
    if (!found) throw std::runtime_error(std::string("no such node: ") + name);
    return *found;
  }
  int64_t integer(const char* name) const { return node<GENAPI_NAMESPACE::IInteger>(name).GetValue(); }
  GENAPI_NAMESPACE::EAccessMode mode(const char* name) const {
    return node<GENAPI_NAMESPACE::INode>(name).GetAccessMode();
  }

  // Counts the node's callbacks inside the lock from now on.
  int& counted(const char* name) {
    counters_.push_back(std::make_unique<int>(0));
    int* counter = counters_.back().get();
    GENAPI_NAMESPACE::Register(map_->GetNode(name), [counter](GENAPI_NAMESPACE::INode*) { ++*counter; });
    return *counter;
  }

 private:
  GENAPI_NAMESPACE::INodeMap* map_;
  std::vector<std::unique_ptr<int>> counters_;
};

// A device of plain memory.
class MemoryPort : public GENAPI_NAMESPACE::CPortImpl {
 public:
  explicit MemoryPort(size_t bytes = 256) : memory(bytes) {}
  GENAPI_NAMESPACE::EAccessMode GetAccessMode() const override { return GENAPI_NAMESPACE::RW; }
  void Read(void* pBuffer, int64_t Address, int64_t Length) override {
    access();
    std::memcpy(pBuffer, &memory.at(static_cast<size_t>(Address)), static_cast<size_t>(Length));
  }
  void Write(const void* pBuffer, int64_t Address, int64_t Length) override {
    access();
    std::memcpy(&memory.at(static_cast<size_t>(Address)), pBuffer, static_cast<size_t>(Length));
    written(Address);
  }
  uint32_t word(size_t address) const {
    uint32_t value;
    std::memcpy(&value, &memory.at(address), sizeof(value));
    return value;
  }
  void setWord(size_t address, uint32_t value) { std::memcpy(&memory.at(address), &value, sizeof(value)); }

  std::vector<uint8_t> memory;
  int accesses = 0;
  int failAt = 0;  // the number of the access that fails, from 1; 0 for none

 protected:
  virtual void written(int64_t) {}

 private:
  void access() {
    if (++accesses == failAt) throw TIMEOUT_EXCEPTION("the line is dead");
  }
};

// The text of the exception of that class, or a failure of the test.
template <typename Exception, typename Call>
std::string thrown(Call call) {
  try {
    call();
  } catch (const Exception& e) {
    return e.what();
  } catch (const std::exception& e) {
    ADD_FAILURE() << "another exception: " << e.what();
    return "";
  }
  ADD_FAILURE() << "no exception";
  return "";
}

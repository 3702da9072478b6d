// The flat interface as C++ objects: a handle is released when its object ends, a failing call throws Failure with the
// library's code and text and the feature's name.
#pragma once

#include <OxGenApi/OxGenApi.h>
#include <OxSimulation/RegisterDevice.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tool {

class Node {
 public:
  Node(NODE handle, std::string name);
  Node(Node&& other) noexcept;
  Node& operator=(Node&&) = delete;
  ~Node();

  const std::string& name() const { return name_; }
  NODE handle() const { return handle_; }
  TNodeType type() const { return type_; }

  bool boolean() const;
  int64_t integer() const;
  double real() const;
  std::string text() const;
  void set(const std::string& text) const;
  void execute() const;

  bool infoBoolean(TNodeInfo info) const;
  int64_t infoInteger(TNodeInfo info) const;
  double infoReal(TNodeInfo info) const;
  std::string infoText(TNodeInfo info) const;
  // Access mode as 0 not implemented, 1 not available, 2 read only, 3 write only, 4 read and write.
  int64_t access() const { return infoInteger(NI_AccessMode); }
  bool readable() const;
  bool writable() const;

  std::vector<std::string> list(TNodeList relation) const;

  // Port nodes: bytes of the device behind them.
  std::vector<std::byte> memory(int64_t address, int64_t length) const;
  void setMemory(int64_t address, std::span<const std::byte> bytes) const;
  // Register nodes: their whole contents.
  std::vector<std::byte> registerData() const;

  // `callback` runs inside whatever call changed the node; it lives as long as this object.
  void onUpdate(std::function<void()> callback);

 private:
  NODE handle_;
  std::string name_;
  TNodeType type_;
  std::unique_ptr<std::function<void()>> onUpdate_;
  TCallbackHandle updateHandle_ = 0;
};

class NodeMap {
 public:
  NodeMap();
  NodeMap(const NodeMap&) = delete;
  NodeMap& operator=(const NodeMap&) = delete;
  ~NodeMap();

  NODEMAP handle() const { return handle_; }

  void loadFile(const std::string& path);
  void loadText(const std::string& xml);
  // Register accesses through the named port go to `device`, which must outlive the map.
  void connect(const std::string& port, ox::simulation::RegisterDevice& device);

  Node node(const std::string& name) const;
  uint32_t nodeCount() const;
  std::string nodeName(uint32_t index) const;
  // Names of all nodes in the map's own order.
  std::vector<std::string> nodeNames() const;

  std::string infoText(TNodeMapInfo info) const;
  int64_t infoInteger(TNodeMapInfo info) const;
  void poll(int32_t elapsedMs) const;

 private:
  NODEMAP handle_;
};

}  // namespace tool

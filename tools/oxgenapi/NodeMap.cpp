#include "NodeMap.h"

#include <OxBase/OxBase.h>

#include <array>
#include <cstring>

#include "Failure.h"

namespace tool {
namespace {

// Runs a call that returns text into a buffer. Most texts fit the first buffer, so that a value is read from the device
// once; a text that fills it may have been cut and is asked for again.
template <class Call>
std::string readText(std::string_view feature, Call call) {
  std::array<char, 1024> buffer;
  size_t size = buffer.size();
  check(call(buffer.data(), size), feature);
  const size_t length = strnlen(buffer.data(), buffer.size());
  if (length + 1 < buffer.size()) {
    return {buffer.data(), length};
  }
  check(call(nullptr, size), feature);
  std::string text(size, '\0');
  check(call(text.data(), size), feature);
  text.resize(std::strlen(text.c_str()));
  return text;
}

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

void nodeUpdated(NODE, void* callback) {
  (*static_cast<std::function<void()>*>(callback))();
}

}  // namespace

Node::Node(NODE handle, std::string name) : handle_(handle), name_(std::move(name)), type_(NT_Invalid) {
  check(NType(handle_, &type_), name_);
}

Node::Node(Node&& other) noexcept
    : handle_(other.handle_), name_(std::move(other.name_)), type_(other.type_), onUpdate_(std::move(other.onUpdate_)) {
  other.handle_ = nullptr;
}

Node::~Node() {
  if (onUpdate_) {
    NDeregisterUpdate(handle_, updateHandle_);
  }
  OxIfaceContainerReleaseUseCounter(handle_);
}

bool Node::boolean() const {
  bool value = false;
  check(NGetAsBoolean(handle_, &value), name_);
  return value;
}

int64_t Node::integer() const {
  int64_t value = 0;
  check(NGetAsInteger(handle_, &value), name_);
  return value;
}

double Node::real() const {
  double value = 0;
  check(NGetAsFloat(handle_, &value), name_);
  return value;
}

std::string Node::text() const {
  return readText(name_, [&](char* buffer, size_t& size) { return NGetAsString(handle_, buffer, size); });
}

void Node::set(const std::string& text) const {
  check(NSetAsString(handle_, text.c_str()), name_);
}

void Node::execute() const {
  check(NSetAsBoolean(handle_, true), name_);
}

bool Node::infoBoolean(TNodeInfo info) const {
  bool value = false;
  check(NInfoAsBoolean(handle_, info, &value), name_);
  return value;
}

int64_t Node::infoInteger(TNodeInfo info) const {
  int64_t value = 0;
  check(NInfoAsInteger(handle_, info, &value), name_);
  return value;
}

double Node::infoReal(TNodeInfo info) const {
  double value = 0;
  check(NInfoAsFloat(handle_, info, &value), name_);
  return value;
}

std::string Node::infoText(TNodeInfo info) const {
  return readText(name_, [&](char* buffer, size_t& size) { return NInfoAsString(handle_, info, buffer, size); });
}

bool Node::readable() const {
  const int64_t mode = access();
  return mode == AM_ReadOnly || mode == AM_ReadWrite;
}

bool Node::writable() const {
  const int64_t mode = access();
  return mode == AM_WriteOnly || mode == AM_ReadWrite;
}

std::vector<std::string> Node::list(TNodeList relation) const {
  int64_t count = 0;
  check(NListCount(handle_, relation, &count), name_);
  std::vector<std::string> names;
  names.reserve(static_cast<size_t>(count));
  for (int64_t index = 0; index < count; ++index) {
    names.push_back(
        readText(name_, [&](char* buffer, size_t& size) { return NList(handle_, relation, index, buffer, size); }));
  }
  return names;
}

std::vector<std::byte> Node::memory(int64_t address, int64_t length) const {
  std::vector<std::byte> bytes(static_cast<size_t>(length));
  check(NGetAsMemory(handle_, address, bytes.data(), length), name_);
  return bytes;
}

void Node::setMemory(int64_t address, std::span<const std::byte> bytes) const {
  check(NSetAsMemory(handle_, address, bytes.data(), static_cast<int64_t>(bytes.size())), name_);
}

std::vector<std::byte> Node::registerData() const {
  int64_t length = 0;
  check(NGetAsRegisterData(handle_, nullptr, &length), name_);
  std::vector<std::byte> bytes(static_cast<size_t>(length));
  check(NGetAsRegisterData(handle_, bytes.data(), &length), name_);
  return bytes;
}

void Node::onUpdate(std::function<void()> callback) {
  auto held = std::make_unique<std::function<void()>>(std::move(callback));
  check(NRegisterUpdate(handle_, nodeUpdated, held.get(), &updateHandle_), name_);
  onUpdate_ = std::move(held);
}

NodeMap::NodeMap() : handle_(nullptr) {
  check(CreateNodeMap(handle_));
}

NodeMap::~NodeMap() {
  OxIfaceContainerReleaseUseCounter(handle_);
}

void NodeMap::loadFile(const std::string& path) {
  check(NMLoadXMLFile(handle_, path.c_str()));
}

void NodeMap::loadText(const std::string& xml) {
  check(NMLoadXMLString(handle_, xml.c_str()));
}

void NodeMap::connect(const std::string& port, RegisterDevice& device) {
  check(NMConnectPortEx(handle_, readMemory, writeMemory, portAccess, &device, port.c_str()), port);
}

Node NodeMap::node(const std::string& name) const {
  NODE handle = nullptr;
  check(NMGetNode(handle_, name.c_str(), handle), name);
  return {handle, name};
}

uint32_t NodeMap::nodeCount() const {
  uint32_t count = 0;
  check(NMNodeCount(handle_, count));
  return count;
}

std::string NodeMap::nodeName(uint32_t index) const {
  return readText({}, [&](char* buffer, size_t& size) { return NMListNode(handle_, index, buffer, size); });
}

std::vector<std::string> NodeMap::nodeNames() const {
  std::vector<std::string> names;
  const uint32_t count = nodeCount();
  names.reserve(count);
  for (uint32_t index = 0; index < count; ++index) {
    names.push_back(nodeName(index));
  }
  return names;
}

std::string NodeMap::infoText(TNodeMapInfo info) const {
  return readText({}, [&](char* buffer, size_t& size) { return NMInfoAsString(handle_, info, buffer, size); });
}

int64_t NodeMap::infoInteger(TNodeMapInfo info) const {
  int64_t value = 0;
  check(NMInfoAsInteger(handle_, info, &value));
  return value;
}

void NodeMap::poll(int32_t elapsedMs) const {
  check(NMPollNodes(handle_, elapsedMs));
}

}  // namespace tool

#include "nodes/PortNode.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "GenApi/ChunkPort.h"

namespace GENAPI_NAMESPACE {

using GENICAM_NAMESPACE::gcstring;

namespace {

constexpr int64_t kGroupBytes = 4;

void swapGroups(uint8_t* bytes, int64_t count) {
  for (int64_t i = 0; i < count; i += kGroupBytes) std::reverse(bytes + i, bytes + i + kGroupBytes);
}

}  // namespace

// The implementation is asked for its access mode each time.
PortNode::PortNode(Device& device, NodeIndex index) : NodeBase(device, index, Evaluation::Stay::Never) {
  const Property* swap = find(Element::SwapEndianess);
  swaps_ = swap && swap->word == Yes;
}

PortNode::~PortNode() {
  if (auto* construct = dynamic_cast<IPortConstruct*>(implementation_)) construct->SetPortImpl(nullptr);
}

void PortNode::connect(IPort* implementation) {
  IPort* const former = std::exchange(implementation_, implementation);
  if (former && former != implementation) {
    if (auto* construct = dynamic_cast<IPortConstruct*>(former)) construct->SetPortImpl(nullptr);
  }
  if (auto* construct = dynamic_cast<IPortConstruct*>(implementation)) construct->SetPortImpl(this);
  device().dispatch.portChanged(index(), true);
  device().evaluation.renew();
}

void PortNode::SetPortImpl(IPort* pPort) {
  device().dispatch.operate(index(), [&] { connect(pPort); });
}

IPort& PortNode::connected(int64_t bytes) const {
  if (!implementation_) refuse<AccessException>("port '{}' is not connected", name());
  if (bytes < 0) refuse<InvalidArgumentException>("{}: length {} is negative", name(), bytes);
  return *implementation_;
}

void PortNode::Read(void* pBuffer, int64_t Address, int64_t Length) {
  device().dispatch.operate(index(), [&] {
    IPort& port = connected(Length);
    if (Length > 0) port.Read(pBuffer, Address, Length);
  });
}

void PortNode::Write(const void* pBuffer, int64_t Address, int64_t Length) {
  device().dispatch.operate(index(), [&] {
    IPort& port = connected(Length);
    if (Length > 0) port.Write(pBuffer, Address, Length);
  });
}

void PortNode::requireWholeGroups(int64_t address, int64_t bytes) const {
  if (address % kGroupBytes == 0 && bytes % kGroupBytes == 0) return;
  refuse<RuntimeException>("{}: SwapEndianess needs addresses and lengths in multiples of 4, not 0x{:x} and {}", name(),
                           static_cast<uint64_t>(address), bytes);
}

void PortNode::readRegister(uint8_t* buffer, int64_t address, int64_t bytes) {
  IPort& port = connected(bytes);
  if (swaps_) requireWholeGroups(address, bytes);
  port.Read(buffer, address, bytes);
  if (swaps_) swapGroups(buffer, bytes);
}

void PortNode::writeRegister(const uint8_t* buffer, int64_t address, int64_t bytes) {
  IPort& port = connected(bytes);
  if (!swaps_) {
    port.Write(buffer, address, bytes);
    return;
  }
  requireWholeGroups(address, bytes);
  std::vector<uint8_t> swapped(buffer, buffer + bytes);
  swapGroups(swapped.data(), bytes);
  port.Write(swapped.data(), address, bytes);
}

int64_t PortNode::fromStart(int64_t address) {
  auto* chunk = dynamic_cast<CChunkPort*>(implementation_);
  if (address >= 0 || !chunk || !IsAvailable(chunk->GetAccessMode())) return address;
  int64_t length = 0;
  chunk->Read(&length, CHUNK_LENGTH_REGISTER, sizeof(length));
  return length + address;
}

EAccessMode PortNode::typeMode() const {
  if (implementation_) return implementation_->GetAccessMode();
  return find(Element::ChunkID) || find(Element::pChunkID) ? NA : NI;
}

gcstring PortNode::GetChunkID() const {
  if (const Property* given = find(Element::ChunkID)) return gcstring(given->value());
  const NodeBase* link = linked(Element::pChunkID);
  if (!link) return {};
  return device().dispatch.operate(index(), [&] {
    link->requireReadable();
    return gcstring(link->readText({}));
  });
}

EYesNo PortNode::CacheChunkData() const {
  const Property* given = find(Element::CacheChunkData);
  return given && given->word == Yes ? Yes : No;
}

}  // namespace GENAPI_NAMESPACE

#include "GenApi/ChunkPort.h"

#include <cstring>

#include "Base/GCString.h"
#include "GenApi/IChunkPort.h"
#include "GenApi/INode.h"
#include "GenApi/INodeMap.h"
#include "nodes/PortNode.h"
#include "ports/ByteWindow.h"
#include "ports/ChunkPortState.h"
#include "ports/SingleNodeChange.h"
#include "text/Refusal.h"

namespace GENAPI_NAMESPACE {

using GENICAM_NAMESPACE::gcstring;

namespace {

bool fitsAddressSpace(const uint8_t* base, int64_t offset, int64_t length) {
  const auto start = reinterpret_cast<uintptr_t>(base);
  const auto reach = static_cast<uint64_t>(offset) + static_cast<uint64_t>(length);
  return reach <= UINTPTR_MAX - start;
}

}  // namespace

void CChunkPort::State::readNodeFacts(const PortNode* port) {
  mayCopy = port && port->CacheChunkData() == Yes;
  idIsFixed = port && port->hasFixedChunkId();
  id.clear();
  idText.clear();
  if (!port || !idIsFixed) return;
  idText = port->GetChunkID().c_str();
  id.parse(idText);
}

void CChunkPort::State::askDeviceForId() {
  id.clear();
  if (!binding.node()) return;
  auto* port = dynamic_cast<IChunkPort*>(binding.node());
  if (!port) return;
  try {
    idText = port->GetChunkID().c_str();
    id.parse(idText);
  } catch (const std::bad_alloc&) {
    throw;
  } catch (...) {  // an ID that the device does not tell is no ID: the port matches nothing
  }
}

std::string CChunkPort::State::name() const {
  return binding.node() ? binding.node()->GetName().c_str() : "chunk port";
}

void CChunkPort::State::checkBase(const uint8_t* base) const {
  if (!base) refuse<InvalidArgumentException>("{}: the buffer's base address is null", name());
  if (!fitsAddressSpace(base, offset, length))
    refuse<InvalidArgumentException>("{}: {} bytes at offset {} reach past the end of the address space", name(),
                                     length, offset);
}

void CChunkPort::State::rebase(uint8_t* base) noexcept {
  start = base + offset;
  if (hasCopy) std::memcpy(copy.data(), start, static_cast<size_t>(length));
}

CChunkPort::CChunkPort(IPort* pPortNode) : state_(std::make_unique<State>()) {
  if (pPortNode && !AttachPort(pPortNode))
    refuse<InvalidArgumentException>("chunk port: the node given is no port node of a node map");
}

CChunkPort::~CChunkPort() {
  // The binding disconnects while this object is still a port: the map calls SetPortImpl on it.
  state_->binding.release();
}

bool CChunkPort::AttachPort(IPort* pPortNode) {
  auto* node = dynamic_cast<INode*>(pPortNode);
  if (!node || !dynamic_cast<ILiveData*>(node->GetNodeMap()) || !dynamic_cast<IPortConstruct*>(pPortNode)) return false;
  const bool bound = state_->binding.bind(node, this);
  state_->readNodeFacts(dynamic_cast<PortNode*>(state_->binding.node()));
  return bound;
}

void CChunkPort::DetachPort() {
  state_->binding.release();
  state_->readNodeFacts(nullptr);
}

void CChunkPort::AttachChunk(uint8_t* pBaseAddress, int64_t ChunkOffset, int64_t Length, bool Cache) {
  State& state = *state_;
  if (!pBaseAddress) refuse<InvalidArgumentException>("{}: the chunk's base address is null", state.name());
  if (ChunkOffset < 0)
    refuse<InvalidArgumentException>("{}: the chunk offset {} is negative", state.name(), ChunkOffset);
  if (Length < 1) refuse<InvalidArgumentException>("{}: the chunk length {} must be at least 1", state.name(), Length);
  if (!fitsAddressSpace(pBaseAddress, ChunkOffset, Length))
    refuse<InvalidArgumentException>("{}: {} bytes at offset {} reach past the end of the address space", state.name(),
                                     Length, ChunkOffset);
  BoundLock lock(state.binding.map());
  const bool wasAttached = state.start != nullptr;
  uint8_t* start = pBaseAddress + ChunkOffset;
  const bool copies = Cache && state.mayCopy && (state.copyLimit < 0 || Length <= state.copyLimit);
  if (copies)
    state.copy.assign(start, start + Length);  // grows only past the longest chunk so far
  else
    state.copy.clear();
  state.hasCopy = copies;
  state.start = start;
  state.offset = ChunkOffset;
  state.length = Length;
  if (state.binding.live()) state.binding.live()->dropPortSilently(state.binding.node(), !wasAttached);
}

void CChunkPort::DetachChunk() {
  State& state = *state_;
  changeNode(state.binding, true, [&state] {
    if (!state.start) return false;
    state.start = nullptr;
    return true;
  });
}

void CChunkPort::UpdateBuffer(uint8_t* pBaseAddress) {
  State& state = *state_;
  if (!pBaseAddress) refuse<InvalidArgumentException>("{}: the buffer's base address is null", state.name());
  changeNode(state.binding, false, [&state, pBaseAddress] {
    if (!state.start) return false;
    state.checkBase(pBaseAddress);
    state.rebase(pBaseAddress);
    return true;
  });
}

void CChunkPort::ClearCache() {
  State& state = *state_;
  BoundLock lock(state.binding.map());
  if (!state.hasCopy) return;
  state.hasCopy = false;
  state.copy = {};
  if (state.binding.live()) state.binding.live()->dropPortSilently(state.binding.node(), true);
}

void CChunkPort::InvalidateNode() {
  if (state_->binding.node()) changeNode(state_->binding, false, [] { return true; });
}

int CChunkPort::GetChunkIDLength() {
  return state_->withId([](const HexId& id) { return id.byteLength(); });
}

bool CChunkPort::CheckChunkID(uint8_t* pChunkID, int Length) {
  return state_->withId([=](const HexId& id) { return id.equals(pChunkID, Length); });
}

bool CChunkPort::CheckChunkID(uint64_t ChunkID) {
  return state_->withId([=](const HexId& id) { return id.equals(ChunkID); });
}

EAccessMode CChunkPort::GetAccessMode() const {
  if (state_->start) return RW;
  return state_->hasCopy ? RO : NA;
}

namespace {

// True when there is nothing to move.
bool checkAccess(const CChunkPort& port, const std::string& name, const void* buffer, int64_t length) {
  if (length < 0) refuse<InvalidArgumentException>("{}: the access length {} is negative", name, length);
  if (!buffer && length > 0) refuse<InvalidArgumentException>("{}: the buffer is null", name);
  if (port.GetAccessMode() == NA) refuse<RuntimeException>("{}: no chunk is attached", name);
  return length == 0;
}

bool isPseudoRegister(int64_t address) {
  return address == CHUNK_BASE_ADDRESS_REGISTER || address == CHUNK_LENGTH_REGISTER;
}

[[noreturn]] void throwOutside(const std::string& path, const std::string& id, int64_t address, int64_t length,
                               int64_t chunkLength) {
  refuse<AccessException>("{}: bytes {}..{} lie outside the chunk {} of {} bytes", path, address,
                          lastByte(address, length), id, chunkLength);
}

}  // namespace

void CChunkPort::Read(void* pBuffer, int64_t Address, int64_t Length) {
  State& state = *state_;
  BoundLock lock(state.binding.map());
  const bool ready = pBuffer && Length > 0 && (state.start || state.hasCopy);
  if (!ready && checkAccess(*this, state.name(), pBuffer, Length)) return;
  const uint8_t* bytes = state.hasCopy ? state.copy.data() : state.start;
  if (isPseudoRegister(Address)) {
    if (Length != static_cast<int64_t>(sizeof(uint64_t)))
      refuse<AccessException>("{}: the register at {} has 8 bytes, not {}", state.name(), Address, Length);
    const uint64_t value = Address == CHUNK_LENGTH_REGISTER
                               ? static_cast<uint64_t>(state.length)
                               : reinterpret_cast<uintptr_t>(state.start ? state.start : bytes);
    std::memcpy(pBuffer, &value, sizeof(value));
    return;
  }
  const int64_t start = startWithin(Address, Length, state.length);
  if (start < 0) throwOutside(state.binding.path(state.name()), state.idText, Address, Length, state.length);
  std::memcpy(pBuffer, bytes + start, static_cast<size_t>(Length));
}

void CChunkPort::Write(const void* pBuffer, int64_t Address, int64_t Length) {
  State& state = *state_;
  BoundLock lock(state.binding.map());
  const bool ready = pBuffer && Length > 0 && state.start;
  if (!ready && checkAccess(*this, state.name(), pBuffer, Length)) return;
  if (!state.start)
    refuse<AccessException>("{}: the chunk {} is detached, its copy is read-only", state.name(), state.idText);
  if (isPseudoRegister(Address)) refuse<AccessException>("{}: the register at {} is read-only", state.name(), Address);
  const int64_t start = startWithin(Address, Length, state.length);
  if (start < 0) throwOutside(state.binding.path(state.name()), state.idText, Address, Length, state.length);
  std::memcpy(state.start + start, pBuffer, static_cast<size_t>(Length));
  if (state.hasCopy) std::memcpy(state.copy.data() + start, pBuffer, static_cast<size_t>(Length));
}

void CChunkPort::SetPortImpl(IPort* pPort) {
  if (state_->binding.connectionChanged(pPort)) state_->readNodeFacts(dynamic_cast<PortNode*>(pPort));
}

EYesNo CChunkPort::GetSwapEndianess() { return No; }

}  // namespace GENAPI_NAMESPACE

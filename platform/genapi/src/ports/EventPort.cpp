#include "GenApi/EventPort.h"

#include "GenApi/INodeMap.h"
#include "ports/ByteWindow.h"
#include "ports/EventPortState.h"
#include "ports/SingleNodeChange.h"
#include "text/Refusal.h"

namespace GENAPI_NAMESPACE {

std::string CEventPort::State::name() const {
  return binding.node() ? binding.node()->GetName().c_str() : "event port";
}

void CEventPort::State::checkPayload(const State* receiver, const uint8_t* bytes, int64_t length) {
  if (length >= 0 && length <= kMaxEventBytes && (bytes || length == 0)) return;
  const std::string name = receiver ? receiver->name() : "event adapter";
  if (length < 0) refuse<InvalidArgumentException>("{}: the event length {} is negative", name, length);
  if (!bytes) refuse<InvalidArgumentException>("{}: the event's data is null", name);
  refuse<InvalidArgumentException>("{}: an event of {} bytes exceeds the limit of {} bytes", name, length,
                                   kMaxEventBytes);
}

CEventPort::CEventPort() : state_(std::make_unique<State>()) {}

CEventPort::CEventPort(INode* pNode) : CEventPort() { AttachNode(pNode); }

CEventPort::~CEventPort() {
  // The binding disconnects while this object is still a port: the map calls SetPortImpl on it.
  state_->binding.release();
}

bool CEventPort::AttachNode(INode* pNode) {
  if (!pNode) refuse<InvalidArgumentException>("event port: the node is null");
  const std::string idText = pNode->GetEventID().c_str();
  if (idText.empty()) refuse<InvalidArgumentException>("{}: the node has no event ID", pNode->GetName());
  const bool isPort = dynamic_cast<IPortConstruct*>(pNode) != nullptr;
  if (!state_->binding.bind(pNode, isPort ? this : nullptr)) return false;
  state_->takeId(idText, isPort);
  return true;
}

void CEventPort::DetachNode() {
  state_->binding.release();
  state_->id.clear();
}

void CEventPort::AttachEvent(uint8_t* pBaseAddress, int64_t Length) {
  State& state = *state_;
  State::checkPayload(&state, pBaseAddress, Length);
  BoundLock lock(state.binding.map());
  const bool isFirst = !state.delivered;
  state.reserve(Length);
  state.store(pBaseAddress, Length);
  if (state.binding.live() && state.isPortNode) state.binding.live()->dropPortSilently(state.binding.node(), isFirst);
}

void CEventPort::DetachEvent() {
  State& state = *state_;
  changeNode(state.binding, true, [&state] {
    if (!state.delivered) return false;
    state.delivered = false;
    state.payload.clear();
    return true;
  });
}

void CEventPort::InvalidateNode() {
  if (state_->binding.node()) state_->binding.node()->InvalidateNode();
}

int CEventPort::GetEventIDLength() { return state_->binding.node() ? state_->id.byteLength() : 0; }

bool CEventPort::CheckEventID(uint8_t* pEventID, int Length) const {
  return state_->binding.node() && state_->id.equals(pEventID, Length);
}

bool CEventPort::CheckEventID(uint64_t EventID) const { return state_->binding.node() && state_->id.equals(EventID); }

EAccessMode CEventPort::GetAccessMode() const { return state_->delivered ? RO : NA; }

void CEventPort::Read(void* pBuffer, int64_t Address, int64_t Length) {
  State& state = *state_;
  if (Length < 0) refuse<InvalidArgumentException>("{}: the access length {} is negative", state.name(), Length);
  if (!pBuffer && Length > 0) refuse<InvalidArgumentException>("{}: the buffer is null", state.name());
  BoundLock lock(state.binding.map());
  if (!state.delivered) refuse<RuntimeException>("{}: no event has been delivered", state.name());
  if (Length == 0) return;
  const auto size = static_cast<int64_t>(state.payload.size());
  const int64_t start = startWithin(Address, Length, size);
  if (start < 0)
    refuse<AccessException>("{}: bytes {}..{} lie outside the event {} of {} bytes", state.binding.path(state.name()),
                            Address, lastByte(Address, Length), state.idText, size);
  std::memcpy(pBuffer, state.payload.data() + start, static_cast<size_t>(Length));
}

void CEventPort::Write(const void*, int64_t, int64_t) {
  refuse<AccessException>("{}: an event's data is read-only", state_->name());
}

void CEventPort::SetPortImpl(IPort* pPort) {
  State& state = *state_;
  if (!state.binding.connectionChanged(pPort)) return;
  state.isPortNode = true;
  state.idText = state.binding.node()->GetEventID().c_str();
  state.id.parse(state.idText);
}

EYesNo CEventPort::GetSwapEndianess() { return No; }

}  // namespace GENAPI_NAMESPACE

// A node with an event ID as the receiver of event messages.
#pragma once
#include <cstdint>
#include <memory>

#include "GenApi/INode.h"
#include "GenApi/IPortConstruct.h"

namespace GENAPI_NAMESPACE {

// The largest payload that a port copies, in bytes: far above any transport's event size, far below harm.
inline constexpr int64_t kMaxEventBytes = int64_t{64} << 20;

// On a Port node it becomes the port's implementation, whose registers read a copy of the last payload (address 0 is
// its first byte; a negative address a means length + a). On any other node it only invalidates.
class CEventPort : public IPortConstruct {
 public:
  CEventPort();
  // As AttachNode.
  explicit CEventPort(INode* pNode);
  // Detaches from the node; never throws.
  ~CEventPort() override;
  CEventPort(const CEventPort&) = delete;
  CEventPort& operator=(const CEventPort&) = delete;

  // Receives for the node; detaches from a former one. True. Throws InvalidArgumentException for null, a node without
  // event ID, or a node of another engine's map.
  bool AttachNode(INode* pNode);
  // Disconnects the node if this port is still its implementation, and forgets it.
  void DetachNode();

  // Copies the payload and drops caches silently: call InvalidateNode after it. Length 0 is an empty payload. Throws
  // InvalidArgumentException (null with bytes, negative length, more than kMaxEventBytes); the former payload stays.
  void AttachEvent(uint8_t* pBaseAddress, int64_t Length);
  // Forgets the payload; fires callbacks if there was one.
  void DetachEvent();
  // Drops the caches of the node, of its registers, and of what depends on them; fires callbacks.
  void InvalidateNode();

  // Bytes of the event ID, (digits + 1) / 2; 0 without a node and for an ID that is not hexadecimal.
  int GetEventIDLength();
  // Compares with the event ID, big end first, leading zeros ignored on both sides.
  bool CheckEventID(uint8_t* pEventID, int Length) const;
  bool CheckEventID(uint64_t EventID) const;

  // NA before the first payload, then RO.
  EAccessMode GetAccessMode() const override;
  // Throws RuntimeException (no payload yet), AccessException (a byte outside the payload), InvalidArgumentException.
  void Read(void* pBuffer, int64_t Address, int64_t Length) override;
  // Always AccessException.
  void Write(const void* pBuffer, int64_t Address, int64_t Length) override;
  // Called by the port node.
  void SetPortImpl(IPort* pPort) override;
  EYesNo GetSwapEndianess() override;

 private:
  friend class CEventAdapter;
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace GENAPI_NAMESPACE

// What an event port holds; the event adapter delivers to all ports of an ID together through it.
#pragma once
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "GenApi/EventPort.h"
#include "ports/HexId.h"
#include "ports/PortBinding.h"

namespace GENAPI_NAMESPACE {

struct CEventPort::State {
  PortBinding binding;
  HexId id;
  std::string idText;            // as the description spells it
  bool isPortNode = false;       // registers read the payload; other nodes are only invalidated
  bool delivered = false;        // a payload, possibly an empty one, is there
  std::vector<uint8_t> payload;  // keeps its capacity from message to message

  std::string name() const;
  // After the node was bound.
  void takeId(std::string_view text, bool ofPortNode) {
    isPortNode = ofPortNode;
    idText = text;
    id.parse(idText);
  }
  // Throws InvalidArgumentException for a payload that cannot be taken; null stands for an adapter.
  static void checkPayload(const State* receiver, const uint8_t* bytes, int64_t length);
  // In two steps, so that delivering to several ports changes all of them or none.
  void reserve(int64_t length) {
    if (isPortNode) payload.reserve(static_cast<size_t>(length));
  }
  void store(const uint8_t* bytes, int64_t length) noexcept {
    delivered = true;
    if (!isPortNode) return;
    payload.resize(static_cast<size_t>(length));
    if (length > 0) std::memcpy(payload.data(), bytes, static_cast<size_t>(length));
  }
};

}  // namespace GENAPI_NAMESPACE

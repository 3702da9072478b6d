// Chunks and events: a buffer with any layout is walked and attached, an event with any payload delivered. What chunk
// and event features then say is what the bytes say, or they refuse.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <span>
#include <vector>

#include "OxBase/OxBase.h"
#include "OxGenApi/OxGenApi.h"
#include "OxSimulation/ChunkLayout.h"
#include "calls/Vocabulary.h"

namespace {

void require(bool holds) {
  if (!holds) std::abort();
}

struct Features {
  Features() {
    require(CreateNodeMap(map) == 0);
    require(NMLoadXMLString(map, calls::smallDescription().c_str()) == 0);
    require(NMGetNode(map, "ChunkGain", gain) == 0 && NMGetNode(map, "ChunkText", text) == 0);
    require(NMGetNode(map, "ChunkKept", kept) == 0 && NMGetNode(map, "EventValue", eventValue) == 0);
    require(NMGetNode(map, "EventText", eventText) == 0);
  }
  ~Features() {
    for (const NODE node : {gain, text, kept, eventValue, eventText}) OxIfaceContainerReleaseUseCounter(node);
    OxIfaceContainerReleaseUseCounter(map);
  }
  Features(const Features&) = delete;
  Features& operator=(const Features&) = delete;
  NODEMAP map{};
  NODE gain{}, text{}, kept{}, eventValue{}, eventText{};
};

// A 32-bit number at the start of the bytes, in the order of the description (little-endian, the default).
void requireNumber(NODE node, const uint8_t* bytes, uint64_t length) {
  int64_t value = 0;
  const bool isRead = NGetAsInteger(node, &value) == OXGENAPI_OK;
  require(isRead == (length >= 4));
  if (!isRead) return;
  uint32_t expected = 0;
  std::memcpy(&expected, bytes, sizeof expected);
  require(static_cast<uint32_t>(value) == expected);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 2) return 0;
  static const Features keeper;  // the description stays parsed
  const Features features;
  const size_t eventSize = data[0] % size;
  const std::vector<uint8_t> payload(data + 1, data + 1 + (eventSize < size - 1 ? eventSize : size - 1));
  std::vector<uint8_t> buffer(data + 1 + payload.size(), data + size);

  const TEventData event{0x9001, payload.data(), payload.size()};
  const uint32_t delivered = NMDeliverEvent(features.map, &event);
  require(delivered == (payload.empty() ? OXGENAPI_E_INVALID_ARGUMENT : OXGENAPI_OK));
  if (delivered == OXGENAPI_OK) requireNumber(features.eventValue, payload.data(), payload.size());
  char text[32];
  size_t room = sizeof text;
  const bool hasText = NGetAsString(features.eventText, text, room) == OXGENAPI_OK;
  require(hasText == (payload.size() >= 12));

  const ox::simulation::ChunkLayout layout(buffer);
  std::vector<TChunkData> chunks;
  for (const ox::simulation::ChunkEntry& entry : layout) {
    chunks.push_back({entry.id, buffer.data(), entry.offset, entry.length});
    require(entry.offset >= 0 && entry.length >= 0 &&
            entry.offset + entry.length <= static_cast<int64_t>(buffer.size()));
  }
  const TChunkData* last = nullptr;  // the one that the port has in the end
  uint32_t expected = OXGENAPI_OK;
  for (const TChunkData& chunk : chunks) {
    if (chunk.ChunkLength == 0) {
      expected = OXGENAPI_E_INVALID_ARGUMENT;
      break;
    }
    if (chunk.ChunkID == 0xa1) last = &chunk;
  }
  require(NMAttachChunkList(features.map, chunks.data(), chunks.size()) == expected);
  int64_t value = 0;
  if (last != nullptr)
    requireNumber(features.gain, buffer.data() + last->ChunkOffset, static_cast<uint64_t>(last->ChunkLength));
  else
    require(NGetAsInteger(features.gain, &value) != OXGENAPI_OK);
  room = sizeof text;
  NGetAsString(features.text, text, room);
  int64_t bytes = 8;
  NGetAsRegisterData(features.kept, text, &bytes);

  // Another buffer of the same layout, then none.
  std::vector<uint8_t> other(buffer.rbegin(), buffer.rend());
  require(NMUpdateChunks(features.map, other.empty() ? nullptr : other.data()) == OXGENAPI_OK);
  if (last != nullptr)
    requireNumber(features.gain, other.data() + last->ChunkOffset, static_cast<uint64_t>(last->ChunkLength));
  require(NMDetachAllChunks(features.map) == OXGENAPI_OK);
  require(NGetAsInteger(features.gain, &value) != OXGENAPI_OK);
  return 0;
}

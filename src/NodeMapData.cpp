// Data that arrives beside the register access: event messages and chunks of image buffers.
#include <charconv>
#include <cmath>
#include <limits>

#include "LoadedMap.h"
#include "NodeMap.h"

namespace orxGenApi {
namespace {

// ceil(log2(value)) as the callers' side computes it: over a natural logarithm, and with the conversion to 32 bits
// giving the most negative number where there is no logarithm.
int32_t bitCount(int64_t value) {
  constexpr double kNaturalLogarithmOf2 = 0.6931471805599453;
  const double bits = std::ceil(std::log(static_cast<double>(value)) / kNaturalLogarithmOf2);
  return std::isfinite(bits) ? static_cast<int32_t>(bits) : std::numeric_limits<int32_t>::min();
}

std::shared_ptr<Adapters> requiredAdapters(LoadedMap& load, const char* otherwise) {
  auto adapters = load.adapters();
  if (!adapters) throw orx_error(OXGENAPI_E_INVALID_STATE, otherwise);
  return adapters;
}

constexpr const char* kNoEventAdapter = "No EventAdapter object available";
constexpr const char* kNoChunkAdapter = "No ChunkAdapter object available";

}  // namespace

std::array<char, 18> numericIdText(uint64_t id) noexcept {
  const int32_t bits = bitCount(static_cast<int64_t>(id));
  std::array<char, 18> text{};  // 16 digits, a leading zero, the end
  char* digits = text.data();
  if (bits <= 1 || bits % 2 != 0) *digits++ = '0';
  std::to_chars(digits, text.data() + text.size() - 1, id, 16);
  return text;
}

uint32_t NodeMap::DeliverEvent(uint64_t eventId, const void* payload, uint64_t size) noexcept {
  return DeliverEventEx(numericIdText(eventId).data(), payload, size);
}

uint32_t NodeMap::DeliverEventEx(const char* eventId, const void* payload, uint64_t size) noexcept {
  return guarded(operation("-NodeMap::DeliverEventEx", kDelivering), [&] {
    if (payload == nullptr || size == 0) throw orx_error(OXGENAPI_E_INVALID_ARGUMENT, "Event data buffer invalid");
    const auto load = required();
    const auto adapters = requiredAdapters(*load, kNoEventAdapter);
    // GenApi takes 32 bits of size; larger payloads are cut to what these hold, on purpose without a test.
    adapters->events.DeliverMessage(static_cast<const uint8_t*>(payload), static_cast<uint32_t>(size),
                                    GENICAM_NAMESPACE::gcstring(eventId == nullptr ? "" : eventId));
  });
}

uint32_t NodeMap::AttachChunk(uint64_t chunkId, void* base, int64_t offset, int64_t length) noexcept {
  return AttachChunkEx(numericIdText(chunkId).data(), base, offset, length);
}

uint32_t NodeMap::AttachChunkEx(const char* chunkId, void* base, int64_t offset, int64_t length) noexcept {
  return guarded(operation("-NodeMap::AttachChunkEx", kDelivering), [&] {
    if (length == 0 || offset < 0 || base == nullptr)
      throw orx_error(OXGENAPI_E_INVALID_ARGUMENT, "Chunk data buffer invalid");
    const auto load = required();
    const auto adapters = requiredAdapters(*load, kNoChunkAdapter);
    adapters->chunks.AttachChunk(chunkId, static_cast<uint8_t*>(base), offset, length);
  });
}

uint32_t NodeMap::UpdateChunks(void* base) noexcept {
  return guarded(operation("-NodeMap::UpdateChunks", kDelivering), [&] {
    const auto load = required();
    const auto adapters = requiredAdapters(*load, kNoChunkAdapter);
    adapters->chunks.UpdateBuffer(static_cast<uint8_t*>(base));
  });
}

uint32_t NodeMap::DetachAllChunks() noexcept {
  return guarded(operation("-NodeMap::DetachAllChunks", kDelivering), [&] {
    const auto load = required();
    const auto adapters = requiredAdapters(*load, kNoChunkAdapter);
    adapters->chunks.DetachBuffer();
  });
}

}  // namespace orxGenApi

#include "ChunkWalk.h"

#include <algorithm>

#include "Failure.h"

namespace ox::camera {
namespace {

constexpr size_t kTag = 8;  // ID and length

uint32_t number(const uint8_t* bytes, bool bigEndian) {
  uint32_t value = 0;
  for (int i = 0; i < 4; ++i) value = value << 8 | bytes[bigEndian ? i : 3 - i];
  return value;
}

}  // namespace

std::vector<TChunkData> walkChunks(std::span<uint8_t> payload, bool bigEndian) {
  std::vector<TChunkData> chunks;
  size_t end = payload.size();
  while (end > 0) {
    if (end < kTag)
      throw CameraError(OXGENAPI_E_RUNTIME, "Chunk layout: " + std::to_string(end) + " bytes before the first chunk");
    const uint32_t id = number(payload.data() + end - kTag, bigEndian);
    const uint32_t length = number(payload.data() + end - kTag / 2, bigEndian);
    if (length > end - kTag) {
      throw CameraError(OXGENAPI_E_RUNTIME, "Chunk layout: the chunk that ends at byte " + std::to_string(end) +
                                                " claims " + std::to_string(length) + " bytes");
    }
    end -= kTag + length;
    if (length > 0) chunks.push_back({id, payload.data(), static_cast<int64_t>(end), static_cast<int64_t>(length)});
  }
  if (chunks.empty()) throw CameraError(OXGENAPI_E_RUNTIME, "Chunk layout: there is no chunk");
  std::reverse(chunks.begin(), chunks.end());
  return chunks;
}

}  // namespace ox::camera

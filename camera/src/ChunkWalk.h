// Where the chunks of a frame lie: data, ID, length, walked from the end as GigE Vision and USB3 Vision lay them out.
#pragma once

#include <OxGenApi/Types.h>

#include <cstdint>
#include <span>
#include <vector>

namespace ox::camera {

// Throws CameraError RUNTIME with the place where the layout breaks. Numbers are big-endian on networks, little-endian
// on USB.
std::vector<TChunkData> walkChunks(std::span<uint8_t> payload, bool bigEndian);

}  // namespace ox::camera

// The firmware image that the camera accepts as content of its file FirmwareImage.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace ox::simulation {

/// Layout, numbers big-endian:
///
///   offset  bytes  content
///        0      4  "OXFW"
///        4      4  version of this layout: 1
///        8     32  version of the firmware, for example "2.1.0", filled up with NUL
///       40      4  length of the payload
///       44      4  CRC-32 (polynomial 0xEDB88320, as in zip files) of the version field and the payload
///       48      n  payload, which the camera does not look at
struct FirmwareImage {
  std::string version;  ///< 1 .. 31 bytes, beginning with a digit
  std::vector<uint8_t> payload;

  /// The bytes of the image. Throws std::invalid_argument for a version that does not fit.
  std::vector<uint8_t> encode() const;

  /// Reads and checks an image. Throws std::runtime_error naming what is wrong with it.
  static FirmwareImage decode(std::span<const uint8_t> bytes);
};

}  // namespace ox::simulation

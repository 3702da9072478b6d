// What the camera sends: images with their chunks, and event messages.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace ox::simulation {

/// One image as a transport layer would put it into a buffer.
struct Frame {
  /// The image; with chunk mode on, the chunk layout (see ChunkLayout) whose first chunk is the image. Empty: no image.
  std::vector<uint8_t> data;
  /// Bytes of the image itself, without padding and chunks.
  std::size_t imageBytes = 0;
  uint64_t frameId = 0;      ///< counts from 1 since power on
  uint64_t timestampNs = 0;  ///< time of the camera at the begin of the exposure
  uint32_t width = 0;        ///< pixels
  uint32_t height = 0;       ///< pixels
  uint32_t pixelFormat = 0;  ///< value of the entry of PixelFormat
};

/// One event message.
struct CameraEvent {
  uint64_t id = 0;           ///< number that the description gives as EventID, in hexadecimal digits
  uint64_t timestampNs = 0;  ///< time of the camera
  uint64_t frameId = 0;      ///< image that the event belongs to, 0 for none
  /// 20 bytes, big-endian: time (8 bytes), number of the image (8), levels of all lines (4).
  std::vector<uint8_t> payload;

  /// `id` as the description writes it: at least four hexadecimal digits in upper case.
  std::string idText() const;
};

/// Numbers of the events the camera can send.
enum EventId : uint64_t {
  kEventExposureStart = 0x9001,
  kEventExposureEnd = 0x9002,
  kEventFrameTrigger = 0x9003,
  kEventLine0RisingEdge = 0x9010,
  kEventLine0FallingEdge = 0x9011,
  kEventTemperatureAlarm = 0x9030,
  kEventTest = 0x9040,
};

}  // namespace ox::simulation

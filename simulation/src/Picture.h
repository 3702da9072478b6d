// A picture: what it was taken with, and the bytes it is sent as.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>

#include "OxSimulation/Frame.h"
#include "RegisterBank.h"

namespace ox::simulation {

/// Everything about a picture except its bytes, noted at the exposure: settings may change before it is fetched.
struct PictureFacts {
  uint64_t frameId = 0;
  uint64_t timestampNs = 0;
  double exposureUs = 0;
  float gainDb = 0;
  uint64_t lines = 0;
  std::array<uint64_t, 2> counters{};
  uint32_t width = 0;
  uint32_t height = 0;
  uint32_t pixelFormat = 0;
  uint64_t testPattern = 0;
  std::string streamLabel;
  bool chunkMode = false;
  std::array<bool, 10> chunks{};  // in the order of ChunkSelector
};

PictureFacts pictureFacts(const RegisterBank& registers, int64_t nowNs, int64_t exposureNs);

/// Draws the picture and appends its chunks. A size that no memory holds throws std::bad_alloc.
Frame develop(const PictureFacts& facts);

/// The same into memory of the caller, with nothing drawn where it is too short. `frame.data` stays empty. Returns the
/// bytes that the picture and its chunks take.
uint64_t developInto(const PictureFacts& facts, std::span<uint8_t> memory, Frame& frame);

/// Bytes that develop() gives with the current settings.
uint64_t payloadBytes(const RegisterBank& registers);

}  // namespace ox::simulation

// Register bytes as numbers. Byte order comes from the description alone, never from the host.
#pragma once
#include <endian.h>

#include <cstdint>
#include <cstring>

#include "Base/GCTypes.h"

namespace GENAPI_NAMESPACE {

// The first `count` bytes (1 .. 8) as a number without sign.
inline uint64_t decodeBytes(const uint8_t* bytes, int64_t count, bool bigEndian) {
  if (count == 4) {  // the length of most registers
    uint32_t word;
    std::memcpy(&word, bytes, sizeof(word));
    return bigEndian ? be32toh(word) : le32toh(word);
  }
  uint64_t value = 0;
  for (int64_t i = 0; i < count; ++i) value = value << 8 | bytes[bigEndian ? i : count - 1 - i];
  return value;
}

inline void encodeBytes(uint64_t value, uint8_t* bytes, int64_t count, bool bigEndian) {
  if (count == 4) {
    const auto low = static_cast<uint32_t>(value);
    const uint32_t word = bigEndian ? htobe32(low) : htole32(low);
    std::memcpy(bytes, &word, sizeof(word));
    return;
  }
  for (int64_t i = 0; i < count; ++i) {
    bytes[bigEndian ? count - 1 - i : i] = static_cast<uint8_t>(value);
    value >>= 8;
  }
}

// The low `width` bits (1 .. 64) of a number, with the sign of the top one where it has one.
inline int64_t extended(uint64_t value, int width, bool isSigned) {
  const int unused = 64 - width;
  return isSigned ? static_cast<int64_t>(value << unused) >> unused : static_cast<int64_t>(value << unused >> unused);
}

inline uint64_t lowBits(int width) { return width >= 64 ? ~uint64_t{0} : (uint64_t{1} << width) - 1; }

// Range of a field of that width; without sign at most 63 bits count as value.
inline int64_t fieldMin(int width, bool isSigned) {
  return isSigned ? -static_cast<int64_t>(lowBits(width - 1)) - 1 : 0;
}
inline int64_t fieldMax(int width, bool isSigned) {
  return static_cast<int64_t>(lowBits(isSigned || width > 63 ? (width > 63 ? 63 : width - 1) : width));
}

}  // namespace GENAPI_NAMESPACE

// Addresses within a block of bytes, as chunks and events are addressed.
#pragma once
#include <cstdint>

#include "Base/GCTypes.h"

namespace GENAPI_NAMESPACE {

// Where an access of length bytes (at least 1) starts within size bytes; a negative address counts from the end.
// -1 when any of its bytes lies outside.
inline int64_t startWithin(int64_t address, int64_t length, int64_t size) {
  const int64_t start = address < 0 ? size + address : address;
  return start < 0 || start >= size || length > size - start ? -1 : start;
}

// The last byte of such an access, for texts.
inline int64_t lastByte(int64_t address, int64_t length) {
  return address > INT64_MAX - (length - 1) ? INT64_MAX : address + (length - 1);
}

}  // namespace GENAPI_NAMESPACE

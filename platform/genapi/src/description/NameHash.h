// The hash of a node name in a description's name table.
#pragma once
#include <cstdint>
#include <cstring>
#include <string_view>

#include "GenApi/Types.h"

namespace GENAPI_NAMESPACE {

// Names are short, so eight bytes at a time are mixed in with one multiplication each.
inline uint64_t hashName(std::string_view name) {
  constexpr uint64_t kFactor = 0x9E3779B97F4A7C15u;
  uint64_t hash = name.size() * kFactor;
  const auto mix = [&](uint64_t word) {
    hash = (hash ^ word) * kFactor;
    hash ^= hash >> 32;
  };
  const char* at = name.data();
  size_t left = name.size();
  for (; left >= 8; at += 8, left -= 8) {
    uint64_t word;
    std::memcpy(&word, at, 8);
    mix(word);
  }
  uint64_t tail = 0;
  if (left != 0) std::memcpy(&tail, at, left);
  mix(tail);
  return hash;
}

}  // namespace GENAPI_NAMESPACE

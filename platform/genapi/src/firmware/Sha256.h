// SHA-256 (FIPS 180-4): tells whether an update file is still the one that was read. Not used to authenticate.
#pragma once
#include <array>
#include <cstddef>
#include <cstdint>

#include "Base/GCTypes.h"

namespace GENAPI_NAMESPACE {

class Sha256 {
 public:
  using Digest = std::array<uint8_t, 32>;

  void update(const void* data, size_t size);
  // Ends the message; the object is not used any more.
  Digest finish();

 private:
  void compress(const uint8_t* block);

  std::array<uint32_t, 8> state_{0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a,
                                 0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19};
  std::array<uint8_t, 64> block_{};
  uint64_t size_ = 0;  // bytes so far
};

}  // namespace GENAPI_NAMESPACE

#include "firmware/Sha256.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace GENAPI_NAMESPACE {

namespace {

constexpr std::array<uint32_t, 64> kRoundConstants{
    0x428a2f98, 0x71374491, 0xb5c0fbcf, 0xe9b5dba5, 0x3956c25b, 0x59f111f1, 0x923f82a4, 0xab1c5ed5,
    0xd807aa98, 0x12835b01, 0x243185be, 0x550c7dc3, 0x72be5d74, 0x80deb1fe, 0x9bdc06a7, 0xc19bf174,
    0xe49b69c1, 0xefbe4786, 0x0fc19dc6, 0x240ca1cc, 0x2de92c6f, 0x4a7484aa, 0x5cb0a9dc, 0x76f988da,
    0x983e5152, 0xa831c66d, 0xb00327c8, 0xbf597fc7, 0xc6e00bf3, 0xd5a79147, 0x06ca6351, 0x14292967,
    0x27b70a85, 0x2e1b2138, 0x4d2c6dfc, 0x53380d13, 0x650a7354, 0x766a0abb, 0x81c2c92e, 0x92722c85,
    0xa2bfe8a1, 0xa81a664b, 0xc24b8b70, 0xc76c51a3, 0xd192e819, 0xd6990624, 0xf40e3585, 0x106aa070,
    0x19a4c116, 0x1e376c08, 0x2748774c, 0x34b0bcb5, 0x391c0cb3, 0x4ed8aa4a, 0x5b9cca4f, 0x682e6ff3,
    0x748f82ee, 0x78a5636f, 0x84c87814, 0x8cc70208, 0x90befffa, 0xa4506ceb, 0xbef9a3f7, 0xc67178f2};

}  // namespace

void Sha256::compress(const uint8_t* block) {
  std::array<uint32_t, 64> w;
  for (size_t i = 0; i < 16; ++i)
    w[i] = uint32_t{block[4 * i]} << 24 | uint32_t{block[4 * i + 1]} << 16 | uint32_t{block[4 * i + 2]} << 8 |
           uint32_t{block[4 * i + 3]};
  for (size_t i = 16; i < 64; ++i) {
    const uint32_t s0 = std::rotr(w[i - 15], 7) ^ std::rotr(w[i - 15], 18) ^ (w[i - 15] >> 3);
    const uint32_t s1 = std::rotr(w[i - 2], 17) ^ std::rotr(w[i - 2], 19) ^ (w[i - 2] >> 10);
    w[i] = w[i - 16] + s0 + w[i - 7] + s1;
  }
  auto [a, b, c, d, e, f, g, h] = state_;
  for (size_t i = 0; i < 64; ++i) {
    const uint32_t s1 = std::rotr(e, 6) ^ std::rotr(e, 11) ^ std::rotr(e, 25);
    const uint32_t first = h + s1 + ((e & f) ^ (~e & g)) + kRoundConstants[i] + w[i];
    const uint32_t s0 = std::rotr(a, 2) ^ std::rotr(a, 13) ^ std::rotr(a, 22);
    const uint32_t second = s0 + ((a & b) ^ (a & c) ^ (b & c));
    h = g;
    g = f;
    f = e;
    e = d + first;
    d = c;
    c = b;
    b = a;
    a = first + second;
  }
  const std::array<uint32_t, 8> sums{a, b, c, d, e, f, g, h};
  for (size_t i = 0; i < sums.size(); ++i) state_[i] += sums[i];
}

void Sha256::update(const void* data, size_t size) {
  const auto* bytes = static_cast<const uint8_t*>(data);
  size_t held = static_cast<size_t>(size_ % block_.size());
  size_ += size;
  while (size > 0) {
    if (held == 0 && size >= block_.size()) {
      compress(bytes);
      bytes += block_.size();
      size -= block_.size();
      continue;
    }
    const size_t part = std::min(size, block_.size() - held);
    std::memcpy(block_.data() + held, bytes, part);
    bytes += part;
    size -= part;
    held += part;
    if (held == block_.size()) {
      compress(block_.data());
      held = 0;
    }
  }
}

Sha256::Digest Sha256::finish() {
  const uint64_t bits = size_ * 8;
  const uint8_t mark = 0x80;
  const uint8_t zero = 0;
  update(&mark, 1);
  while (size_ % block_.size() != 56) update(&zero, 1);
  std::array<uint8_t, 8> length;
  for (size_t i = 0; i < 8; ++i) length[i] = static_cast<uint8_t>(bits >> (56 - 8 * i));
  update(length.data(), length.size());
  Digest digest;
  for (size_t i = 0; i < digest.size(); ++i) digest[i] = static_cast<uint8_t>(state_[i / 4] >> (24 - 8 * (i % 4)));
  return digest;
}

}  // namespace GENAPI_NAMESPACE

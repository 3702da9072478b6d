#include "OxSimulation/ChunkLayout.h"

namespace ox::simulation {

namespace {

constexpr int64_t kTagBytes = 8;

uint32_t loadBig(const uint8_t* bytes) {
  return uint32_t{bytes[0]} << 24 | uint32_t{bytes[1]} << 16 | uint32_t{bytes[2]} << 8 | bytes[3];
}

void appendBig(std::vector<uint8_t>& buffer, uint32_t value) {
  for (int shift = 24; shift >= 0; shift -= 8) buffer.push_back(static_cast<uint8_t>(value >> shift));
}

}  // namespace

ChunkLayout::Iterator::Iterator(const uint8_t* base, int64_t end) : base_(base), end_(end), atEnd_(false) { find(); }

void ChunkLayout::Iterator::find() {
  const int64_t room = end_ - kTagBytes;
  const int64_t length = room < 0 ? 0 : int64_t{loadBig(base_ + room + 4)};
  if (room < 0 || length > room) {
    atEnd_ = true;
    broken_ = end_ != 0;
    return;
  }
  entry_ = {loadBig(base_ + room), room - length, length};
}

ChunkLayout::Iterator& ChunkLayout::Iterator::operator++() {
  end_ = entry_.offset;
  find();
  return *this;
}

ChunkLayout::Iterator ChunkLayout::Iterator::operator++(int) {
  Iterator before = *this;
  ++*this;
  return before;
}

ChunkLayout::Iterator ChunkLayout::begin() const { return {buffer_.data(), static_cast<int64_t>(buffer_.size())}; }

bool ChunkLayout::complete() const {
  Iterator at = begin();
  while (at != end()) ++at;
  return !at.broken();
}

void appendChunk(std::vector<uint8_t>& buffer, uint32_t id, std::span<const uint8_t> data) {
  buffer.insert(buffer.end(), data.begin(), data.end());
  const std::size_t padded = (data.size() + 3) / 4 * 4;
  buffer.insert(buffer.end(), padded - data.size(), 0);
  appendBig(buffer, id);
  appendBig(buffer, static_cast<uint32_t>(padded));
}

}  // namespace ox::simulation

// The layout of a buffer with chunks, walked as a transport layer walks it: from the end.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <span>
#include <string>
#include <vector>

namespace ox::simulation {

/// Numbers of the chunks the camera can send.
enum ChunkId : uint32_t {
  kChunkImage = 0xA000,
  kChunkTimestamp = 0xA001,
  kChunkFrameCounter = 0xA002,
  kChunkExposureTime = 0xA003,
  kChunkGain = 0xA004,
  kChunkLineStatusAll = 0xA005,
  kChunkCounterValue = 0xA006,
  kChunkPixelFormat = 0xA007,
  kChunkStreamLabel = 0xA008,
  kChunkSize = 0xA009,
};

/// Where a chunk lies in the buffer.
struct ChunkEntry {
  uint32_t id = 0;
  int64_t offset = 0;  ///< of the data, from the start of the buffer
  int64_t length = 0;  ///< bytes of the data
  bool operator==(const ChunkEntry&) const = default;
};

/// A range over the chunks of a buffer, last chunk first. Each chunk is its data, then four bytes of ID and four bytes
/// of length, both big-endian. The walk ends at the start of the buffer, or where a length does not fit: then
/// complete() is false and the entries before it stand. Refers to the buffer, copies nothing, never throws.
class ChunkLayout {
 public:
  class Iterator {
   public:
    using value_type = ChunkEntry;
    using difference_type = std::ptrdiff_t;
    using reference = const ChunkEntry&;
    using pointer = const ChunkEntry*;
    using iterator_category = std::input_iterator_tag;

    Iterator() = default;
    reference operator*() const { return entry_; }
    pointer operator->() const { return &entry_; }
    Iterator& operator++();
    Iterator operator++(int);
    /// Two iterators are equal when both are at the end or at the same chunk.
    bool operator==(const Iterator& other) const { return atEnd_ == other.atEnd_ && (atEnd_ || end_ == other.end_); }
    /// True at the end of a walk that did not meet the start of the buffer.
    bool broken() const { return broken_; }

   private:
    friend class ChunkLayout;
    Iterator(const uint8_t* base, int64_t end);
    void find();

    const uint8_t* base_ = nullptr;
    int64_t end_ = 0;  // first byte behind the chunk
    ChunkEntry entry_;
    bool atEnd_ = true;
    bool broken_ = false;
  };

  explicit ChunkLayout(std::span<const uint8_t> buffer) : buffer_(buffer) {}
  Iterator begin() const;
  Iterator end() const { return {}; }
  /// Whether the chunks fill the buffer without a rest.
  bool complete() const;

 private:
  std::span<const uint8_t> buffer_;
};

/// Appends a chunk: its data, zeros up to a multiple of four bytes, ID and length (which counts the zeros).
void appendChunk(std::vector<uint8_t>& buffer, uint32_t id, std::span<const uint8_t> data);

}  // namespace ox::simulation

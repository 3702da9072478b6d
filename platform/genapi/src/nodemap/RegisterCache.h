// What registers were read or written last, remembered by place (port, address, length) and not by node, so that all
// nodes over one register agree.
//
// Rules:
//   - Content is complete or absent. A place is used by a node only if it was filled after the node's last
//   invalidation.
//   - Content that came from a write answers only nodes that may both read and write the place by their own AccessMode:
//     a status and a command may share an address.
//   - What write-only registers wrote is kept apart, for merging bits, and never answers a read.
//   - Whenever a place's bytes turn out to have changed, everything computed from them is dropped, silently.
//   - A write drops what overlaps it.
// Guarded by the map's lock.
#pragma once
#include <cstdint>
#include <map>
#include <memory>
#include <span>
#include <unordered_map>
#include <vector>

#include "description/NodeIndex.h"

namespace GENAPI_NAMESPACE {

class NodeMap;

struct PlaceKey {
  NodeIndex port;
  int64_t address;
  int64_t length;  // bytes
  auto operator<=>(const PlaceKey&) const = default;
};

class Place {
 public:
  explicit Place(const PlaceKey& key) : key_(key) {}
  const PlaceKey& key() const { return key_; }
  bool isFilled() const { return filled_; }
  bool isWritten() const { return fromWrite_; }
  uint64_t fillStamp() const { return fillStamp_; }
  // The content; meaningful while isFilled().
  const uint8_t* bytes() const { return more_ ? more_.get() : few_; }
  // What a write-only register wrote last, or null.
  const uint8_t* lastWritten() const { return lastWritten_.get(); }

 private:
  friend class RegisterCache;
  uint8_t* storage() { return more_ ? more_.get() : few_; }

  PlaceKey key_;
  uint64_t fillStamp_ = 0;
  uint64_t clearOfOverlap_ = 0;  // number of places that existed when none overlapped this one
  bool known_ = false;           // bytes() was filled at least once
  bool filled_ = false;
  bool fromWrite_ = false;
  uint8_t few_[8] = {};
  std::unique_ptr<uint8_t[]> more_;  // for places longer than few_
  std::unique_ptr<uint8_t[]> lastWritten_;
  std::vector<NodeIndex> users_;
  Place* newer_ = nullptr;
};

class RegisterCache {
 public:
  explicit RegisterCache(NodeMap& map) : map_(map) {}
  RegisterCache(const RegisterCache&) = delete;
  RegisterCache& operator=(const RegisterCache&) = delete;

  // The place with that key, made if need be, with the node among its users. May retire the oldest place.
  Place& obtain(const PlaceKey& key, NodeIndex user);
  // Remembers what was read; the operation that read began at `stamp`.
  void fillFromRead(Place& place, const uint8_t* bytes, uint64_t stamp, NodeIndex reader);
  // Remembers what a node that may also read has written.
  void fillFromWrite(Place& place, const uint8_t* bytes, uint64_t stamp, NodeIndex writer);
  // Remembers what a write-only register wrote; its content does not answer reads.
  void keepWritten(Place& place, const uint8_t* bytes, NodeIndex writer);
  // Changes part of a filled place after a partial write.
  void patch(Place& place, const uint8_t* bytes, int64_t length, NodeIndex writer);
  // Forgets the content; nodes that decoded it forget their values.
  void drop(Place& place) noexcept;
  // Drops every place that shares a byte with the range except the one given, with what was computed from them.
  void dropOverlapping(const PlaceKey& range, Place* except);
  void leave(Place& place, NodeIndex user) noexcept;
  // Drops all content of all ports.
  void dropAll() noexcept;
  void dropPort(NodeIndex port) noexcept;
  // Counts retirements of places; a pointer to a place is good while this does not change.
  uint64_t retirements() const { return retirements_; }
  size_t size() const { return places_.size(); }

 private:
  void retireOldest();
  void forgetComputed(const Place& place, NodeIndex except);

  NodeMap& map_;
  std::map<PlaceKey, Place> places_;
  std::unordered_map<NodeIndex, int64_t> longest_;  // per port
  Place* oldest_ = nullptr;
  Place* newest_ = nullptr;
  uint64_t made_ = 0;
  uint64_t retirements_ = 0;
};

}  // namespace GENAPI_NAMESPACE

// What registers were read or written last, remembered by place (port, address, length) and not by node, so that all
// nodes over one register agree.
//
// Rules:
//   - Content is complete or absent. A place is used by a node only if it was filled after the node's last
//   invalidation.
//   - Content that came from a write answers only nodes that may both read and write the place by their own AccessMode:
//     a status and a command may share an address.
//   - What was written last to a place short enough for a number is kept apart, for merging bits where nothing can be
//     read, and never answers a read.
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
  // What was written last through any node, 0 where nothing was; for places of up to kMergeable bytes.
  const uint8_t* lastWritten() const { return lastWritten_; }
  static constexpr int64_t kMergeable = 8;

 private:
  friend class RegisterCache;
  uint8_t* storage() { return more_ ? more_.get() : few_; }

  PlaceKey key_;
  uint64_t fillStamp_ = 0;
  uint64_t clearOfOverlap_ = 0;  // number of places that existed when none overlapped this one
  bool known_ = false;           // bytes() was filled at least once
  bool filled_ = false;
  bool fromWrite_ = false;
  bool used_ = false;  // something may have been computed from the content since that was last forgotten
  uint8_t few_[8] = {};
  uint8_t lastWritten_[kMergeable] = {};
  std::unique_ptr<uint8_t[]> more_;  // for places longer than few_
  std::vector<NodeIndex> users_;
  Place* newer_ = nullptr;
};

class RegisterCache {
 public:
  explicit RegisterCache(NodeMap& map) : map_(map) {}
  RegisterCache(const RegisterCache&) = delete;
  RegisterCache& operator=(const RegisterCache&) = delete;

  // The place with that key, made if need be, with the node among its users. May retire the oldest places.
  Place& obtain(const PlaceKey& key, NodeIndex user);
  // The place with that key, or null.
  Place* find(const PlaceKey& key);
  // Remembers what was read; the operation that read began at `stamp`.
  void fillFromRead(Place& place, const uint8_t* bytes, uint64_t stamp);
  // Remembers what a node that may also read has written.
  void fillFromWrite(Place& place, const uint8_t* bytes, uint64_t stamp, NodeIndex writer);
  // Remembers the first bytes of what was written, for merging only.
  void noteWritten(Place& place, const uint8_t* bytes, int64_t length);
  // Changes the first bytes of a filled place after a partial write.
  void patch(Place& place, const uint8_t* bytes, int64_t length, NodeIndex writer);
  // Forgets the content; nodes that decoded it forget their values.
  void drop(Place& place) noexcept;
  // Forgets the content and, but for the node given, everything that was computed from it.
  void dropWithComputed(Place& place, NodeIndex except);
  // Drops every place that shares a byte with the range except the one given, with what was computed from them.
  void dropOverlapping(const PlaceKey& range, Place* except);
  void leave(Place& place, NodeIndex user) noexcept;
  // Drops all content of all ports.
  void dropAll() noexcept;
  size_t size() const { return places_.size(); }

 private:
  void retireOldest();
  void forgetComputed(Place& place, NodeIndex except);
  void dropWhatMayNotUseWritten(const Place& place, NodeIndex writer);

  NodeMap& map_;
  std::map<PlaceKey, Place> places_;
  std::unordered_map<NodeIndex, int64_t> longest_;  // per port
  Place* oldest_ = nullptr;
  Place* newest_ = nullptr;
  uint64_t made_ = 0;
  int64_t bytes_ = 0;  // of all places
};

}  // namespace GENAPI_NAMESPACE

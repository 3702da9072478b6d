#include "nodemap/RegisterCache.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "description/Limits.h"
#include "nodemap/NodeMap.h"

namespace GENAPI_NAMESPACE {

Place& RegisterCache::obtain(const PlaceKey& key, NodeIndex user) {
  auto found = places_.find(key);
  if (found == places_.end()) {
    while (oldest_ && (places_.size() >= kMaxCachedPlaces || bytes_ + key.length > kMaxCachedBytes)) retireOldest();
    std::unique_ptr<uint8_t[]> more;
    if (key.length > static_cast<int64_t>(sizeof(Place::few_))) {
      more = std::make_unique<uint8_t[]>(static_cast<size_t>(key.length));
    }
    int64_t& longest = longest_[key.port];
    found = places_.try_emplace(key, key).first;
    Place& made = found->second;
    made.more_ = std::move(more);
    longest = std::max(longest, key.length);
    (newest_ ? newest_->newer_ : oldest_) = &made;
    newest_ = &made;
    bytes_ += key.length;
    ++made_;
  }
  Place& place = found->second;
  if (std::find(place.users_.begin(), place.users_.end(), user) == place.users_.end()) place.users_.push_back(user);
  return place;
}

Place* RegisterCache::find(const PlaceKey& key) {
  const auto found = places_.find(key);
  return found == places_.end() ? nullptr : &found->second;
}

void RegisterCache::retireOldest() {
  Place* place = oldest_;
  // Without the place nobody would tell its users of writes that overlap it.
  dropWithComputed(*place, kNoNode);
  oldest_ = place->newer_;
  if (!oldest_) newest_ = nullptr;
  bytes_ -= place->key_.length;
  const std::vector<NodeIndex> users = std::move(place->users_);
  for (const NodeIndex user : users) map_.forgetPlace(user);
  const PlaceKey key = place->key_;
  places_.erase(key);
}

void RegisterCache::forgetComputed(Place& place, NodeIndex except) {
  place.used_ = false;
  for (const NodeIndex user : place.users_) {
    if (user == except) continue;
    map_.state(user).flags &= static_cast<uint16_t>(~kHasValue);
    map_.dropDependents(user);
  }
}

void RegisterCache::fillFromRead(Place& place, const uint8_t* bytes, uint64_t stamp) {
  const auto length = static_cast<size_t>(place.key_.length);
  const bool changed = place.known_ && std::memcmp(place.bytes(), bytes, length) != 0;
  if (!place.known_ || changed) std::memcpy(place.storage(), bytes, length);
  place.known_ = place.filled_ = true;
  place.fromWrite_ = false;
  place.fillStamp_ = stamp;
  if (changed) {
    // The reader's own number goes too: it may be reading the bytes alone.
    map_.sparingEvaluations([&] { forgetComputed(place, kNoNode); });
  }
  place.used_ = true;
}

void RegisterCache::fillFromWrite(Place& place, const uint8_t* bytes, uint64_t stamp, NodeIndex writer) {
  const auto length = static_cast<size_t>(place.key_.length);
  const bool changed = !place.filled_ || std::memcmp(place.bytes(), bytes, length) != 0;
  std::memcpy(place.storage(), bytes, length);
  place.known_ = place.filled_ = true;
  place.fromWrite_ = true;
  place.fillStamp_ = stamp;
  dropWhatMayNotUseWritten(place, writer);
  if (changed) forgetComputed(place, writer);
  place.used_ = true;
}

void RegisterCache::noteWritten(Place& place, const uint8_t* bytes, int64_t length) {
  if (place.key_.length <= Place::kMergeable) std::memcpy(place.lastWritten_, bytes, static_cast<size_t>(length));
}

void RegisterCache::patch(Place& place, const uint8_t* bytes, int64_t length, NodeIndex writer) {
  std::memcpy(place.storage(), bytes, static_cast<size_t>(length));
  place.fromWrite_ = true;
  dropWhatMayNotUseWritten(place, writer);
  forgetComputed(place, writer);
  place.used_ = true;
}

void RegisterCache::dropWhatMayNotUseWritten(const Place& place, NodeIndex writer) {
  for (const NodeIndex user : place.users_) {
    if (user == writer || map_.mayUseWritten(user)) continue;
    map_.state(user).flags &= static_cast<uint16_t>(~(kHasValue | kValid));
    map_.dropDependents(user);
  }
}

void RegisterCache::dropWithComputed(Place& place, NodeIndex except) {
  drop(place);
  forgetComputed(place, except);
}

void RegisterCache::drop(Place& place) noexcept {
  place.filled_ = false;
  for (const NodeIndex user : place.users_) map_.state(user).flags &= static_cast<uint16_t>(~(kHasValue | kValid));
}

void RegisterCache::dropOverlapping(const PlaceKey& range, Place* except) {
  // A place that overlapped nothing keeps that answer until another place is made.
  if (except && except->clearOfOverlap_ == made_) return;
  const bool whole = except && except->key_ == range;
  const auto longest = longest_.find(range.port);
  if (longest == longest_.end()) return;
  constexpr int64_t kLowest = std::numeric_limits<int64_t>::min();
  const int64_t reach = longest->second - 1;
  const int64_t from = range.address < kLowest + reach ? kLowest : range.address - reach;
  bool clear = true;
  for (auto each = places_.lower_bound(PlaceKey{range.port, from, 0}); each != places_.end(); ++each) {
    Place& place = each->second;
    if (place.key_.port != range.port) break;
    // Distances are taken unsigned: addresses may lie at both ends of their range.
    const bool after = place.key_.address >= range.address;
    if (after && static_cast<uint64_t>(place.key_.address) - static_cast<uint64_t>(range.address) >=
                     static_cast<uint64_t>(range.length)) {
      break;
    }
    if (!after && static_cast<uint64_t>(range.address) - static_cast<uint64_t>(place.key_.address) >=
                      static_cast<uint64_t>(place.key_.length)) {
      continue;
    }
    if (&place == except) continue;
    clear = false;
    if (place.filled_ || place.used_) dropWithComputed(place, kNoNode);
  }
  if (whole && clear) except->clearOfOverlap_ = made_;
}

void RegisterCache::leave(Place& place, NodeIndex user) noexcept {
  const auto found = std::find(place.users_.begin(), place.users_.end(), user);
  if (found == place.users_.end()) return;
  *found = place.users_.back();
  place.users_.pop_back();
}

void RegisterCache::dropAll() noexcept {
  for (auto& [key, place] : places_) drop(place);
}

}  // namespace GENAPI_NAMESPACE

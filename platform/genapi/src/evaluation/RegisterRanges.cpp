#include "evaluation/RegisterRanges.h"

#include <algorithm>
#include <limits>

#include "description/Limits.h"

namespace GENAPI_NAMESPACE {

RegisterRange::RegisterRange(const RangeKey& itsKey) : key(itsKey) {
  if (!isNumber()) more = std::make_unique<uint8_t[]>(static_cast<size_t>(key.length));
}

RegisterRange* RegisterRanges::find(const RangeKey& key) {
  const auto found = ranges_.find(key);
  return found == ranges_.end() ? nullptr : &found->second;
}

RegisterRange& RegisterRanges::obtain(const RangeKey& key) {
  if (RegisterRange* known = find(key)) return *known;
  int64_t& longest = longest_[key.port];
  RegisterRange& made = ranges_.try_emplace(key, key).first->second;
  longest = std::max(longest, key.length);
  (newest_ ? newest_->newer : oldest_) = &made;
  newest_ = &made;
  bytes_ += key.length;
  ++made_;
  return made;
}

bool RegisterRanges::isFullFor(int64_t length) const {
  return oldest_ && (ranges_.size() >= kMaxCachedPlaces || bytes_ + length > kMaxCachedBytes);
}

void RegisterRanges::removeOldest() {
  const RangeKey key = oldest_->key;
  oldest_ = oldest_->newer;
  if (!oldest_) newest_ = nullptr;
  bytes_ -= key.length;
  ranges_.erase(key);
}

RegisterRanges::Ranges::iterator RegisterRanges::firstCandidate(const RangeKey& key) {
  const auto longest = longest_.find(key.port);
  if (longest == longest_.end()) return ranges_.end();
  constexpr int64_t kLowest = std::numeric_limits<int64_t>::min();
  const int64_t reach = longest->second - 1;
  return ranges_.lower_bound({key.port, key.address < kLowest + reach ? kLowest : key.address - reach, 0});
}

RegisterRanges::Overlap RegisterRanges::compare(const RangeKey& range, const RangeKey& key) {
  // Distances are unsigned: addresses may be at both ends of their type.
  const auto from = static_cast<uint64_t>(range.address);
  const auto start = static_cast<uint64_t>(key.address);
  if (range.address >= key.address)
    return from - start < static_cast<uint64_t>(key.length) ? Overlap::Shares : Overlap::After;
  return start - from < static_cast<uint64_t>(range.length) ? Overlap::Shares : Overlap::Before;
}

}  // namespace GENAPI_NAMESPACE

// Contents of registers by port, address and length, and not by node, so that all nodes over one register agree. Plain
// data and searches; Registers has the rules.
#pragma once
#include <cstdint>
#include <map>
#include <memory>
#include <unordered_map>
#include <vector>

#include "Base/GCTypes.h"
#include "description/NodeIndex.h"

namespace GENAPI_NAMESPACE {

struct RangeKey {
  NodeIndex port;
  int64_t address;
  int64_t length;                                     // bytes
  auto operator<=>(const RangeKey&) const = default;  // NOLINT(modernize-use-nullptr)
};

// A node that reads or writes the range.
struct RangeUser {
  NodeIndex node;
  bool mayUseWritten;  // content that came from a write may answer its reads
};

struct RegisterRange {
  // Ranges of numbers: short enough to merge bits, and to be remembered for one call.
  static constexpr int64_t kNumberBytes = 8;

  explicit RegisterRange(const RangeKey& itsKey);
  bool isNumber() const { return key.length <= kNumberBytes; }
  uint8_t* bytes() { return more ? more.get() : few; }

  const RangeKey key;
  std::vector<RangeUser> users;
  uint64_t filled = 0;       // revision of the content
  uint32_t readCall = 0;     // call that read the content from the port; 0 when it came from elsewhere
  uint32_t passingCall = 0;  // call that `passing` belongs to; 0 for none
  uint64_t passingRead = 0;  // revision of `passing`
  bool known = false;        // bytes() was filled at least once
  bool hasContent = false;
  bool fromWrite = false;
  bool used = false;  // something may have been computed from it since that was dropped last
  uint8_t few[kNumberBytes] = {};
  uint8_t passing[kNumberBytes] = {};      // read by nodes that remember nothing beyond a call
  uint8_t lastWritten[kNumberBytes] = {};  // through any node, 0 where nothing was
  std::unique_ptr<uint8_t[]> more;         // for ranges longer than few
  uint64_t clearOfOverlap = 0;             // number of ranges made when none overlapped this one
  RegisterRange* newer = nullptr;
};

class RegisterRanges {
 public:
  // The range with that key, or null.
  RegisterRange* find(const RangeKey& key);
  // The range with that key, made if need be.
  RegisterRange& obtain(const RangeKey& key);
  // Whether a range of that length takes the place of older ones.
  bool isFullFor(int64_t length) const;
  RegisterRange* oldest() const { return oldest_; }
  void removeOldest();
  // Calls visit for every range that shares a byte with `key`, except one. Nothing is visited when that one is known
  // to overlap nothing.
  template <class Visit>
  void forEachOverlapping(const RangeKey& key, RegisterRange* except, Visit&& visit);
  template <class Visit>
  void forEach(Visit&& visit) {
    for (auto& [key, range] : ranges_) visit(range);
  }

 private:
  using Ranges = std::map<RangeKey, RegisterRange>;
  // The first range that may reach into `key`.
  Ranges::iterator firstCandidate(const RangeKey& key);
  enum class Overlap { Before, Shares, After };
  static Overlap compare(const RangeKey& range, const RangeKey& key);

  Ranges ranges_;
  std::unordered_map<NodeIndex, int64_t> longest_;  // per port
  RegisterRange* oldest_ = nullptr;
  RegisterRange* newest_ = nullptr;
  uint64_t made_ = 0;
  int64_t bytes_ = 0;  // of all ranges
};

template <class Visit>
void RegisterRanges::forEachOverlapping(const RangeKey& key, RegisterRange* except, Visit&& visit) {
  // A range that overlapped nothing keeps that answer until another range is made.
  if (except && except->clearOfOverlap == made_) return;
  bool clear = true;
  for (auto each = firstCandidate(key); each != ranges_.end(); ++each) {
    if (each->first.port != key.port) break;
    const Overlap overlap = compare(each->first, key);
    if (overlap == Overlap::After) break;
    if (overlap == Overlap::Before || &each->second == except) continue;
    clear = false;
    visit(each->second);
  }
  if (except && clear && except->key == key) except->clearOfOverlap = made_;
}

}  // namespace GENAPI_NAMESPACE

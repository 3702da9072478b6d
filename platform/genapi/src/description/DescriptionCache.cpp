#include "description/DescriptionCache.h"

#include <xxhash.h>

#include <atomic>
#include <mutex>
#include <unordered_map>
#include <vector>

#include "description/Description.h"

namespace GENAPI_NAMESPACE {
namespace {

// Hashed only when it is not the only one of its size.
class HashedText {
 public:
  uint64_t hashOf(std::string_view text) {
    uint64_t hash = hash_.load(std::memory_order_relaxed);
    if (hash == kUnknown) {
      hash = XXH3_64bits(text.data(), text.size());
      hash_.store(hash, std::memory_order_relaxed);
    }
    return hash;
  }

 private:
  static constexpr uint64_t kUnknown = 0;  // a text with that hash is just hashed each time
  std::atomic<uint64_t> hash_{kUnknown};
};

struct Entry {
  std::weak_ptr<const Description> description;
  std::shared_ptr<HashedText> text = std::make_shared<HashedText>();
};

// One that is alive.
struct Candidate {
  std::shared_ptr<const Description> description;
  std::shared_ptr<HashedText> text;
};

struct Cache {
  std::mutex mutex;
  std::unordered_multimap<size_t, Entry> known;  // by the size of the text
  size_t sweepAt = 16;                           // entries at which the dead ones are swept out
};

// Never destroyed: loads may still run while the process ends.
Cache& cache() {
  static Cache& instance = *new Cache;
  return instance;
}

void sweep(Cache& known) {
  std::erase_if(known.known, [](const auto& entry) { return entry.second.description.expired(); });
  known.sweepAt = known.known.size() * 2 + 16;
}

// Those of that size that are alive. Call it with the lock held.
std::vector<Candidate> candidates(Cache& known, size_t size) {
  std::vector<Candidate> found;
  const auto [first, last] = known.known.equal_range(size);
  for (auto entry = first; entry != last; ++entry)
    if (auto description = entry->second.description.lock())
      found.push_back({std::move(description), entry->second.text});
  return found;
}

// The candidate with that text, or null. With several of them only those of the same hash are compared: texts may
// differ in their last byte.
std::shared_ptr<const Description> matching(const std::vector<Candidate>& found, std::string_view text) {
  const uint64_t hash = found.size() > 1 ? XXH3_64bits(text.data(), text.size()) : 0;
  for (const Candidate& each : found) {
    const std::string_view known = each.description->sourceText();
    if (found.size() > 1 && each.text->hashOf(known) != hash) continue;
    if (known == text) return each.description;
  }
  return nullptr;
}

}  // namespace

// Compare and release candidates outside the lock: releasing the last reference destroys a whole description.
std::shared_ptr<const Description> DescriptionCache::find(std::string_view text) {
  std::vector<Candidate> found;
  {
    Cache& known = cache();
    const std::lock_guard<std::mutex> lock(known.mutex);
    found = candidates(known, text.size());
  }
  return matching(found, text);
}

std::shared_ptr<const Description> DescriptionCache::add(std::shared_ptr<const Description> description) {
  Cache& known = cache();
  std::vector<Candidate> found;  // released after the lock
  const std::lock_guard<std::mutex> lock(known.mutex);
  found = candidates(known, description->sourceText().size());
  if (auto other = matching(found, description->sourceText())) return other;
  if (known.known.size() >= known.sweepAt) sweep(known);
  known.known.emplace(description->sourceText().size(), Entry{.description = description});
  return description;
}

void DescriptionCache::removeUnused() {
  Cache& known = cache();
  const std::lock_guard<std::mutex> lock(known.mutex);
  sweep(known);
}

}  // namespace GENAPI_NAMESPACE

#include "description/DescriptionCache.h"

#include <xxhash.h>

#include <mutex>
#include <unordered_map>
#include <vector>

#include "description/Description.h"

namespace GENAPI_NAMESPACE {
namespace {

struct Cache {
  std::mutex mutex;
  std::unordered_multimap<uint64_t, std::weak_ptr<const Description>> known;
  size_t sweepAt = 16;  // entries at which the dead ones are swept out
};

// Never destroyed: loads may still run while the process ends.
Cache& cache() {
  static Cache& instance = *new Cache;
  return instance;
}

void sweep(Cache& known) {
  std::erase_if(known.known, [](const auto& entry) { return entry.second.expired(); });
  known.sweepAt = known.known.size() * 2 + 16;
}

// Those with that hash that are alive. They are compared, and given up, without the lock: the last user of one might be
// gone by then, and its end must not hold up other loads.
std::vector<std::shared_ptr<const Description>> candidates(uint64_t hash) {
  std::vector<std::shared_ptr<const Description>> found;
  Cache& known = cache();
  const std::lock_guard<std::mutex> lock(known.mutex);
  const auto [first, last] = known.known.equal_range(hash);
  for (auto entry = first; entry != last; ++entry) {
    if (std::shared_ptr<const Description> description = entry->second.lock()) found.push_back(std::move(description));
  }
  return found;
}

}  // namespace

uint64_t DescriptionCache::hashOf(std::string_view text) {
  return XXH3_64bits(text.data(), text.size());
}

std::shared_ptr<const Description> DescriptionCache::find(uint64_t hash, std::string_view text) {
  for (std::shared_ptr<const Description>& description : candidates(hash)) {
    if (description->sourceText() == text) return std::move(description);
  }
  return nullptr;
}

std::shared_ptr<const Description> DescriptionCache::add(uint64_t hash,
                                                         std::shared_ptr<const Description> description) {
  Cache& known = cache();
  const std::lock_guard<std::mutex> lock(known.mutex);
  const auto [first, last] = known.known.equal_range(hash);
  for (auto entry = first; entry != last; ++entry) {
    std::shared_ptr<const Description> other = entry->second.lock();
    if (other && other->sourceText() == description->sourceText()) return other;
  }
  if (known.known.size() >= known.sweepAt) sweep(known);
  known.known.emplace(hash, description);
  return description;
}

void DescriptionCache::removeUnused() {
  Cache& known = cache();
  const std::lock_guard<std::mutex> lock(known.mutex);
  sweep(known);
}

}  // namespace GENAPI_NAMESPACE

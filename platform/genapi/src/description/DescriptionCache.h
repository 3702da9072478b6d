// The descriptions in use, found by their text: the second camera of a model costs one hash and one comparison. A
// description lives as long as somebody uses it; the cache only knows it. Safe for any number of threads.
#pragma once
#include <cstdint>
#include <memory>
#include <string_view>

#include "GenApi/Types.h"

namespace GENAPI_NAMESPACE {

class Description;

class DescriptionCache {
 public:
  static uint64_t hashOf(std::string_view text);
  // The description made of exactly that text, or null.
  static std::shared_ptr<const Description> find(uint64_t hash, std::string_view text);
  // Remembers a description. If another thread was faster with the same text, gives back that one.
  static std::shared_ptr<const Description> add(uint64_t hash, std::shared_ptr<const Description> description);
  // Forgets descriptions that nobody uses.
  static void removeUnused();
};

}  // namespace GENAPI_NAMESPACE

// The descriptions in use, found by their text: the second camera of a model costs one comparison, and a hash where
// several descriptions have texts of one size. A description lives as long as somebody uses it; the cache only knows
// it. Safe for any number of threads.
#pragma once
#include <memory>
#include <string_view>

#include "GenApi/Types.h"

namespace GENAPI_NAMESPACE {

class Description;

class DescriptionCache {
 public:
  // The description made of exactly that text, or null.
  static std::shared_ptr<const Description> find(std::string_view text);
  // Remembers a description. If another thread was faster with the same text, gives back that one.
  static std::shared_ptr<const Description> add(std::shared_ptr<const Description> description);
  // Forgets descriptions that nobody uses.
  static void removeUnused();
};

}  // namespace GENAPI_NAMESPACE

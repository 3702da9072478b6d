// The entries of an enumeration as flat tables, made once per description.
#pragma once
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "nodes/NodeLayout.h"

namespace GENAPI_NAMESPACE {

class Description;

struct EntryRecord {
  int64_t value;
  long double numericValue;  // holds every int64_t and every double exactly
  std::string_view symbolic;
  NodeIndex node;
  bool isSelfClearing;
  bool isPlain;  // nothing in the description can make it unavailable
};

// The name by which an entry is selected: its Symbolic, else the name that the description gave it.
std::string_view entrySymbolic(const Description& description, NodeIndex entry);

class EntryTable final : public Derived {
 public:
  EntryTable(const Description& description, NodeIndex enumeration);
  static const EntryTable& of(const Description& description, NodeIndex enumeration);

  // Description order.
  const std::vector<EntryRecord>& entries() const { return entries_; }
  // The entry's place in entries(), or -1.
  int findSymbolic(std::string_view symbolic) const;
  // All entries with that value, in description order.
  std::pair<const uint32_t*, const uint32_t*> withValue(int64_t value) const;

 private:
  std::vector<EntryRecord> entries_;
  std::vector<uint32_t> byValue_;
  std::vector<uint32_t> bySymbolic_;
};

}  // namespace GENAPI_NAMESPACE

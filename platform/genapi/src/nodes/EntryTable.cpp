#include "nodes/EntryTable.h"

#include <algorithm>
#include <numeric>

#include "description/Description.h"
#include "description/ElementRules.h"

namespace GENAPI_NAMESPACE {

std::string_view entrySymbolic(const Description& description, NodeIndex entry) {
  if (const Property* given = description.find(entry, Element::Symbolic)) return given->value();
  return description.entryName(entry);
}

EntryTable::EntryTable(const Description& description, NodeIndex enumeration) {
  for (const Property& link : description.properties(enumeration)) {
    if (link.element != Element::EnumEntry && link.element != Element::pEnumEntry) continue;
    const NodeRecord& record = description.node(link.target);
    if (record.defective) continue;
    EntryRecord entry{};
    entry.node = link.target;
    entry.symbolic = entrySymbolic(description, link.target);
    entry.isPlain = record.imposedAccessMode == RW || record.imposedAccessMode == RO;
    entry.value = description.find(link.target, Element::Value)->integer;
    const Property* const numeric = description.find(link.target, Element::NumericValue);
    entry.numericValue = numeric ? numeric->real : static_cast<long double>(entry.value);
    const Property* const clearing = description.find(link.target, Element::IsSelfClearing);
    entry.isSelfClearing = clearing && clearing->word == Yes;
    for (const Property& each : description.properties(link.target)) entry.isPlain &= !kGuards.has(each.element);
    entries_.push_back(entry);
  }
  byValue_.resize(entries_.size());
  std::iota(byValue_.begin(), byValue_.end(), 0U);
  bySymbolic_ = byValue_;
  std::stable_sort(byValue_.begin(), byValue_.end(),
                   [&](uint32_t a, uint32_t b) { return entries_[a].value < entries_[b].value; });
  std::stable_sort(bySymbolic_.begin(), bySymbolic_.end(),
                   [&](uint32_t a, uint32_t b) { return entries_[a].symbolic < entries_[b].symbolic; });
}

const EntryTable& EntryTable::of(const Description& description, NodeIndex enumeration) {
  return NodeLayout::of(description).derived().get<EntryTable>(enumeration, [&] {
    return std::make_unique<const EntryTable>(description, enumeration);
  });
}

int EntryTable::findSymbolic(std::string_view symbolic) const {
  const auto found =
      std::lower_bound(bySymbolic_.begin(), bySymbolic_.end(), symbolic,
                       [&](uint32_t each, std::string_view wanted) { return entries_[each].symbolic < wanted; });
  return found != bySymbolic_.end() && entries_[*found].symbolic == symbolic ? static_cast<int>(*found) : -1;
}

std::pair<const uint32_t*, const uint32_t*> EntryTable::withValue(int64_t value) const {
  const auto first = std::lower_bound(byValue_.begin(), byValue_.end(), value,
                                      [&](uint32_t each, int64_t wanted) { return entries_[each].value < wanted; });
  auto last = first;
  while (last != byValue_.end() && entries_[*last].value == value) ++last;
  return {byValue_.data() + (first - byValue_.begin()), byValue_.data() + (last - byValue_.begin())};
}

}  // namespace GENAPI_NAMESPACE

#include "nodes/EnumerationNode.h"

#include <cmath>

#include "nodes/EnumEntryNode.h"

namespace GENAPI_NAMESPACE {

using GENICAM_NAMESPACE::gcstring;

EnumerationNode::EnumerationNode(Device& device, NodeIndex index)
    : ValueNode(device, index), table_(EntryTable::of(device.description, index)) {
  for (const Property& each : properties()) {
    if (each.element == Element::Value) constant_ = each.integer;
    if (each.element == Element::pValue) link_ = each.target;
  }
}

// --- entries ---

EAccessMode EnumerationNode::modeOf(const EntryRecord& entry) const {
  if (entry.isPlain && !device().imposed(entry.node)) return RO;
  return other(entry.node).accessMode();
}

const EntryRecord* EnumerationNode::entryOf(int64_t value) const {
  const auto [first, last] = table_.withValue(value);
  if (first == last) return nullptr;
  if (last - first > 1) {
    for (const uint32_t* each = first; each != last; ++each)
      if (isAvailable(table_.entries()[*each])) return &table_.entries()[*each];
  }
  return &table_.entries()[*first];
}

const EntryRecord& EnumerationNode::requireEntry(int64_t value) const {
  const EntryRecord* entry = entryOf(value);
  if (!entry) refuse<InvalidArgumentException>("{}: no entry with value {}", path(), value);
  return *entry;
}

const EntryRecord* EnumerationNode::currentEntry(Reading how) const {
  const bool fresh = how.ignoreCache || isClearing();
  return evaluation().answer<kEntry, const EntryRecord*>(index(), fresh, [this, how] {
    requireSound();
    return entryOf(readValue(how));
  });
}

IEnumEntry* EnumerationNode::publicEntry(const EntryRecord* entry) const {
  return entry ? static_cast<EnumEntryNode*>(&other(entry->node)) : nullptr;
}

void EnumerationNode::requireAvailable(const EntryRecord& entry) const {
  if (!isAvailable(entry)) refuse<AccessException>("{}: entry '{}' is not available", path(), entry.symbolic);
}

void EnumerationNode::verifyEntry(int64_t value) const { requireAvailable(requireEntry(value)); }

EAccessMode EnumerationNode::typeMode() const {
  const EAccessMode own = holdsOwnValue() ? RW : other(link_).accessMode();
  bool allUnimplemented = true;
  for (const EntryRecord& each : table_.entries()) {
    const EAccessMode mode = modeOf(each);
    if (IsAvailable(mode)) return own;
    if (mode != NI) allUnimplemented = false;
  }
  return allUnimplemented ? NI : Combine(own, NA);
}

// --- the value ---

void EnumerationNode::noteCurrent(int64_t value) const {
  const bool wasClearing = isClearing();
  if (wasClearing && value == evaluation().activity(index()).value) return;
  const EntryRecord* entry = entryOf(value);
  if (entry && entry->isSelfClearing)
    evaluation().beginActivity(index(), value);
  else
    evaluation().endActivity(index());
  if (wasClearing) device().dispatch.noticed(index());
}

int64_t EnumerationNode::compute(bool fresh) const {
  requireSound();
  if (holdsOwnValue()) return evaluation().heldValue(index(), constant_);
  return other(link_).readInteger({.ignoreCache = fresh, .asSource = true});
}

int64_t EnumerationNode::readValue(Reading how) const {
  const bool fresh = how.ignoreCache || isClearing();
  const int64_t current =
      evaluation().answer<kValue, int64_t>(index(), fresh, [this, fresh] { return compute(fresh); });
  if (!holdsOwnValue()) noteCurrent(current);
  return current;
}

int64_t EnumerationNode::readInteger(Reading how) const {
  if (!how.asSource) return readValue(how);
  constexpr long double kTwoTo63 = 9223372036854775808.0L;
  const long double rounded = std::round(requireEntry(readValue(how)).numericValue);
  if (!(rounded >= -kTwoTo63 && rounded < kTwoTo63))
    refuse<RuntimeException>("{}: the numeric value of the current entry does not fit a 64-bit integer", path());
  return static_cast<int64_t>(rounded);
}

double EnumerationNode::readFloat(Reading how) const {
  const int64_t current = readValue(how);
  return how.asSource ? static_cast<double>(requireEntry(current).numericValue) : static_cast<double>(current);
}

void EnumerationNode::writeEntry(const EntryRecord& entry, bool verify) const {
  write(
      verify, [&] { requireAvailable(entry); },
      [&] {
        if (holdsOwnValue()) return evaluation().holdValue(index(), entry.value);
        other(link_).writeInteger(entry.value, verify);
        if (entry.isSelfClearing)
          evaluation().beginActivity(index(), entry.value);
        else
          evaluation().endActivity(index());
      });
}

// Numbers from other nodes choose the entry whose numeric value is nearest.
void EnumerationNode::writeNearest(long double number, bool verify) const {
  const EntryRecord* nearest = nullptr;
  long double distance = 0;
  for (const EntryRecord& each : table_.entries()) {
    if (!isAvailable(each)) continue;
    const long double away = std::fabs(each.numericValue - number);
    if (!nearest || away < distance) {
      nearest = &each;
      distance = away;
    }
  }
  if (!nearest) refuse<AccessException>("{}: no entry is available", path());
  writeEntry(*nearest, verify);
}

void EnumerationNode::writeFloat(double value, bool verify) const {
  if (std::isnan(value)) refuse<OutOfRangeException>("{}: not a number has no nearest entry", path());
  writeNearest(value, verify);
}

void EnumerationNode::writeInteger(int64_t value, bool verify) const {
  writeNearest(static_cast<long double>(value), verify);
}

// --- the public interface ---

const EntryRecord& EnumerationNode::readEntry(Reading how) const {
  const EntryRecord* entry = currentEntry(how);
  // The second read may find a valid value where the first did not: a port that calls back keeps nothing remembered.
  if (!entry) entry = &requireEntry(readValue({}));
  if (how.verify) requireAvailable(*entry);
  return *entry;
}

gcstring EnumerationNode::ToString(bool Verify, bool IgnoreCache) {
  return reading([&] { return gcstring(readEntry({.verify = Verify, .ignoreCache = IgnoreCache}).symbolic); });
}

void EnumerationNode::writeText(std::string_view value, bool verify) const {
  const int found = table_.findSymbolic(value);
  if (found < 0) refuse<InvalidArgumentException>("{}: no entry named '{}'", name(), shownText(value));
  writeEntry(table_.entries()[static_cast<size_t>(found)], verify);
}

void EnumerationNode::GetSymbolics(StringList_t& Symbolics) {
  asking([&] {
    Symbolics.clear();
    for (const EntryRecord& each : table_.entries())
      if (isAvailable(each)) Symbolics.push_back(gcstring(each.symbolic));
  });
}

void EnumerationNode::GetEntries(NodeList_t& Entries) {
  Entries.clear();
  Entries.reserve(properties().size());
  for (const Property& each : properties())
    if (each.element == Element::EnumEntry || each.element == Element::pEnumEntry)
      Entries.push_back(&other(each.target));
}

void EnumerationNode::SetIntValue(int64_t Value, bool Verify) {
  writing(Verify, [&] {
    const EntryRecord* entry = entryOf(Value);
    if (!entry) refuse<InvalidArgumentException>("{}: no entry with value {}", name(), Value);
    writeEntry(*entry, Verify);
  });
}

int64_t EnumerationNode::GetIntValue(bool Verify, bool IgnoreCache) {
  return reading([&] {
    const int64_t current = readValue({.ignoreCache = IgnoreCache});
    if (Verify) verifyEntry(current);
    return current;
  });
}

IEnumEntry* EnumerationNode::GetEntryByName(const gcstring& Symbolic) {
  const int found = table_.findSymbolic(Symbolic.view());
  return found < 0 ? nullptr : publicEntry(&table_.entries()[static_cast<size_t>(found)]);
}

IEnumEntry* EnumerationNode::GetEntry(const int64_t IntValue) {
  return device().dispatch.operate(index(), [&] { return publicEntry(entryOf(IntValue)); });
}

IEnumEntry* EnumerationNode::GetCurrentEntry(bool Verify, bool IgnoreCache) {
  return reading([&] {
    const EntryRecord* entry = currentEntry({.ignoreCache = IgnoreCache});
    if (Verify) verifyEntry(readValue({}));
    return publicEntry(entry);
  });
}

std::string EnumerationNode::describeValue(int64_t value) const {
  const EntryRecord* entry = entryOf(value);
  if (!entry) return std::to_string(value);
  const NodeBase& node = other(entry->node);
  return std::string(node.GetDisplayName().view()) + ": " + std::string(node.GetToolTip().view());
}

int64_t EnumerationNode::entryValue(std::string_view symbolic) const {
  const int found = table_.findSymbolic(symbolic);
  if (found < 0) refuse<RuntimeException>("{}: no entry named '{}'", path(), symbolic);
  return table_.entries()[static_cast<size_t>(found)].value;
}

}  // namespace GENAPI_NAMESPACE

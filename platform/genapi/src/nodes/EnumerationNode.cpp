#include "nodes/EnumerationNode.h"

#include <cmath>

#include "Base/GCException.h"
#include "nodes/EnumEntryNode.h"

namespace GENAPI_NAMESPACE {

using GENICAM_NAMESPACE::gcstring;

EnumerationNode::EnumerationNode(NodeMap& map, NodeIndex index)
    : NodeBase(map, index), table_(&EntryTable::of(map.description(), index)) {
  for (const Property& each : properties()) {
    if (each.element == Element::Value) held_ = each.integer;
    if (each.element == Element::pValue) link_ = each.target;
  }
}

EAccessMode EnumerationNode::modeOf(const EntryRecord& entry) const {
  if (entry.isPlain && !(map().state(entry.node).flags & kImposed)) return RO;
  return map().node(entry.node).accessMode();
}

bool EnumerationNode::isAvailable(const EntryRecord& entry) const {
  return IsAvailable(modeOf(entry));
}

const EntryRecord* EnumerationNode::entryOf(int64_t value) const {
  if (soleEntry_ && soleEntry_->value == value) return soleEntry_;
  const auto [first, last] = table().withValue(value);
  if (first == last) return nullptr;
  const EntryRecord* const entry = &table().entries()[*first];
  if (last - first == 1) {
    soleEntry_ = entry;
    return entry;
  }
  for (const uint32_t* each = first; each != last; ++each) {
    if (isAvailable(table().entries()[*each])) return &table().entries()[*each];
  }
  return entry;
}

IEnumEntry* EnumerationNode::publicEntry(const EntryRecord* entry) const {
  return entry ? static_cast<EnumEntryNode*>(&map().node(entry->node)) : nullptr;
}

EAccessMode EnumerationNode::typeMode() {
  const EAccessMode own = isFloating() ? RW : map().node(link_).accessMode();
  bool allUnimplemented = true;
  for (const EntryRecord& each : table().entries()) {
    const EAccessMode mode = modeOf(each);
    if (IsAvailable(mode)) return own;
    if (mode != NI) allUnimplemented = false;
  }
  return allUnimplemented ? NI : Combine(own, NA);
}

// While the current entry clears itself, the device is asked each time; a change seen then concerns all dependents.
void EnumerationNode::noteCurrent(int64_t value) {
  const bool wasClearing = clearing_;
  if (wasClearing && value == clearingValue_) return;
  const EntryRecord* entry = entryOf(value);
  clearing_ = false;
  if (entry && entry->isSelfClearing) beginClearing(value);
  if (!wasClearing) return;
  if (map().isPolling()) {
    map().changed(index());
  } else {
    map().dropDependents(index());
  }
}

void EnumerationNode::beginClearing(int64_t value) {
  if (clearing_ && value == clearingValue_) return;
  clearing_ = true;
  clearingValue_ = value;
  ++clearings_;
}

int64_t EnumerationNode::value(Reading how) {
  if (isFloating()) return held_;
  NodeState& mine = state();
  if ((mine.flags & kHasValue) && !how.ignoreCache && !clearing_) {
    if (EvaluationStep* asking = map().evaluation()) asking->noteConsumption();
    return value_;
  }
  int64_t value;
  {
    const EvaluationStep step(map(), *this);
    value = map().node(link_).readInteger({.ignoreCache = how.ignoreCache || clearing_, .asSource = true});
    if (!isUncached() && step.isUnspoiled()) {
      value_ = value;
      mine.flags |= kHasValue | kValid;
    }
  }
  noteCurrent(value);
  return value;
}

int64_t EnumerationNode::readInteger(Reading how) {
  const int64_t current = value(how);
  if (!how.asSource) return current;
  constexpr long double kTwoTo63 = 9223372036854775808.0L;
  const long double rounded = std::round(numericValue(current));
  if (!(rounded >= -kTwoTo63 && rounded < kTwoTo63)) {
    throw RUNTIME_EXCEPTION("%s: the numeric value of the current entry does not fit a 64-bit integer",
                            map().pathTo(*this).c_str());
  }
  return static_cast<int64_t>(rounded);
}

double EnumerationNode::readFloat(Reading how) {
  const int64_t current = value(how);
  return static_cast<double>(how.asSource ? numericValue(current) : static_cast<long double>(current));
}

long double EnumerationNode::numericValue(int64_t value) const {
  const EntryRecord* entry = entryOf(value);
  if (!entry) {
    throw INVALID_ARGUMENT_EXCEPTION("%s: no entry with value %ld", map().pathTo(*this).c_str(),
                                     static_cast<long>(value));
  }
  return entry->numericValue;
}

void EnumerationNode::write(const EntryRecord& entry, bool verify) {
  const EvaluationStep step(map(), *this);
  if (verify && !isAvailable(entry)) {
    throw ACCESS_EXCEPTION("%s: entry '%s' is not available", map().pathTo(*this).c_str(),
                           zeroTerminated(entry.symbolic).c_str());
  }
  if (isFloating()) {
    held_ = entry.value;
  } else {
    map().node(link_).writeInteger(entry.value, verify);
  }
  if (entry.isSelfClearing && !isFloating()) {
    beginClearing(entry.value);
  } else {
    clearing_ = false;
  }
  completeWrite();
  if (verify) checkErrors();
}

// Numbers from other nodes choose the entry whose numeric value is nearest.
void EnumerationNode::writeNearest(long double value, bool verify) {
  const EntryRecord* nearest = nullptr;
  long double distance = 0;
  for (const EntryRecord& each : table().entries()) {
    if (!isAvailable(each)) continue;
    const long double away = std::fabs(each.numericValue - value);
    if (!nearest || away < distance) {
      nearest = &each;
      distance = away;
    }
  }
  if (!nearest) throw ACCESS_EXCEPTION("%s: no entry is available", map().pathTo(*this).c_str());
  write(*nearest, verify);
}

void EnumerationNode::writeFloat(double value, bool verify) {
  if (std::isnan(value)) {
    throw OUT_OF_RANGE_EXCEPTION("%s: not a number has no nearest entry", map().pathTo(*this).c_str());
  }
  writeNearest(value, verify);
}

void EnumerationNode::writeInteger(int64_t value, bool verify) {
  writeNearest(static_cast<long double>(value), verify);
}

void EnumerationNode::verifyEntry(int64_t value) {
  const EntryRecord* entry = entryOf(value);
  if (!entry) {
    throw INVALID_ARGUMENT_EXCEPTION("%s: no entry with value %ld", map().pathTo(*this).c_str(),
                                     static_cast<long>(value));
  }
  if (!isAvailable(*entry)) {
    throw ACCESS_EXCEPTION("%s: entry '%s' is not available", map().pathTo(*this).c_str(),
                           zeroTerminated(entry->symbolic).c_str());
  }
}

gcstring EnumerationNode::ToString(bool Verify, bool IgnoreCache) {
  return reading([&] {
    const int64_t current = value({.ignoreCache = IgnoreCache});
    const EntryRecord* entry = entryOf(current);
    if (Verify || !entry) verifyEntry(current);
    return gcstring(entry->symbolic);
  });
}

void EnumerationNode::FromString(const gcstring& ValueStr, bool Verify) {
  writing(Verify, [&] {
    const int found = table().findSymbolic(ValueStr.view());
    if (found < 0) {
      throw INVALID_ARGUMENT_EXCEPTION("%s: no entry named '%s'", zeroTerminated(name()).c_str(),
                                       shownText(ValueStr.view()).c_str());
    }
    write(table().entries()[static_cast<size_t>(found)], Verify);
  });
}

bool EnumerationNode::IsValueCacheValid() const {
  if (isFloating()) return true;
  const AutoLock lock(map().GetLock());
  return !isUncached() && (state().flags & kValid) != 0;
}

void EnumerationNode::GetSymbolics(StringList_t& Symbolics) {
  asked([&] {
    Symbolics.clear();
    for (const EntryRecord& each : table().entries()) {
      if (isAvailable(each)) Symbolics.push_back(gcstring(each.symbolic));
    }
  });
}

void EnumerationNode::GetEntries(NodeList_t& Entries) {
  Entries.clear();
  Entries.reserve(properties().size());
  for (const Property& each : properties()) {
    if (each.element == Element::EnumEntry || each.element == Element::pEnumEntry) {
      Entries.push_back(&map().node(each.target));
    }
  }
}

void EnumerationNode::SetIntValue(int64_t Value, bool Verify) {
  writing(Verify, [&] {
    const EntryRecord* entry = entryOf(Value);
    if (!entry) {
      throw INVALID_ARGUMENT_EXCEPTION("%s: no entry with value %ld", zeroTerminated(name()).c_str(),
                                       static_cast<long>(Value));
    }
    write(*entry, Verify);
  });
}

int64_t EnumerationNode::GetIntValue(bool Verify, bool IgnoreCache) {
  return reading([&] {
    const int64_t current = value({.ignoreCache = IgnoreCache});
    if (Verify) verifyEntry(current);
    return current;
  });
}

IEnumEntry* EnumerationNode::GetEntryByName(const gcstring& Symbolic) {
  const int found = table().findSymbolic(Symbolic.view());
  return found < 0 ? nullptr : publicEntry(&table().entries()[static_cast<size_t>(found)]);
}

IEnumEntry* EnumerationNode::GetEntry(const int64_t IntValue) {
  return map().operate(this, [&] { return publicEntry(entryOf(IntValue)); });
}

IEnumEntry* EnumerationNode::GetCurrentEntry(bool Verify, bool IgnoreCache) {
  return reading([&] {
    const int64_t current = value({.ignoreCache = IgnoreCache});
    if (Verify) verifyEntry(current);
    return publicEntry(entryOf(current));
  });
}

std::string EnumerationNode::describeValue(int64_t value) const {
  const EntryRecord* entry = entryOf(value);
  if (!entry) return std::to_string(value);
  const NodeBase& node = map().node(entry->node);
  return std::string(node.GetDisplayName().view()) + ": " + std::string(node.GetToolTip().view());
}

int64_t EnumerationNode::entryValue(std::string_view symbolic) {
  const int found = table().findSymbolic(symbolic);
  if (found < 0) {
    throw RUNTIME_EXCEPTION("%s: no entry named '%s'", map().pathTo(*this).c_str(), zeroTerminated(symbolic).c_str());
  }
  return table().entries()[static_cast<size_t>(found)].value;
}

}  // namespace GENAPI_NAMESPACE

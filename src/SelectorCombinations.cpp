#include "SelectorCombinations.h"

#include <algorithm>
#include <functional>
#include <limits>

#include "Failure.h"
#include "SettingsText.h"

namespace orxGenApi {

using namespace GENAPI_NAMESPACE;
using GENICAM_NAMESPACE::gcstring;

SelectorValues::SelectorValues(IValue* selector, bool counted)
    : selector_(selector), name_(selector->GetNode()->GetName(true)), counted_(counted) {}

SelectorValues SelectorValues::counted(IValue* selector, int64_t minimum, int64_t maximum, int64_t increment) {
  SelectorValues values(selector, true);
  values.minimum_ = values.current_ = minimum;
  values.maximum_ = maximum;
  values.increment_ = increment;
  values.takeTurn();
  return values;
}

SelectorValues SelectorValues::listed(IValue* selector, std::vector<gcstring> symbols) {
  SelectorValues values(selector, false);
  values.symbols_ = std::move(symbols);
  if (!values.empty()) values.takeTurn();
  return values;
}

uint64_t SelectorValues::size() const {
  if (!counted_) return symbols_.size();
  const uint64_t steps =
      (static_cast<uint64_t>(maximum_) - static_cast<uint64_t>(minimum_)) / static_cast<uint64_t>(increment_);
  return std::max(steps, steps + 1);
}

void SelectorValues::takeTurn() {
  if (counted_)
    value_ = gcstring(std::to_string(current_));
  else
    value_ = symbols_[index_];
}

bool SelectorValues::advance() {
  bool moved;
  if (counted_) {
    // Compared as a distance, because current + increment may lie beyond the largest integer.
    moved = static_cast<uint64_t>(maximum_) - static_cast<uint64_t>(current_) >= static_cast<uint64_t>(increment_);
    current_ = moved ? current_ + increment_ : minimum_;
  } else {
    moved = index_ + 1 < symbols_.size();
    index_ = moved ? index_ + 1 : 0;
  }
  takeTurn();
  return moved;
}

void SelectorValues::select() const {
  if (selector_->ToString(false, false) != value_) selector_->FromString(value_, true);
}

void SelectorValues::appendTo(std::string& list) const {
  list += name_.view();
  list += '(';
  list += value_.view();
  list += ')';
}

namespace {

std::vector<gcstring> availableSymbols(IEnumeration& selector) {
  NodeList_t entries;
  selector.GetEntries(entries);
  std::vector<gcstring> symbols;
  symbols.reserve(entries.size());
  for (INode* node : entries) {
    const CEnumEntryPtr entry(node);
    if (IsAvailable(entry)) symbols.push_back(entry->GetSymbolic());
  }
  return symbols;
}

void addUsable(INode& feature, IValue* selector, std::vector<SelectorValues>& selectors) {
  if (selector == nullptr) return;
  const EAccessMode mode = selector->GetAccessMode();
  if (!IsReadable(mode)) return;
  if (const CIntegerPtr integer(selector); integer.IsValid()) {
    const int64_t minimum = integer->GetMin();
    const int64_t maximum = integer->GetMax();
    if (maximum < minimum) return;
    if (!IsWritable(mode)) {
      const int64_t current = integer->GetValue(false, false);
      selectors.push_back(SelectorValues::counted(selector, current, current, 1));
      return;
    }
    const int64_t increment = integer->GetInc();
    if (increment <= 0) {
      throw orx_error(kSettingDoesNotHold, "increment " + std::to_string(increment) + " of selector '" +
                                               selector->GetNode()->GetName(true).c_str() + "' leads nowhere");
    }
    selectors.push_back(SelectorValues::counted(selector, minimum, maximum, increment));
  } else if (const CEnumerationPtr enumeration(selector); enumeration.IsValid()) {
    // A read-only enumeration is visited like a writable one; setting it to another entry fails at the node.
    selectors.push_back(SelectorValues::listed(selector, availableSymbols(*enumeration)));
  } else {
    throw orx_error(OXGENAPI_E_FEATURE_TYPE, std::string(feature.GetName(true).view()) +
                                                 ": Invalid selector type of node '" +
                                                 selector->GetNode()->GetName(true).c_str() + "'");
  }
}

}  // namespace

SelectorCombinations::SelectorCombinations(INode& feature) {
  const CSelectorPtr selected(&feature);
  FeatureList_t selecting;
  selected->GetSelectingFeatures(selecting);
  std::sort(selecting.begin(), selecting.end(), std::less<IValue*>());
  selecting.erase(std::unique(selecting.begin(), selecting.end()), selecting.end());
  for (IValue* selector : selecting) addUsable(feature, selector, selectors_);
  requireFew();
}

void SelectorCombinations::requireFew() const {
  if (empty()) return;
  uint64_t count = 1;
  for (const SelectorValues& values : selectors_) {
    if (!__builtin_mul_overflow(count, values.size(), &count)) continue;
    count = std::numeric_limits<uint64_t>::max();
    break;
  }
  if (count <= kMaxSelectorCombinations) return;
  throw orx_error(kSettingDoesNotHold, std::to_string(count) + " selector combinations, more than " +
                                           std::to_string(kMaxSelectorCombinations));
}

bool SelectorCombinations::empty() const {
  return std::any_of(selectors_.begin(), selectors_.end(), [](const SelectorValues& values) { return values.empty(); });
}

bool SelectorCombinations::advance() {
  return std::any_of(selectors_.rbegin(), selectors_.rend(), [](SelectorValues& values) { return values.advance(); });
}

void SelectorCombinations::select() const {
  for (const SelectorValues& values : selectors_) values.select();
}

void SelectorCombinations::appendTo(std::string& text) const {
  if (selectors_.empty()) return;
  char separator = '[';
  for (const SelectorValues& values : selectors_) {
    text += separator;
    values.appendTo(text);
    separator = ',';
  }
  text += ']';
}

}  // namespace orxGenApi

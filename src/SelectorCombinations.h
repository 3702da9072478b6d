// All combinations of the values that a feature's selectors can take, visited one after the other.
#pragma once
#include <cstdint>
#include <string>
#include <vector>

#include "Base/GCString.h"
#include "GenApi/GenApi.h"

namespace orxGenApi {

// Combinations of the selector values of one feature that are saved: a table of 16 bits in four channels. A register
// that answers garbage for a limit makes billions.
inline constexpr uint64_t kMaxSelectorCombinations = 262144;

// The values of one selector and the one that is its turn. Integers are counted, never listed: their range may hold
// 2^63 values.
class SelectorValues {
 public:
  // A writable integer: from minimum to maximum in steps; minimum <= maximum, increment > 0.
  static SelectorValues counted(GENAPI_NAMESPACE::IValue* selector, int64_t minimum, int64_t maximum,
                                int64_t increment);
  // The names of enumeration entries, in order.
  static SelectorValues listed(GENAPI_NAMESPACE::IValue* selector, std::vector<GENICAM_NAMESPACE::gcstring> symbols);

  GENAPI_NAMESPACE::IValue* selector() const { return selector_; }
  bool empty() const { return size() == 0; }
  // How many values; the largest number for more.
  uint64_t size() const;

  // Moves on to the next value; back to the first, with false, when there is none.
  bool advance();
  // Gives the selector its value, unless it has it already.
  void select() const;
  // "LUTIndex(0)"
  void appendTo(std::string& list) const;

 private:
  SelectorValues(GENAPI_NAMESPACE::IValue* selector, bool counted);
  void takeTurn();

  GENAPI_NAMESPACE::IValue* selector_;
  GENICAM_NAMESPACE::gcstring name_;
  bool counted_;
  int64_t minimum_ = 0, maximum_ = 0, increment_ = 1, current_ = 0;
  std::vector<GENICAM_NAMESPACE::gcstring> symbols_;
  size_t index_ = 0;
  GENICAM_NAMESPACE::gcstring value_;  // the text of the value whose turn it is
};

// Like an odometer over the usable selectors of a feature, which stand in the order of their value objects' addresses;
// the last one turns fastest. Value sets are taken once, at construction.
class SelectorCombinations {
 public:
  // Usable is a selector that can be read: a writable integer with its whole range, a read-only one with its current
  // value, an enumeration with those entries that are available. Integers whose maximum lies below the minimum are left
  // out. Throws orx_error 0x8000002f for a readable selector of another type, 0x8000002d for an increment that is not
  // positive and for more than kMaxSelectorCombinations, and what the nodes throw.
  explicit SelectorCombinations(GENAPI_NAMESPACE::INode& feature);

  bool hasSelectors() const { return !selectors_.empty(); }
  // True when a selector has no value at all, so that there is no combination.
  bool empty() const;
  // Moves on to the next combination; false when all have been visited.
  bool advance();
  // Gives every selector its value of this combination.
  void select() const;
  // "[LUTIndex(0),LUTSelector(Luminance)]", nothing for a feature without selectors.
  void appendTo(std::string& text) const;

 private:
  void requireFew() const;

  std::vector<SelectorValues> selectors_;
};

}  // namespace orxGenApi

// Names to enumerators and back. Loading looks every element of a description up here, so the tables are hashed at
// compile time and a lookup is one probe and one comparison.
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <utility>

#include "description/Element.h"

namespace GENAPI_NAMESPACE {
namespace {

#define GENAPI_NAME(name, ...) #name,
constexpr std::string_view kElementNames[] = {"", GENAPI_ELEMENTS(GENAPI_NAME)};
constexpr std::string_view kNodeTypeNames[] = {GENAPI_NODE_TYPES(GENAPI_NAME)};
#undef GENAPI_NAME

// An older name of the same node type.
constexpr std::string_view kDcamLock = "DcamLock";

// Words of up to sixteen bytes, each as two numbers filled up with zeros: they are found with neither their length
// known nor a loop over their bytes.
template <size_t Size>
class WordTable {
 public:
  static constexpr size_t kLongest = 16;

  // `value` is not 0.
  constexpr void add(std::string_view word, size_t value) {
    const auto [low, high] = halvesOf(word);
    size_t slot = slotOf(low, high);
    while (entries_[slot].value != 0) slot = (slot + 1) % Size;
    entries_[slot] = {low, high, static_cast<uint8_t>(value)};
  }
  // 0 when there is no such word.
  constexpr size_t find(uint64_t low, uint64_t high) const {
    size_t slot = slotOf(low, high);
    while (entries_[slot].value != 0 && (entries_[slot].low != low || entries_[slot].high != high))
      slot = (slot + 1) % Size;
    return entries_[slot].value;
  }
  constexpr size_t find(std::string_view word) const {
    if (word.size() > kLongest) return 0;
    const auto [low, high] = halvesOf(word);
    return find(low, high);
  }

 private:
  struct Entry {
    uint64_t low = 0, high = 0;
    uint8_t value = 0;
  };
  static constexpr std::pair<uint64_t, uint64_t> halvesOf(std::string_view word) {
    uint64_t low = 0, high = 0;
    for (size_t at = 0; at < word.size(); ++at) {
      const uint64_t byte = static_cast<unsigned char>(word[at]);
      (at < 8 ? low : high) |= byte << (at % 8 * 8);
    }
    return {low, high};
  }
  static constexpr size_t slotOf(uint64_t low, uint64_t high) {
    return static_cast<size_t>((low ^ high * 31) * 0x9E3779B97F4A7C15u >> 32) % Size;
  }
  std::array<Entry, Size> entries_{};
};

// The one name that is longer than the table's words.
constexpr Element kLongElement = Element::ImposedAccessMode;

constexpr WordTable<256> makeElementTable() {
  WordTable<256> table;
  for (size_t i = 1; i < static_cast<size_t>(Element::Offset); ++i)
    if (i != static_cast<size_t>(kLongElement)) table.add(kElementNames[i], i);
  return table;
}

// Values are one more than the type's number.
constexpr WordTable<64> makeNodeTypeTable() {
  WordTable<64> table;
  for (size_t i = 0; i < kNodeTypes; ++i) table.add(kNodeTypeNames[i], i + 1);
  table.add(kDcamLock, static_cast<size_t>(NodeType::AdvFeatureLock) + 1);
  return table;
}

constexpr WordTable<256> kElementTable = makeElementTable();
constexpr WordTable<64> kNodeTypeTable = makeNodeTypeTable();

// Eight bytes, the first one lowest.
uint64_t wordAt(const char* bytes) {
  uint64_t word;
  std::memcpy(&word, bytes, sizeof word);
  return std::endian::native == std::endian::little ? word : __builtin_bswap64(word);
}

// The highest bit of the lowest byte that is zero; 0 if none is.
uint64_t firstZeroByte(uint64_t word) {
  const uint64_t zeros = (word - 0x0101010101010101u) & ~word & 0x8080808080808080u;
  return zeros & -zeros;
}

// The bytes below the one that firstZeroByte found; all if it found none.
uint64_t below(uint64_t found) { return (found >> 7) - 1; }

}  // namespace

std::string_view elementName(Element element) { return kElementNames[static_cast<size_t>(element)]; }

std::string_view nodeTypeName(NodeType type) { return kNodeTypeNames[static_cast<size_t>(type)]; }

Element elementOf(std::string_view name) {
  if (name == elementName(kLongElement)) return kLongElement;
  return static_cast<Element>(kElementTable.find(name));
}

Element elementAt(const char* name) {
  uint64_t low = wordAt(name), high = wordAt(name + 8);
  const uint64_t lowEnd = firstZeroByte(low), highEnd = firstZeroByte(high);
  if ((lowEnd | highEnd) == 0) return elementOf(name);
  low &= below(lowEnd);
  high &= lowEnd == 0 ? below(highEnd) : 0;
  return static_cast<Element>(kElementTable.find(low, high));
}

std::optional<NodeType> nodeTypeOf(std::string_view name) {
  const size_t found = kNodeTypeTable.find(name);
  if (found == 0) return std::nullopt;
  return static_cast<NodeType>(found - 1);
}

}  // namespace GENAPI_NAMESPACE

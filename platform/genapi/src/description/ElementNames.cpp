// Names to enumerators and back. Loading looks every element of a description up here, so the tables are hashed at
// compile time and a lookup is one probe and one comparison.
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

#include "description/Element.h"

namespace GENAPI_NAMESPACE {
namespace {

constexpr std::string_view kElementNames[] = {
    "",
    "ToolTip",
    "Description",
    "DisplayName",
    "Visibility",
    "DocuURL",
    "IsDeprecated",
    "EventID",
    "pIsImplemented",
    "pIsAvailable",
    "pIsLocked",
    "pBlockPolling",
    "ImposedAccessMode",
    "pError",
    "pAlias",
    "pCastAlias",
    "pInvalidator",
    "Streamable",
    "PollingTime",
    "Value",
    "pValue",
    "pValueCopy",
    "pIndex",
    "ValueIndexed",
    "pValueIndexed",
    "ValueDefault",
    "pValueDefault",
    "Min",
    "pMin",
    "Max",
    "pMax",
    "Inc",
    "pInc",
    "Unit",
    "Representation",
    "ValidValueSet",
    "DisplayNotation",
    "DisplayPrecision",
    "pSelected",
    "OnValue",
    "OffValue",
    "CommandValue",
    "pCommandValue",
    "EnumEntry",
    "NumericValue",
    "Symbolic",
    "IsSelfClearing",
    "Address",
    "pAddress",
    "Length",
    "pLength",
    "AccessMode",
    "pPort",
    "Cachable",
    "Sign",
    "Endianess",
    "Bit",
    "LSB",
    "MSB",
    "ChunkID",
    "pChunkID",
    "SwapEndianess",
    "CacheChunkData",
    "pVariable",
    "Constant",
    "Expression",
    "Formula",
    "FormulaTo",
    "FormulaFrom",
    "Slope",
    "IsLinear",
    "pFeature",
    "pEnumEntry",
    "IntSwissKnife",
    "StructEntry",
    "Comment",
    "Extension",
    "p1212Parser",
    "Key",
    "FeatureID",
    "Timeout",
    "TextDesc",
    "IntKey",
    "Offset",
    "pOffset",
    "Index",
};
static_assert(std::size(kElementNames) == kElements);

constexpr std::string_view kNodeTypeNames[] = {
    "Node",      "Category", "Integer",  "IntReg",    "MaskedIntReg", "Boolean",    "Command",        "Enumeration",
    "EnumEntry", "Float",    "FloatReg", "Converter", "IntConverter", "SwissKnife", "IntSwissKnife",  "String",
    "StringReg", "Register", "Port",     "ConfRom",   "TextDesc",     "IntKey",     "AdvFeatureLock", "SmartFeature",
};
static_assert(std::size(kNodeTypeNames) == kNodeTypes);

// An older name of the same node type.
constexpr std::string_view kDcamLock = "DcamLock";

constexpr size_t slotOf(std::string_view name) {
  const auto at = [&](size_t index) { return static_cast<size_t>(static_cast<unsigned char>(name[index])); };
  return name.size() * 5 + at(0) * 7 + at(name.size() / 2) * 31 + at(name.size() - 1) * 113 + at(name.size() / 4) * 211;
}

struct Slot {
  std::string_view name;
  uint8_t value = 0;
};

template <size_t Size>
class WordTable {
 public:
  constexpr void add(std::string_view name, size_t value) {
    size_t slot = slotOf(name) % Size;
    while (!slots_[slot].name.empty()) slot = (slot + 1) % Size;
    slots_[slot] = {name, static_cast<uint8_t>(value)};
  }
  // The slot of that name, or an empty one.
  constexpr const Slot& find(std::string_view name) const {
    size_t slot = slotOf(name) % Size;
    while (!slots_[slot].name.empty() && slots_[slot].name != name) slot = (slot + 1) % Size;
    return slots_[slot];
  }

 private:
  std::array<Slot, Size> slots_{};
};

constexpr WordTable<512> makeElementTable() {
  WordTable<512> table;
  for (size_t i = 1; i < static_cast<size_t>(Element::Offset); ++i) table.add(kElementNames[i], i);
  return table;
}

constexpr WordTable<128> makeNodeTypeTable() {
  WordTable<128> table;
  for (size_t i = 0; i < kNodeTypes; ++i) table.add(kNodeTypeNames[i], i);
  table.add(kDcamLock, static_cast<size_t>(NodeType::AdvFeatureLock));
  return table;
}

constexpr WordTable<512> kElementTable = makeElementTable();

// Most elements of a description are found in here, with neither their length known nor a loop over their bytes: names
// of up to sixteen bytes as two words, filled up with zeros.
class ShortNameTable {
 public:
  constexpr ShortNameTable() {
    for (size_t i = 1; i < static_cast<size_t>(Element::Offset); ++i) {
      if (kElementNames[i].size() > 16) continue;
      Entry entry;
      for (size_t at = 0; at < kElementNames[i].size(); ++at) {
        const uint64_t byte = static_cast<unsigned char>(kElementNames[i][at]);
        (at < 8 ? entry.low : entry.high) |= byte << (at % 8 * 8);
      }
      entry.element = static_cast<Element>(i);
      size_t slot = slotOf(entry.low, entry.high);
      while (entries_[slot].element != Element::Unknown) slot = (slot + 1) % kSize;
      entries_[slot] = entry;
    }
  }

  Element find(uint64_t low, uint64_t high) const {
    size_t slot = slotOf(low, high);
    for (; entries_[slot].element != Element::Unknown; slot = (slot + 1) % kSize) {
      if (entries_[slot].low == low && entries_[slot].high == high) return entries_[slot].element;
    }
    return Element::Unknown;
  }

 private:
  static constexpr size_t kSize = 256;
  struct Entry {
    uint64_t low = 0, high = 0;
    Element element = Element::Unknown;
  };
  static constexpr size_t slotOf(uint64_t low, uint64_t high) {
    return static_cast<size_t>((low ^ high * 31) * 0x9E3779B97F4A7C15u >> 56);
  }
  std::array<Entry, kSize> entries_{};
};

constexpr ShortNameTable kShortNames;

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
uint64_t below(uint64_t found) {
  return (found >> 7) - 1;
}

constexpr WordTable<128> kNodeTypeTable = makeNodeTypeTable();

}  // namespace

std::string_view elementName(Element element) {
  return kElementNames[static_cast<size_t>(element)];
}

std::string_view nodeTypeName(NodeType type) {
  return kNodeTypeNames[static_cast<size_t>(type)];
}

Element elementOf(std::string_view name) {
  if (name.empty()) return Element::Unknown;
  return static_cast<Element>(kElementTable.find(name).value);
}

Element elementAt(const char* name) {
  uint64_t low = wordAt(name), high = wordAt(name + 8);
  const uint64_t lowEnd = firstZeroByte(low), highEnd = firstZeroByte(high);
  if ((lowEnd | highEnd) == 0) return elementOf(name);
  low &= below(lowEnd);
  high &= lowEnd == 0 ? below(highEnd) : 0;
  return kShortNames.find(low, high);
}

std::optional<NodeType> nodeTypeOf(std::string_view name) {
  if (name.empty()) return std::nullopt;
  const Slot& slot = kNodeTypeTable.find(name);
  if (slot.name.empty()) return std::nullopt;
  return static_cast<NodeType>(slot.value);
}

}  // namespace GENAPI_NAMESPACE

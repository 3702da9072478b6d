// Names to enumerators and back. Loading looks every element of a description up here, so the tables are hashed at
// compile time and a lookup is one probe and one comparison.
#include <array>

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

std::optional<NodeType> nodeTypeOf(std::string_view name) {
  if (name.empty()) return std::nullopt;
  const Slot& slot = kNodeTypeTable.find(name);
  if (slot.name.empty()) return std::nullopt;
  return static_cast<NodeType>(slot.value);
}

}  // namespace GENAPI_NAMESPACE

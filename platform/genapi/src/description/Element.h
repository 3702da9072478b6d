// The words of the description language: element names and node types.
#pragma once
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "Base/GCTypes.h"

namespace GENAPI_NAMESPACE {

// clang-format off
#define GENAPI_NODE_TYPES(X)                                                                                     \
  X(Node) X(Category) X(Integer) X(IntReg) X(MaskedIntReg) X(Boolean) X(Command) X(Enumeration) X(EnumEntry)     \
  X(Float) X(FloatReg) X(Converter) X(IntConverter) X(SwissKnife) X(IntSwissKnife) X(String) X(StringReg)        \
  X(Register) X(Port) X(ConfRom) X(TextDesc) X(IntKey) X(AdvFeatureLock) X(SmartFeature)

// The elements that a node may carry, and how their text is read in most node types (see Form). The last three are
// attributes with a number or a link of their own, which follow their element as a property: pIndex has Offset or
// pOffset; ValueIndexed and pValueIndexed have Index.
#define GENAPI_ELEMENTS(X)                                                                                       \
  X(ToolTip, Text) X(Description, Text) X(DisplayName, Text) X(Visibility, Word) X(DocuURL, Text)                \
  X(IsDeprecated, Word) X(EventID, HexDigits) X(pIsImplemented, Link) X(pIsAvailable, Link) X(pIsLocked, Link)   \
  X(pBlockPolling, Link) X(ImposedAccessMode, Word) X(pError, Link) X(pAlias, Link) X(pCastAlias, Link)          \
  X(pInvalidator, Link) X(Streamable, Word) X(PollingTime, Integer) X(Value, Integer) X(pValue, Link)            \
  X(pValueCopy, Link) X(pIndex, Link) X(ValueIndexed, Integer) X(pValueIndexed, Link) X(ValueDefault, Integer)   \
  X(pValueDefault, Link) X(Min, Integer) X(pMin, Link) X(Max, Integer) X(pMax, Link) X(Inc, Integer)             \
  X(pInc, Link) X(Unit, Text) X(Representation, Word) X(ValidValueSet, IntegerSet) X(DisplayNotation, Word)      \
  X(DisplayPrecision, Integer) X(pSelected, Link) X(OnValue, Integer) X(OffValue, Integer)                       \
  X(CommandValue, Integer) X(pCommandValue, Link) X(EnumEntry, Child) X(NumericValue, Real) X(Symbolic, Text)    \
  X(IsSelfClearing, Word) X(Address, Integer) X(pAddress, Link) X(Length, Integer) X(pLength, Link)              \
  X(AccessMode, Word) X(pPort, Link) X(Cachable, Word) X(Sign, Word) X(Endianess, Word) X(Bit, Integer)          \
  X(LSB, Integer) X(MSB, Integer) X(ChunkID, HexDigits) X(pChunkID, Link) X(SwapEndianess, Word)                 \
  X(CacheChunkData, Word) X(pVariable, Link) X(Constant, Integer) X(Expression, Verbatim) X(Formula, Verbatim)   \
  X(FormulaTo, Verbatim) X(FormulaFrom, Verbatim) X(Slope, Word) X(IsLinear, Word) X(pFeature, Link)             \
  X(pEnumEntry, Link) X(IntSwissKnife, Child) X(StructEntry, Ignored) X(Comment, Ignored) X(Extension, Ignored)  \
  X(p1212Parser, Link) X(Key, Integer) X(FeatureID, Text) X(Timeout, Integer) X(TextDesc, Child) X(IntKey, Child) \
  X(Offset, Integer) X(pOffset, Link) X(Index, Integer)
// clang-format on

#define GENAPI_ENUMERATOR(name, ...) name,
enum class NodeType : uint8_t { GENAPI_NODE_TYPES(GENAPI_ENUMERATOR) };
enum class Element : uint8_t { Unknown, GENAPI_ELEMENTS(GENAPI_ENUMERATOR) };
#undef GENAPI_ENUMERATOR

inline constexpr size_t kNodeTypes = static_cast<size_t>(NodeType::SmartFeature) + 1;
std::string_view nodeTypeName(NodeType type);  // as in the XML
// Also knows "DcamLock", an older name of AdvFeatureLock.
std::optional<NodeType> nodeTypeOf(std::string_view name);

inline constexpr size_t kElements = static_cast<size_t>(Element::Index) + 1;
std::string_view elementName(Element element);  // as in the XML
// Unknown for other names; attributes are no elements.
Element elementOf(std::string_view name);
// The same for a name that ends in NUL; kElementNamePadding bytes after it must be readable.
inline constexpr size_t kElementNamePadding = 16;
Element elementAt(const char* name);

}  // namespace GENAPI_NAMESPACE

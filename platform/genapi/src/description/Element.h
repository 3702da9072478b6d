// The words of the description language: element names and node types.
#pragma once
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "Base/GCTypes.h"

namespace GENAPI_NAMESPACE {

enum class NodeType : uint8_t {
  Node,
  Category,
  Integer,
  IntReg,
  MaskedIntReg,
  Boolean,
  Command,
  Enumeration,
  EnumEntry,
  Float,
  FloatReg,
  Converter,
  IntConverter,
  SwissKnife,
  IntSwissKnife,
  String,
  StringReg,
  Register,
  Port,
  ConfRom,
  TextDesc,
  IntKey,
  AdvFeatureLock,
  SmartFeature
};
inline constexpr size_t kNodeTypes = 24;
std::string_view nodeTypeName(NodeType type);  // as in the XML
// Also knows "DcamLock", an older name of AdvFeatureLock.
std::optional<NodeType> nodeTypeOf(std::string_view name);

// Elements a node may carry. The attributes that carry a number or a link of their own follow their element as a
// property: pIndex with Offset / pOffset, ValueIndexed and pValueIndexed with Index.
enum class Element : uint8_t {
  Unknown,
  // every node
  ToolTip,
  Description,
  DisplayName,
  Visibility,
  DocuURL,
  IsDeprecated,
  EventID,
  pIsImplemented,
  pIsAvailable,
  pIsLocked,
  pBlockPolling,
  ImposedAccessMode,
  pError,
  pAlias,
  pCastAlias,
  pInvalidator,
  Streamable,
  PollingTime,
  // values
  Value,
  pValue,
  pValueCopy,
  pIndex,
  ValueIndexed,
  pValueIndexed,
  ValueDefault,
  pValueDefault,
  Min,
  pMin,
  Max,
  pMax,
  Inc,
  pInc,
  Unit,
  Representation,
  ValidValueSet,
  DisplayNotation,
  DisplayPrecision,
  pSelected,
  OnValue,
  OffValue,
  CommandValue,
  pCommandValue,
  EnumEntry,
  NumericValue,
  Symbolic,
  IsSelfClearing,
  // registers and ports
  Address,
  pAddress,
  Length,
  pLength,
  AccessMode,
  pPort,
  Cachable,
  Sign,
  Endianess,
  Bit,
  LSB,
  MSB,
  ChunkID,
  pChunkID,
  SwapEndianess,
  CacheChunkData,
  // formulas
  pVariable,
  Constant,
  Expression,
  Formula,
  FormulaTo,
  FormulaFrom,
  Slope,
  IsLinear,
  // structure
  pFeature,
  pEnumEntry,
  IntSwissKnife,
  StructEntry,
  Comment,
  Extension,
  // IIDC era
  p1212Parser,
  Key,
  FeatureID,
  Timeout,
  TextDesc,
  IntKey,
  // attributes with a number or link of their own
  Offset,
  pOffset,
  Index
};
inline constexpr size_t kElements = static_cast<size_t>(Element::Index) + 1;
std::string_view elementName(Element element);  // as in the XML
// Unknown for other names; attributes are no elements.
Element elementOf(std::string_view name);
// The same for a name that ends in NUL; kElementNamePadding bytes after it must be readable.
inline constexpr size_t kElementNamePadding = 16;
Element elementAt(const char* name);

}  // namespace GENAPI_NAMESPACE

#include "NodeInformation.h"

#include <array>
#include <cmath>
#include <limits>
#include <variant>

#include "Failure.h"
#include "Text.h"

namespace orxGenApi {
namespace {

using namespace GENAPI_NAMESPACE;

// An item's own value; the other forms follow from it.
using Value = std::variant<int64_t, double, std::string>;

enum class Kind { Text, Integer, Number };  // Number: integer or real, after the node's kind
enum class Form { Integer, Float, Text };
constexpr bool kNoText = false;

struct Item {
  TNodeInfo info;
  const char* name;
  Kind kind;
  Value (*read)(const Item& item, const TypedNode& node, Form form);
  const char* (*word)(int64_t value) = nullptr;  // the text form of a mode; without it the number is printed
  bool hasText = true;
};

[[noreturn]] void refuseKind(const std::string& name) {
  throw orx_error(OXGENAPI_E_NOT_SUPPORTED, "Type does not support " + name);
}

// The node behind these items must be an integer or a float.
template <auto OfInteger, auto OfFloat>
Value numeric(const Item& item, const TypedNode& node, Form) {
  if (node.type == NT_Integer) return OfInteger(*node.integer);
  if (node.type == NT_Float) return OfFloat(*node.real);
  refuseKind(item.name);
}

Value increment(const Item& item, const TypedNode& node, Form form) {
  if (node.type == NT_Integer) return node.integer->GetInc();
  if (node.type == NT_Float && node.real->HasInc()) return node.real->GetInc();
  if (form != Form::Float) refuseKind(item.name);
  // Callers know these two texts with their capital N.
  if (node.type == NT_Float) throw orx_error(OXGENAPI_E_NOT_SUPPORTED, "Node does not support NI_INcrement");
  refuseKind("NI_INcrement");
}

Value entryCount(const Item& item, const TypedNode& node, Form) {
  if (node.type != NT_Enumeration) refuseKind(item.name);
  NodeList_t entries;
  node.enumeration->GetEntries(entries);
  return static_cast<int64_t>(entries.size());
}

// Integers, floats and strings are no registers to callers, whatever they are made of.
IRegister& registerOf(const Item& item, const TypedNode& node) {
  if (node.type != NT_Register) refuseKind(item.name);
  return dynamic_cast<IRegister&>(*node.node);
}

Value aliasName(const Item&, const TypedNode& node, Form) {
  const INode* alias = node.node->GetAlias();
  return alias == nullptr ? std::string() : std::string(alias->GetName(true).c_str());
}

template <auto Get>
Value text(const Item&, const TypedNode& node, Form) {
  return std::string(Get(*node.node).c_str());
}

template <auto Get>
Value integer(const Item&, const TypedNode& node, Form) {
  return static_cast<int64_t>(Get(*node.node));
}

// Callers' numbers: read-only comes before write-only.
int64_t accessMode(const INode& node) {
  switch (node.GetAccessMode()) {
    case NA: return 1;
    case RO: return 2;
    case WO: return 3;
    case RW: return 4;
    default: return 0;
  }
}

int64_t cachingMode(const INode& node) {
  switch (node.GetCachingMode()) {
    case WriteThrough: return 1;
    case WriteAround: return 2;
    default: return 0;
  }
}

int64_t visibility(const INode& node) {
  switch (node.GetVisibility()) {
    case Beginner: return 0;
    case Expert: return 1;
    case Guru: return 2;
    default: return -1;
  }
}

int64_t known(ERepresentation representation) {
  return representation >= Linear && representation <= MACAddress ? representation : -1;
}

const char* accessModeWord(int64_t mode) {
  constexpr std::array kWords = {"Not Implemented", "Not Available", "Read Only", "Write Only", "Read/Write"};
  return kWords[static_cast<size_t>(mode)];
}

const char* cachingModeWord(int64_t mode) {
  return mode == 1 ? "Write Through" : mode == 2 ? "Write Around" : "No Cache";
}

const char* visibilityWord(int64_t level) {
  constexpr std::array kWords = {"Beginner", "Expert", "Guru"};
  return level < 0 ? "Invisible" : kWords[static_cast<size_t>(level)];
}

// Only the first five have a name.
const char* representationWord(int64_t representation) {
  constexpr std::array kWords = {"Linear", "Logarithmic", "Boolean", "PureNumber", "HexNumber"};
  return representation >= 0 && representation < 5 ? kWords[static_cast<size_t>(representation)] : "Undefined";
}

// The one table of everything that can be asked, at the place of its number.
constexpr std::array kItems = {
    Item{NI_Name, "NI_Name", Kind::Text, text<[](INode& n) { return n.GetName(true); }>},
    Item{NI_DisplayName, "NI_DisplayName", Kind::Text, text<[](INode& n) { return n.GetDisplayName(); }>},
    Item{NI_AccessMode, "NI_AccessMode", Kind::Integer, integer<accessMode>, accessModeWord},
    Item{NI_Max, "NI_Max", Kind::Number,
         numeric<[](IInteger& i) { return i.GetMax(); }, [](IFloat& f) { return f.GetMax(); }>},
    Item{NI_Min, "NI_Min", Kind::Number,
         numeric<[](IInteger& i) { return i.GetMin(); }, [](IFloat& f) { return f.GetMin(); }>},
    Item{NI_Increment, "NI_Increment", Kind::Number, increment, nullptr, kNoText},
    Item{NI_NumEnumEntries, "NI_NumEnumEntries", Kind::Integer, entryCount},
    Item{NI_IsStreamable, "NI_IsStreamable", Kind::Integer, integer<[](INode& n) { return n.IsStreamable(); }>},
    Item{NI_CachingMode, "NI_CachingMode", Kind::Integer, integer<cachingMode>, cachingModeWord},
    Item{NI_ToolTip, "NI_ToolTip", Kind::Text, text<[](INode& n) { return n.GetToolTip(); }>},
    Item{NI_Description, "NI_Description", Kind::Text, text<[](INode& n) { return n.GetDescription(); }>},
    Item{NI_Visibility, "NI_Visibility", Kind::Integer, integer<visibility>, visibilityWord},
    Item{NI_PollingTime, "NI_PollingTime", Kind::Integer, integer<[](INode& n) { return n.GetPollingTime(); }>},
    Item{NI_EventID, "NI_EventID", Kind::Text, text<[](INode& n) { return n.GetEventID(); }>},
    Item{NI_RegisterAddress, "NI_RegisterAddress", Kind::Integer,
         [](const Item& item, const TypedNode& node, Form) -> Value { return registerOf(item, node).GetAddress(); }},
    Item{NI_RegisterLength, "NI_RegisterLength", Kind::Integer,
         [](const Item& item, const TypedNode& node, Form) -> Value { return registerOf(item, node).GetLength(); }},
    Item{NI_Representation, "NI_Representation", Kind::Integer,
         numeric<[](IInteger& i) { return known(i.GetRepresentation()); },
                 [](IFloat& f) { return known(f.GetRepresentation()); }>,
         representationWord},
    Item{NI_Unit, "NI_Unit", Kind::Text,
         numeric<[](IInteger& i) { return std::string(i.GetUnit().c_str()); },
                 [](IFloat& f) { return std::string(f.GetUnit().c_str()); }>},
    Item{NI_AliasName, "NI_AliasName", Kind::Text, aliasName},
    Item{NI_IsDeprecated, "NI_IsDeprecated", Kind::Integer, integer<[](INode& n) { return n.IsDeprecated(); }>},
    Item{NI_IsFeature, "NI_IsFeature", Kind::Integer, integer<[](INode& n) { return n.IsFeature(); }>},
};

constexpr bool inOrder() {
  for (size_t i = 0; i < kItems.size(); ++i)
    if (kItems[i].info != i) return false;
  return true;
}
static_assert(inOrder(), "an item stands at the place of its number");

const Item& itemOf(TNodeInfo info) {
  if (info >= kItems.size()) throw orx_error(OXGENAPI_E_NOT_SUPPORTED, "Unknown info command");
  return kItems[info];
}

const Item& numberItem(TNodeInfo info, const char* form) {
  const Item& item = itemOf(info);
  if (item.kind == Kind::Text)
    throw orx_error(OXGENAPI_E_NOT_SUPPORTED, std::string("Strings can not be converted to ") + form);
  return item;
}

// A limit cut towards zero. Limits beyond the 64-bit integers bound nothing there: the nearest integer says the same.
int64_t truncatedLimit(double value) {
  constexpr double kBeyond = 9223372036854775808.0;
  if (std::isnan(value)) throw orx_error(OXGENAPI_E_UNSPECIFIED, "the limit is not a number");
  if (value >= kBeyond) return std::numeric_limits<int64_t>::max();
  if (value < -kBeyond) return std::numeric_limits<int64_t>::min();
  return static_cast<int64_t>(value);
}

int64_t integerForm(const Item& item, const TypedNode& node) {
  const Value value = item.read(item, node, Form::Integer);
  if (const double* real = std::get_if<double>(&value)) return truncatedLimit(*real);
  return std::get<int64_t>(value);
}

}  // namespace

bool infoAsBoolean(const TypedNode& node, TNodeInfo info) {
  return integerForm(numberItem(info, "boolean"), node) != 0;
}

int64_t infoAsInteger(const TypedNode& node, TNodeInfo info) { return integerForm(numberItem(info, "integer"), node); }

double infoAsFloat(const TypedNode& node, TNodeInfo info) {
  const Item& item = numberItem(info, "float");
  const Value value = item.read(item, node, Form::Float);
  if (const double* real = std::get_if<double>(&value)) return *real;
  return static_cast<double>(std::get<int64_t>(value));
}

std::string infoAsText(const TypedNode& node, TNodeInfo info) {
  const Item& item = itemOf(info);
  if (!item.hasText) throw orx_error(OXGENAPI_E_NOT_SUPPORTED, "Unknown info command");
  Value value = item.read(item, node, Form::Text);
  if (auto* text = std::get_if<std::string>(&value)) return std::move(*text);
  if (const double* real = std::get_if<double>(&value)) return realText(*real);
  const int64_t number = std::get<int64_t>(value);
  return item.word != nullptr ? std::string(item.word(number)) : integerText(number);
}

bool isTextInfo(TNodeInfo info) { return itemOf(info).kind == Kind::Text; }

bool hasTextForm(TNodeInfo info) { return itemOf(info).hasText; }

}  // namespace orxGenApi

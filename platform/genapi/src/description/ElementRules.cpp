#include "description/ElementRules.h"

#include <array>

#include "GenApi/EnumClasses.h"

namespace GENAPI_NAMESPACE {
namespace {

using E = Element;
using T = NodeType;

constexpr ElementSet kCommon(E::ToolTip, E::Description, E::DisplayName, E::Visibility, E::DocuURL, E::IsDeprecated,
                             E::EventID, E::pIsImplemented, E::pIsAvailable, E::pIsLocked, E::pBlockPolling,
                             E::ImposedAccessMode, E::pError, E::pAlias, E::pCastAlias, E::pInvalidator, E::Streamable,
                             E::Comment, E::Extension);
constexpr ElementSet kRegister(E::Address, E::pAddress, E::pIndex, E::IntSwissKnife, E::Length, E::pLength,
                               E::AccessMode, E::pPort, E::Cachable, E::PollingTime);
constexpr ElementSet kMasked(E::Address, E::pAddress, E::pIndex, E::IntSwissKnife, E::Length, E::AccessMode, E::pPort,
                             E::Cachable, E::PollingTime);
constexpr ElementSet kNumber(E::Unit, E::Representation);
constexpr ElementSet kDisplay(E::DisplayNotation, E::DisplayPrecision);
constexpr ElementSet kSelector(E::pSelected);
constexpr ElementSet kSource(E::Value, E::pValue);
constexpr ElementSet kTable(E::pIndex, E::ValueIndexed, E::pValueIndexed, E::ValueDefault, E::pValueDefault);
constexpr ElementSet kLimits(E::Min, E::pMin, E::Max, E::pMax, E::Inc, E::pInc);
constexpr ElementSet kVariables(E::pVariable, E::Constant, E::Expression);
constexpr ElementSet kConverter = kVariables | ElementSet(E::FormulaTo, E::FormulaFrom, E::pValue, E::Slope);

constexpr ElementSet elementsOf(T type) {
  switch (type) {
    case T::Node: return kCommon;
    case T::Category: return kCommon | ElementSet(E::pFeature);
    case T::Integer:
      return kCommon | kSource | kTable | kLimits | kNumber | kSelector | ElementSet(E::pValueCopy, E::ValidValueSet);
    case T::IntReg: return kCommon | kRegister | kNumber | kSelector | ElementSet(E::Sign, E::Endianess);
    case T::MaskedIntReg:
      return kCommon | kMasked | kNumber | kSelector | ElementSet(E::Sign, E::Endianess, E::Bit, E::LSB, E::MSB);
    case T::Boolean: return kCommon | kSource | kSelector | ElementSet(E::OnValue, E::OffValue);
    case T::Command: return kCommon | kSource | ElementSet(E::CommandValue, E::pCommandValue, E::PollingTime);
    case T::Enumeration: return kCommon | kSource | kSelector | ElementSet(E::EnumEntry, E::pEnumEntry, E::PollingTime);
    case T::EnumEntry: return kCommon | ElementSet(E::Value, E::NumericValue, E::Symbolic, E::IsSelfClearing);
    case T::Float: return kCommon | kSource | kTable | kLimits | kNumber | kDisplay;
    case T::FloatReg: return kCommon | kRegister | kNumber | kDisplay | ElementSet(E::Endianess);
    case T::Converter: return kCommon | kConverter | kNumber | kDisplay | ElementSet(E::IsLinear);
    case T::IntConverter: return kCommon | kConverter | kNumber | kSelector;
    case T::SwissKnife: return kCommon | kVariables | kNumber | kDisplay | ElementSet(E::Formula);
    case T::IntSwissKnife: return kCommon | kVariables | kNumber | kSelector | ElementSet(E::Formula);
    case T::String: return kCommon | kSource;
    case T::StringReg:
    case T::Register: return kCommon | kRegister;
    case T::Port: return kCommon | ElementSet(E::ChunkID, E::pChunkID, E::SwapEndianess, E::CacheChunkData);
    case T::ConfRom: return kCommon | kRegister | ElementSet(E::Unit, E::IntKey, E::TextDesc);
    case T::TextDesc:
    case T::IntKey: return kCommon | ElementSet(E::p1212Parser, E::Key);
    case T::AdvFeatureLock: return kCommon | kRegister | ElementSet(E::FeatureID, E::Timeout);
    case T::SmartFeature: return kCommon | kRegister | ElementSet(E::FeatureID);
  }
  return {};
}

constexpr ElementSet kRepeatable(E::pError, E::pInvalidator, E::pValueCopy, E::ValueIndexed, E::pValueIndexed,
                                 E::pSelected, E::EnumEntry, E::pEnumEntry, E::Address, E::pAddress, E::IntSwissKnife,
                                 E::pVariable, E::Constant, E::Expression, E::pFeature, E::TextDesc, E::IntKey);
constexpr Form kPlainForms[] = {Form::Text,
#define GENAPI_FORM(name, form) Form::form,
                                GENAPI_ELEMENTS(GENAPI_FORM)
#undef GENAPI_FORM
};

constexpr Form formIn(E element, T type) {
  switch (element) {
    case E::Value:
      if (type == T::Boolean) return Form::Boolean;
      if (type == T::String) return Form::Verbatim;
      [[fallthrough]];
    case E::ValueIndexed:
    case E::ValueDefault:
    case E::Min:
    case E::Max:
    case E::Inc: return type == T::Float ? Form::Real : Form::Integer;
    case E::Constant: return type == T::SwissKnife || type == T::Converter ? Form::Real : Form::Integer;
    case E::Unit: return type == T::ConfRom ? Form::Integer : Form::Text;
    default: return kPlainForms[static_cast<size_t>(element)];
  }
}

constexpr std::array<uint8_t, kElements> makeAlternatives() {
  std::array<uint8_t, kElements> numbers{};
  const auto set = [&](uint8_t number, auto... elements) { ((numbers[static_cast<size_t>(elements)] = number), ...); };
  set(1, E::Value, E::pValue, E::pIndex);
  set(2, E::Min, E::pMin);
  set(3, E::Max, E::pMax);
  set(4, E::Inc, E::pInc);
  set(5, E::Length, E::pLength);
  set(6, E::CommandValue, E::pCommandValue);
  set(7, E::ValueDefault, E::pValueDefault);
  set(8, E::ChunkID, E::pChunkID);
  set(9, E::Bit, E::LSB, E::MSB);
  return numbers;
}

constexpr std::array<ElementRules, kNodeTypes> makeRules() {
  constexpr std::array<uint8_t, kElements> kAlternativeNumbers = makeAlternatives();
  std::array<ElementRules, kNodeTypes> rules;
  for (size_t t = 0; t < kNodeTypes; ++t) {
    const T type = static_cast<T>(t);
    const ElementSet elements = elementsOf(type);
    for (size_t e = 0; e < kElements; ++e) {
      const E element = static_cast<E>(e);
      const bool repeats = kRepeatable.has(element) || (element == E::pIndex && kRegisterKinds.has(type));
      rules[t][e] = {formIn(element, type), elements.has(element), repeats, kAlternativeNumbers[e]};
    }
  }
  return rules;
}

template <class Class, class Enumeration>
bool wordOf(std::string_view text, uint8_t& word) {
  Enumeration value;
  if (!Class::FromView(text, &value)) return false;
  word = static_cast<uint8_t>(value);
  return true;
}

}  // namespace

constexpr std::array<ElementRules, kNodeTypes> kElementRules = makeRules();

NodeTypeSet linkTargets(Element element, NodeType type) {
  constexpr NodeTypeSet kAny = kNumericKinds | kStringKinds | kRegisterKinds |
                               NodeTypeSet(T::Node, T::Category, T::Command, T::EnumEntry, T::Port);
  switch (element) {
    case E::pInvalidator:
    case E::pAlias:
    case E::pCastAlias:
    case E::pFeature:
    case E::pSelected: return kAny;
    case E::pError: return NodeTypeSet(T::Enumeration);
    case E::pEnumEntry: return NodeTypeSet(T::EnumEntry);
    case E::pPort: return NodeTypeSet(T::Port);
    case E::p1212Parser: return NodeTypeSet(T::ConfRom);
    case E::pChunkID: return kStringKinds | kNumericKinds;
    case E::pValue: return type == T::String ? kStringKinds : kNumericKinds;
    default: return kNumericKinds;
  }
}

bool parseWord(Element element, std::string_view text, uint8_t& word) {
  switch (element) {
    case E::Visibility: return wordOf<EVisibilityClass, EVisibility>(text, word);
    case E::Representation: return wordOf<ERepresentationClass, ERepresentation>(text, word);
    case E::DisplayNotation: return wordOf<EDisplayNotationClass, EDisplayNotation>(text, word);
    case E::Sign: return wordOf<ESignClass, ESign>(text, word);
    case E::Endianess: return wordOf<EEndianessClass, EEndianess>(text, word);
    case E::Slope: return wordOf<ESlopeClass, ESlope>(text, word);
    case E::Cachable:
      if (text == "No") {  // widespread, though not in the vocabulary
        word = NoCache;
        return true;
      }
      return wordOf<ECachingModeClass, ECachingMode>(text, word);
    case E::AccessMode:
    case E::ImposedAccessMode: return wordOf<EAccessModeClass, EAccessMode>(text, word) && word >= WO && word <= RW;
    default: return wordOf<EYesNoClass, EYesNo>(text, word);
  }
}

}  // namespace GENAPI_NAMESPACE

#include <GenApi/EnumClasses.h>

#include <span>

namespace GENAPI_NAMESPACE {
namespace {

template <class Enumeration>
struct Word {
  Enumeration value;
  std::string_view text;
};

// What an enumeration's values are called: those that a text may name, and what any other value prints as.
template <class Enumeration>
struct Words {
  std::span<const Word<Enumeration>> named;
  std::string_view undefined;
};

template <class Enumeration>
Words<Enumeration> wordsOf() noexcept;

#define OX_ENUM_WORDS(Enumeration, undefinedText, ...)           \
  template <>                                                    \
  Words<Enumeration> wordsOf<Enumeration>() noexcept {           \
    static constexpr Word<Enumeration> kWords[] = {__VA_ARGS__}; \
    return {kWords, undefinedText};                              \
  }

OX_ENUM_WORDS(EAccessMode, "_UndefinedAccesMode", {NI, "NI"}, {NA, "NA"}, {WO, "WO"}, {RO, "RO"}, {RW, "RW"})
OX_ENUM_WORDS(EVisibility, "_UndefinedVisibility", {Beginner, "Beginner"}, {Expert, "Expert"}, {Guru, "Guru"},
              {Invisible, "Invisible"})
OX_ENUM_WORDS(ECachingMode, "_UndefinedCachingMode", {NoCache, "NoCache"}, {WriteThrough, "WriteThrough"},
              {WriteAround, "WriteAround"})
OX_ENUM_WORDS(ERepresentation, "_UndefinedRepresentation", {Linear, "Linear"}, {Logarithmic, "Logarithmic"},
              {Boolean, "Boolean"}, {PureNumber, "PureNumber"}, {HexNumber, "HexNumber"}, {IPV4Address, "IPV4Address"},
              {MACAddress, "MACAddress"})
OX_ENUM_WORDS(EEndianess, "_UndefinedEndian", {BigEndian, "BigEndian"}, {LittleEndian, "LittleEndian"})
OX_ENUM_WORDS(ESign, "_UndefinedSign", {Signed, "Signed"}, {Unsigned, "Unsigned"})
OX_ENUM_WORDS(ENameSpace, "_UndefinedNameSpace", {Custom, "Custom"}, {Standard, "Standard"})
OX_ENUM_WORDS(EStandardNameSpace, "_UndefinedStandardNameSpace", {None, "None"}, {GEV, "GEV"}, {IIDC, "IIDC"},
              {CL, "CL"}, {USB, "USB"})
OX_ENUM_WORDS(EYesNo, "_UndefinedYesNo", {No, "No"}, {Yes, "Yes"})
OX_ENUM_WORDS(ESlope, "_UndefinedESlope", {Increasing, "Increasing"}, {Decreasing, "Decreasing"}, {Varying, "Varying"},
              {Automatic, "Automatic"})
OX_ENUM_WORDS(EDisplayNotation, "_UndefinedEDisplayNotation", {fnAutomatic, "Automatic"}, {fnFixed, "Fixed"},
              {fnScientific, "Scientific"})
OX_ENUM_WORDS(EIncMode, "", {noIncrement, "noIncrement"}, {fixedIncrement, "fixedIncrement"},
              {listIncrement, "listIncrement"})
OX_ENUM_WORDS(EInterfaceType, "", {intfIValue, "intfIValue"}, {intfIBase, "intfIBase"}, {intfIInteger, "intfIInteger"},
              {intfIBoolean, "intfIBoolean"}, {intfICommand, "intfICommand"}, {intfIFloat, "intfIFloat"},
              {intfIString, "intfIString"}, {intfIRegister, "intfIRegister"}, {intfICategory, "intfICategory"},
              {intfIEnumeration, "intfIEnumeration"}, {intfIEnumEntry, "intfIEnumEntry"}, {intfIPort, "intfIPort"})
OX_ENUM_WORDS(ELinkType, "", {ctParentNodes, "ctParentNodes"}, {ctReadingChildren, "ctReadingChildren"},
              {ctWritingChildren, "ctWritingChildren"}, {ctInvalidatingChildren, "ctInvalidatingChildren"},
              {ctDependingNodes, "ctDependingNodes"}, {ctTerminalNodes, "ctTerminalNodes"})
OX_ENUM_WORDS(EInputDirection, "", {idFrom, "From"}, {idTo, "To"}, {idNone, "None"})
OX_ENUM_WORDS(EGenApiSchemaVersion, "_Undefined", {v1_0, "v1_0"}, {v1_1, "v1_1"})
OX_ENUM_WORDS(EXMLValidation, "", {xvDefault, "xvDefault"}, {xvLoad, "xvLoad"}, {xvCycles, "xvCycles"},
              {xvSFNC, "xvSFNC"}, {xvAll, "xvAll"})

#undef OX_ENUM_WORDS

}  // namespace

template <class Enumeration>
bool EnumClass<Enumeration>::FromView(std::string_view text, Enumeration* value) noexcept {
  if (value == nullptr) return false;
  for (const Word<Enumeration>& word : wordsOf<Enumeration>().named) {
    if (word.text != text) continue;
    *value = word.value;
    return true;
  }
  return false;
}

template <class Enumeration>
std::string_view EnumClass<Enumeration>::ToView(Enumeration value) noexcept {
  const Words<Enumeration> words = wordsOf<Enumeration>();
  for (const Word<Enumeration>& word : words.named)
    if (word.value == value) return word.text;
  if constexpr (std::is_same_v<Enumeration, EAccessMode>) {
    if (value == _CycleDetectAccesMode) return "_CycleDetectAccesMode";
  }
  return words.undefined;
}

template class EnumClass<EAccessMode>;
template class EnumClass<EVisibility>;
template class EnumClass<ECachingMode>;
template class EnumClass<ERepresentation>;
template class EnumClass<EEndianess>;
template class EnumClass<ESign>;
template class EnumClass<ENameSpace>;
template class EnumClass<EStandardNameSpace>;
template class EnumClass<EYesNo>;
template class EnumClass<ESlope>;
template class EnumClass<EDisplayNotation>;
template class EnumClass<EIncMode>;
template class EnumClass<EInterfaceType>;
template class EnumClass<ELinkType>;
template class EnumClass<EInputDirection>;
template class EnumClass<EGenApiSchemaVersion>;
template class EnumClass<EXMLValidation>;

}  // namespace GENAPI_NAMESPACE

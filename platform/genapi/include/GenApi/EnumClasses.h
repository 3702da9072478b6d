// Text converters of the enumerations: EAccessModeClass::ToString(RO) is "RO".
#pragma once

#include <GenApi/Types.h>

#include <string_view>

namespace GENAPI_NAMESPACE {

// The texts are the words that descriptions use, where there are any, else the enumerators' names.
template <class Enumeration>
class EnumClass {
 public:
  // False, and `*value` untouched, for a word of no enumerator (blanks and case count) and for a null `value`.
  static bool FromString(const gcstring& text, Enumeration* value) noexcept { return FromView(text.view(), value); }
  static bool FromView(std::string_view text, Enumeration* value) noexcept;
  // The word of `value`; an undefined or unknown value gives the name of the undefined enumerator ("" if there is
  // none).
  static gcstring ToString(Enumeration value) { return gcstring(ToView(value)); }
  // The same without a copy; the text is static.
  static std::string_view ToView(Enumeration value) noexcept;
};

using EAccessModeClass = EnumClass<EAccessMode>;
using EVisibilityClass = EnumClass<EVisibility>;
using ECachingModeClass = EnumClass<ECachingMode>;
using ERepresentationClass = EnumClass<ERepresentation>;
using EEndianessClass = EnumClass<EEndianess>;
using ESignClass = EnumClass<ESign>;
using ENameSpaceClass = EnumClass<ENameSpace>;
using EStandardNameSpaceClass = EnumClass<EStandardNameSpace>;
using EYesNoClass = EnumClass<EYesNo>;
using ESlopeClass = EnumClass<ESlope>;
using EDisplayNotationClass = EnumClass<EDisplayNotation>;
using EIncModeClass = EnumClass<EIncMode>;
using EInterfaceTypeClass = EnumClass<EInterfaceType>;
using ELinkTypeClass = EnumClass<ELinkType>;
using EInputDirectionClass = EnumClass<EInputDirection>;
using EGenApiSchemaVersionClass = EnumClass<EGenApiSchemaVersion>;
using EXMLValidationClass = EnumClass<EXMLValidation>;

}  // namespace GENAPI_NAMESPACE

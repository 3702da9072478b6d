// The text form of one saved feature value: one line, written with escapes and taken apart again.
//
//   Gain[GainSelector(DigitalAll)] = "1.5"
//
// The two directions are not mirror images. The writer escapes what does not print, and a byte of 0x80 and above comes
// out with eight hexadecimal digits; the reader takes two digits after \x and knows more sequences. Existing settings
// files depend on both halves as they are.
#pragma once
#include <string>
#include <string_view>
#include <vector>

#include "Base/GCString.h"
#include "OxGenApi/Types.h"

namespace orxGenApi {

// What two result codes mean for settings.
inline constexpr uint32_t kMalformedLine = OXGENAPI_E_DEVICE_FILE;
inline constexpr uint32_t kSettingDoesNotHold = OXGENAPI_E_INVALIDATE_FAILED;  // a node refused, or keeps another value

// Appends `value` as it stands between the quotes of a line. Printing characters and white space, line feeds included,
// stay as they are; everything else becomes \0, \a, \b or \x with the byte's signed value in upper-case hexadecimal, at
// least two digits (0x01 gives \x01, 0xC3 gives \xFFFFFFC3).
void appendEscapedValue(std::string& text, std::string_view value);

// One line taken apart, escapes resolved.
struct SettingsLine {
  struct Selector {
    GENICAM_NAMESPACE::gcstring name;
    GENICAM_NAMESPACE::gcstring value;
  };

  GENICAM_NAMESPACE::gcstring feature;
  std::vector<Selector> selectors;  // in the order of the line
  GENICAM_NAMESPACE::gcstring value;
};

// Takes a line apart (without its line feed). Returns false for a line that says nothing: blank, or a comment, which
// begins with ';'. White space around names, selector values and the value is dropped; quotes around the value are
// optional. Throws orx_error with 0x80000016, for an unknown escape 0x80000013, and the text of the fault; `line` is
// unspecified then.
bool parseSettingsLine(std::string_view text, SettingsLine& line);

}  // namespace orxGenApi

// Texts that come from devices, made fit to be shown and compared.
#pragma once

#include <string>
#include <string_view>

namespace ox::camera {

// The text up to its first zero, with control characters, backslashes and bytes that are not UTF-8 written as \xNN, and
// without blanks at its ends.
std::string shown(std::string_view text);

// The same as part of an ID: letters, digits, dots and dashes; anything else becomes one underscore.
std::string idPart(std::string_view text);

bool sameIgnoringCase(std::string_view a, std::string_view b);

}  // namespace ox::camera

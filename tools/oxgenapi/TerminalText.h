// Text that a terminal may show: what a device or a file says must not steer it.
#pragma once

#include <string>
#include <string_view>

namespace tool {

// The text with control characters, also those beyond ASCII, and bytes that are no UTF-8 written as \x1B; tabs and line
// feeds stay.
std::string terminalText(std::string_view text);

// A JSON document in which control characters that JSON allows inside strings are escaped, too.
std::string terminalJson(std::string_view document);

}  // namespace tool

// UTF-8 as far as the engine must know it: is a text valid, and where can it be cut.
#pragma once

#include "Base/GCTypes.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace GENAPI_NAMESPACE::text {

// The offset of the first byte that starts no well-formed character (overlong forms, surrogates and code points above
// U+10FFFF are malformed); npos for a valid text.
size_t findMalformedUtf8(std::string_view text) noexcept;

inline bool isUtf8(std::string_view text) noexcept { return findMalformedUtf8(text) == std::string_view::npos; }

// How many bytes remain of a text that was cut anywhere when a character that the cut broke goes as a whole.
size_t wholeCharacters(std::string_view cut) noexcept;

// The first `characters` characters of a text, all of it if it has no more.
std::string_view firstCharacters(std::string_view text, size_t characters) noexcept;

// The same, fit to be quoted in a message of one line: control characters become blanks, malformed bytes '?'.
std::string excerpt(std::string_view text, size_t characters);

}  // namespace GENAPI_NAMESPACE::text

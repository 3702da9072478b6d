// Texts from checked formats. One file compiles the formatter for all others.
#pragma once

#include <fmt/core.h>

#include <cstddef>
#include <string>

namespace ox::pixels {

std::string formatText(fmt::string_view format, fmt::format_args args);
/// Cut to the room, with a terminator.
void formatInto(char* text, size_t room, fmt::string_view format, fmt::format_args args);

template <class... Args>
std::string formatted(fmt::format_string<Args...> format, Args&&... args) {
  return formatText(format, fmt::make_format_args(args...));
}

}  // namespace ox::pixels

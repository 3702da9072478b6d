#include "Formatting.h"

#include <fmt/format.h>

namespace ox::pixels {

std::string formatText(fmt::string_view format, fmt::format_args args) { return fmt::vformat(format, args); }

void formatInto(char* text, size_t room, fmt::string_view format, fmt::format_args args) {
  *fmt::vformat_to_n(text, room - 1, format, args).out = '\0';
}

}  // namespace ox::pixels

#include "text/Refusal.h"

#include "text/Utf8.h"

#include <fmt/format.h>

namespace GENAPI_NAMESPACE::text {

RefusalText::RefusalText(fmt::string_view format, fmt::format_args arguments) noexcept {
  constexpr size_t kMaxBytes = sizeof text_ - 1;
  const size_t needed = fmt::vformat_to_n(text_, kMaxBytes, format, arguments).size;
  text_[needed <= kMaxBytes ? needed : wholeCharacters({text_, kMaxBytes})] = '\0';
}

}  // namespace GENAPI_NAMESPACE::text

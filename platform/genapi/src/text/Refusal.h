// How the engine refuses: throws one of its exceptions with a text whose format is checked while it is compiled.
#pragma once

#include "Base/GCException.h"
#include "Base/GCString.h"

#include <fmt/core.h>

#include <string_view>
#include <type_traits>

namespace GENAPI_NAMESPACE {

using GENICAM_NAMESPACE::AccessException;
using GENICAM_NAMESPACE::BadAllocException;
using GENICAM_NAMESPACE::GenericException;
using GENICAM_NAMESPACE::InvalidArgumentException;
using GENICAM_NAMESPACE::LogicalErrorException;
using GENICAM_NAMESPACE::OutOfRangeException;
using GENICAM_NAMESPACE::PropertyException;
using GENICAM_NAMESPACE::RuntimeException;
using GENICAM_NAMESPACE::TimeoutException;

namespace text {

// What {fmt} prints of an argument: of our own strings their characters, of a null pointer "(null)".
template <typename Argument>
const Argument& printable(const Argument& argument) {
  return argument;
}
inline std::string_view printable(const GENICAM_NAMESPACE::gcstring& argument) { return argument.view(); }
inline const char* printable(const char* argument) { return argument ? argument : "(null)"; }
template <typename Argument>
using Printable = std::remove_cvref_t<decltype(printable(std::declval<const Argument&>()))>;

// A format that fits the arguments, and the line that refuses.
template <typename... Arguments>
struct RefusalFormat {
  template <typename Text>
  consteval RefusalFormat(const Text& text, const char* file = __builtin_FILE(), int line = __builtin_LINE())  // NOLINT
      : format(text), sourceFile(file), sourceLine(line) {}

  fmt::format_string<Arguments...> format;
  const char* sourceFile;
  int sourceLine;
};

// A text of up to kMaxReportedTextBytes, terminator included; needs no memory.
class RefusalText {
 public:
  RefusalText(fmt::string_view format, fmt::format_args arguments) noexcept;
  const char* c_str() const noexcept { return text_; }

 private:
  char text_[GENICAM_NAMESPACE::kMaxReportedTextBytes];
};

}  // namespace text

// refuse<OutOfRangeException>("{}: value {} must be at most Max = {}", name, value, max). A longer text is cut. Not
// inlined, so that the text takes no room in the caller's stack frame.
template <typename Exception, typename... Arguments>
[[noreturn, gnu::cold, gnu::noinline]] void refuse(
    std::type_identity_t<text::RefusalFormat<text::Printable<Arguments>...>> format, const Arguments&... arguments) {
  const auto write = [&](const auto&... printed) {
    return text::RefusalText(format.format, fmt::make_format_args(printed...));
  };
  throw Exception(write(text::printable(arguments)...).c_str(), format.sourceFile, format.sourceLine);
}

}  // namespace GENAPI_NAMESPACE

#include "firmware/WholePattern.h"

#include <re2/re2.h>

#include <algorithm>

#include "FirmwareUpdate/FirmwareUpdateExceptions.h"
#include "firmware/GufLimits.h"
#include "text/Refusal.h"

namespace GENAPI_NAMESPACE {

namespace {

re2::StringPiece pieceOf(std::string_view text) { return {text.data(), text.size()}; }

}  // namespace

WholePattern::WholePattern(const std::string& text, const std::string& where) : text_(text) {
  // Every byte of UTF-8 but the continuations begins a character.
  const auto characters = std::count_if(text.begin(), text.end(), [](char c) { return (c & 0xc0) != 0x80; });
  if (static_cast<size_t>(characters) > kMaxPatternCharacters)
    refuse<FormatException>("{}: the regular expression is longer than {} characters", where, kMaxPatternCharacters);
  re2::RE2::Options options;
  options.set_log_errors(false);
  options.set_max_mem(kMaxPatternMemory);
  auto compiled = std::make_shared<const re2::RE2>(pieceOf(text), options);
  if (!compiled->ok())
    refuse<FormatException>("{}: '{}' is not a regular expression: {}", where, text, compiled->error());
  compiled_ = std::move(compiled);
}

size_t WholePattern::programSteps() const { return compiled_ ? static_cast<size_t>(compiled_->ProgramSize()) : 0; }

bool WholePattern::matches(std::string_view value) const {
  return compiled_ && re2::RE2::FullMatch(pieceOf(value), *compiled_);
}

bool WholePattern::extract(std::string_view value, std::string& part) const {
  if (!compiled_) return false;
  if (compiled_->NumberOfCapturingGroups() > 0) return re2::RE2::FullMatch(pieceOf(value), *compiled_, &part);
  if (!matches(value)) return false;
  part.assign(value);
  return true;
}

}  // namespace GENAPI_NAMESPACE

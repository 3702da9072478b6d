// A regular expression of an update file: RE2 syntax, linear time, always for the whole text.
#pragma once
#include <memory>
#include <string>
#include <string_view>

#include "Base/GCTypes.h"

namespace re2 {
class RE2;
}

namespace GENAPI_NAMESPACE {

// Compiled once; copies share it and may be used by several threads.
class WholePattern {
 public:
  WholePattern() = default;
  // Throws FormatException, its text beginning with `where`, for a pattern that does not compile or is longer than
  // kMaxPatternCharacters.
  WholePattern(const std::string& text, const std::string& where);

  const std::string& text() const { return text_; }
  // How much was compiled: a measure of memory.
  size_t programSteps() const;
  bool matches(std::string_view value) const;
  // Also gives the first group, or the whole text when the pattern has none.
  bool extract(std::string_view value, std::string& part) const;

 private:
  std::string text_;
  std::shared_ptr<const re2::RE2> compiled_;
};

}  // namespace GENAPI_NAMESPACE

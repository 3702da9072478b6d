// Texts without the blanks at both ends; fast for texts that have none.
#pragma once
#include <string_view>

#include "GenApi/Types.h"

namespace GENAPI_NAMESPACE {

inline bool isXmlBlank(char character) {
  return character == ' ' || character == '\n' || character == '\t' || character == '\r';
}

inline std::string_view trimmed(std::string_view text) {
  while (!text.empty() && isXmlBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && isXmlBlank(text.back())) text.remove_suffix(1);
  return text;
}

}  // namespace GENAPI_NAMESPACE

#include "Failure.h"

#include <OxBase/OxBase.h>

namespace tool {

Failure lastFailure(uint32_t code, std::string_view feature) {
  uint32_t lastCode = 0;
  size_t size = 0;
  OxGetLastError(&lastCode, nullptr, &size);
  std::string text;
  if (lastCode == code && size > 1) {
    text.resize(size);
    OxGetLastError(nullptr, text.data(), &size);
    text.resize(size - 1);
  }
  // A few failures carry no text of their own; a text left by an earlier call would mislead.
  return {code, text.empty() ? "Failed without a text" : text, std::string(feature)};
}

void check(uint32_t result, std::string_view feature) {
  if (result != 0) {
    throw lastFailure(result, feature);
  }
}

std::string codeText(uint32_t code) {
  std::string text = "0x00000000";
  for (size_t digit = text.size() - 1; code != 0; --digit, code >>= 4) {
    text[digit] = "0123456789abcdef"[code & 0xf];
  }
  return text;
}

}  // namespace tool

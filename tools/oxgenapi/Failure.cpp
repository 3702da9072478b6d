#include "Failure.h"

namespace tool {

std::string codeText(uint32_t code) {
  std::string text = "0x00000000";
  for (size_t digit = text.size() - 1; code != 0; --digit, code >>= 4) {
    text[digit] = "0123456789abcdef"[code & 0xf];
  }
  return text;
}

}  // namespace tool

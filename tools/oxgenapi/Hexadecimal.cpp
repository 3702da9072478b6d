#include "Hexadecimal.h"

namespace tool {

std::string hexadecimal(uint64_t number, size_t digits) {
  std::string text(digits, '0');
  for (size_t digit = digits; digit > 0; number >>= 4) text[--digit] = "0123456789abcdef"[number & 0xf];
  return text;
}

}  // namespace tool

#include "Failure.h"

#include "Hexadecimal.h"

namespace tool {

std::string codeText(uint32_t code) { return "0x" + hexadecimal(code, 8); }

}  // namespace tool

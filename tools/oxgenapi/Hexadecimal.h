#pragma once

#include <cstdint>
#include <string>

namespace tool {

// The last `digits` hexadecimal digits of a number, in lower case.
std::string hexadecimal(uint64_t number, size_t digits);

}  // namespace tool

// What an update file carries, seen without applying it.
#pragma once

#include <cstdint>
#include <string>

namespace tool {

// The bytes of all data files in an update file, 0 where it cannot be read.
uint64_t dataBytesIn(const std::string& updateFile);

}  // namespace tool

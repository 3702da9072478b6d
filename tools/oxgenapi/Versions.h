// Versions of the parts that a program runs with.
#pragma once

#include <string>

namespace tool {

// "3.1.0"
std::string libraryVersion();
std::string genApiVersion();

}  // namespace tool

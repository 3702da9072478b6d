// What the tool reports when something fails: the library's code and text, and the feature it happened at.
#pragma once

#include <OxGenApi/cpp/Error.hpp>

#include <cstdint>
#include <stdexcept>
#include <string>

namespace tool {

// The code of a file that cannot be read or written; the library uses the same one.
inline constexpr uint32_t kFileFailed = 0x80000003;

using Failure = oxgenapi::Error;
using oxgenapi::check;

// The command line asks for something that cannot be: reported like any other wrong usage (exit status 2).
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// "0x8000000b"
std::string codeText(uint32_t code);

}  // namespace tool

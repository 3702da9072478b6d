// What the tool reports when an export fails: the library's code and text, and the feature it happened at.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

namespace tool {

// The code of a file that cannot be read or written; the library uses the same one.
inline constexpr uint32_t kFileFailed = 0x80000003;

class Failure : public std::runtime_error {
 public:
  Failure(uint32_t code, const std::string& text, std::string feature = {})
      : std::runtime_error(text), code_(code), feature_(std::move(feature)) {}

  uint32_t code() const { return code_; }
  // Empty where the failure belongs to no feature.
  const std::string& feature() const { return feature_; }

 private:
  uint32_t code_;
  std::string feature_;
};

// The command line asks for something that cannot be: reported like any other wrong usage (exit status 2).
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The calling thread's last error as a failure at `feature`, with `code` where the library set no text for it.
Failure lastFailure(uint32_t code, std::string_view feature = {});

// Throws lastFailure() unless `result` is 0.
void check(uint32_t result, std::string_view feature = {});

// "0x8000000b"
std::string codeText(uint32_t code);

}  // namespace tool

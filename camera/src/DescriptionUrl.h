// Where a device says that its description is.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace ox::camera {

struct DescriptionUrl {
  enum class Scheme { registers, file, web };
  Scheme scheme = Scheme::registers;
  std::string name;      // registers: the name of the file, only a text; file: the path; web: the whole URL
  uint64_t address = 0;  // registers: where it lies
  uint64_t length = 0;   // registers: its bytes
};

// Reads "local:NAME;ADDRESS;LENGTH", "file:PATH" and "http://...": the scheme in either case, any number of slashes
// after it, numbers hexadecimal with or without 0x, paths percent-encoded, "?SchemaVersion=..." at the end ignored,
// everything from the first zero on, too. Throws std::invalid_argument that says what is wrong.
DescriptionUrl parseDescriptionUrl(std::string_view url);

}  // namespace ox::camera

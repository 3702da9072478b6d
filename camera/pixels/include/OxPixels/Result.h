// What a function of this library returns: a code and, unless all is well, a sentence.
#pragma once

#include <cstdint>

namespace ox::pixels {

enum class Code : uint8_t {
  Ok,
  BadArgument,  ///< a null pointer, an option out of range, a file name without a known ending
  BadSize,      ///< width, height, stride or rows that cannot be, or a buffer that is too short for them
  Unsupported,  ///< the format is not one that the function reads
  Exists,       ///< a file of that name is there already
  Io,           ///< the system refused to write or read a file; the text has the system's reason
  BadFile,      ///< a file's content is not what it should be
  NoMemory,
};

/// A value without pointers, so that it passes any border. No function of this library throws.
struct [[nodiscard]] Result {
  Code code = Code::Ok;
  char text[240] = "";  ///< one line without a full stop; empty when all is well
  explicit operator bool() const noexcept { return code == Code::Ok; }
};

}  // namespace ox::pixels

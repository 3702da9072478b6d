// What a camera remembers, as named blocks of bytes, and its form in a file.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <map>
#include <string>
#include <vector>

namespace ox::simulation {

using StateBlocks = std::map<std::string, std::vector<uint8_t>>;

/// Form: the line "OXCAMERA 1", then per block the length of its name (2 bytes), the name, the length of its bytes
/// (8 bytes) and the bytes; numbers big-endian; a block without a name ends the list.
void writeState(std::ostream& out, const StateBlocks& blocks);

/// Throws std::runtime_error naming the byte at which the text stops making sense.
StateBlocks readState(std::istream& in);

}  // namespace ox::simulation

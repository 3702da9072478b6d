#include "StateBlob.h"

#include <algorithm>
#include <istream>
#include <ostream>
#include <stdexcept>
#include <string_view>

namespace ox::simulation {

namespace {

constexpr std::string_view kMagic = "OXCAMERA 1\n";
constexpr std::size_t kMaxBlocks = 100'000;             // some hundred are written
constexpr uint64_t kMaxBlockBytes = uint64_t{1} << 32;  // a file in the camera

void putNumber(std::ostream& out, uint64_t value, int bytes) {
  for (int shift = 8 * (bytes - 1); shift >= 0; shift -= 8) out.put(static_cast<char>(value >> shift & 0xff));
}

class Reader {
 public:
  explicit Reader(std::istream& in) : in_(in) {}

  void take(char* to, std::size_t count) {
    in_.read(to, static_cast<std::streamsize>(count));
    const auto got = static_cast<std::size_t>(in_.gcount());
    position_ += got;
    if (got != count) refuse("ends too early");
  }

  uint64_t number(int bytes) {
    char raw[8];
    take(raw, static_cast<std::size_t>(bytes));
    uint64_t value = 0;
    for (int i = 0; i < bytes; ++i) value = value << 8 | static_cast<uint8_t>(raw[i]);
    return value;
  }

  // Grows with what really arrives, so that a length out of thin air costs nothing.
  std::vector<uint8_t> block(uint64_t length) {
    constexpr uint64_t kStep = 1 << 20;
    std::vector<uint8_t> bytes;
    while (bytes.size() < length) {
      const auto step = static_cast<std::size_t>(std::min(kStep, length - bytes.size()));
      bytes.resize(bytes.size() + step);
      take(reinterpret_cast<char*>(bytes.data() + bytes.size() - step), step);
    }
    return bytes;
  }

  [[noreturn]] void refuse(const std::string& why) const {
    throw std::runtime_error("camera state: " + why + " at byte " + std::to_string(position_));
  }

 private:
  std::istream& in_;
  std::size_t position_ = 0;
};

}  // namespace

void writeState(std::ostream& out, const StateBlocks& blocks) {
  out << kMagic;
  for (const auto& [name, bytes] : blocks) {
    putNumber(out, name.size(), 2);
    out << name;
    putNumber(out, bytes.size(), 8);
    out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  }
  putNumber(out, 0, 2);
}

StateBlocks readState(std::istream& in) {
  Reader reader(in);
  char magic[kMagic.size()];
  reader.take(magic, kMagic.size());
  if (std::string_view(magic, kMagic.size()) != kMagic) reader.refuse("the first line is not OXCAMERA 1");
  StateBlocks blocks;
  while (const uint64_t nameLength = reader.number(2)) {
    std::string name(nameLength, '\0');
    reader.take(name.data(), name.size());
    const uint64_t length = reader.number(8);
    if (length > kMaxBlockBytes) reader.refuse("block '" + name + "' claims " + std::to_string(length) + " bytes");
    if (blocks.size() == kMaxBlocks) reader.refuse("too many blocks");
    if (!blocks.emplace(name, reader.block(length)).second) reader.refuse("block '" + name + "' occurs twice");
  }
  return blocks;
}

}  // namespace ox::simulation

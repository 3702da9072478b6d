#include "OxSimulation/FirmwareImage.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstring>
#include <stdexcept>

namespace ox::simulation {

namespace {

constexpr std::string_view kMagic = "OXFW";
constexpr std::size_t kVersionAt = 8;
constexpr std::size_t kVersionBytes = 32;
constexpr std::size_t kLengthAt = 40;
constexpr std::size_t kChecksumAt = 44;
constexpr std::size_t kHeaderBytes = 48;

constexpr std::array<uint32_t, 256> kCrcTable = [] {
  std::array<uint32_t, 256> table{};
  for (uint32_t i = 0; i < 256; ++i) {
    uint32_t value = i;
    for (int bit = 0; bit < 8; ++bit) value = value >> 1 ^ (value & 1 ? 0xEDB88320u : 0);
    table[i] = value;
  }
  return table;
}();

uint32_t crc(uint32_t before, std::span<const uint8_t> bytes) {
  uint32_t value = ~before;
  for (const uint8_t byte : bytes) value = value >> 8 ^ kCrcTable[(value ^ byte) & 0xff];
  return ~value;
}

void storeBig(uint8_t* to, uint32_t value) {
  for (int i = 0; i < 4; ++i) to[i] = static_cast<uint8_t>(value >> (24 - 8 * i));
}

uint32_t loadBig(const uint8_t* from) {
  return uint32_t{from[0]} << 24 | uint32_t{from[1]} << 16 | uint32_t{from[2]} << 8 | from[3];
}

uint32_t checksum(std::span<const uint8_t> image) {
  return crc(crc(0, image.subspan(kVersionAt, kVersionBytes)), image.subspan(kHeaderBytes));
}

}  // namespace

std::vector<uint8_t> FirmwareImage::encode() const {
  if (version.empty() || version.size() >= kVersionBytes || !std::isdigit(static_cast<unsigned char>(version[0])))
    throw std::invalid_argument("firmware version '" + version + "' must be 1 to 31 bytes beginning with a digit");
  std::vector<uint8_t> image(kHeaderBytes + payload.size(), 0);
  std::memcpy(image.data(), kMagic.data(), kMagic.size());
  storeBig(image.data() + 4, 1);
  std::memcpy(image.data() + kVersionAt, version.data(), version.size());
  storeBig(image.data() + kLengthAt, static_cast<uint32_t>(payload.size()));
  std::copy(payload.begin(), payload.end(), image.begin() + kHeaderBytes);
  storeBig(image.data() + kChecksumAt, checksum(image));
  return image;
}

FirmwareImage FirmwareImage::decode(std::span<const uint8_t> bytes) {
  const auto refuse = [](const std::string& why) { throw std::runtime_error("firmware image: " + why); };
  if (bytes.size() < kHeaderBytes) refuse(std::to_string(bytes.size()) + " bytes are less than its header");
  if (std::memcmp(bytes.data(), kMagic.data(), kMagic.size()) != 0) refuse("does not begin with OXFW");
  if (loadBig(bytes.data() + 4) != 1) refuse("layout " + std::to_string(loadBig(bytes.data() + 4)) + " is unknown");
  const uint64_t length = loadBig(bytes.data() + kLengthAt);
  if (length != bytes.size() - kHeaderBytes)
    refuse("header tells of " + std::to_string(length) + " bytes of payload, there are " +
           std::to_string(bytes.size() - kHeaderBytes));
  if (loadBig(bytes.data() + kChecksumAt) != checksum(bytes)) refuse("checksum does not match");
  const auto* text = reinterpret_cast<const char*>(bytes.data() + kVersionAt);
  FirmwareImage image{{text, strnlen(text, kVersionBytes - 1)}, {bytes.begin() + kHeaderBytes, bytes.end()}};
  if (image.version.empty() || !std::isdigit(static_cast<unsigned char>(image.version[0])))
    refuse("version '" + image.version + "' does not begin with a digit");
  return image;
}

}  // namespace ox::simulation

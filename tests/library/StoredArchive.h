// Zip archives whose members are stored as they are.
#pragma once
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

using Members = std::vector<std::pair<std::string, std::string>>;  // name, content

// A zip archive with uncompressed members.
inline std::string storedArchive(const Members& members) {
  const auto number = [](uint64_t value, int bytes) {
    std::string text;
    for (int i = 0; i < bytes; ++i) text += static_cast<char>(value >> (8 * i));
    return text;
  };
  const auto checksum = [](const std::string& content) {
    uint32_t sum = 0xffffffffu;
    for (const char c : content) {
      sum ^= static_cast<uint8_t>(c);
      for (int bit = 0; bit < 8; ++bit) sum = (sum >> 1) ^ ((sum & 1) ? 0xedb88320u : 0);
    }
    return ~sum;
  };
  std::string archive, directory;
  for (const auto& [name, content] : members) {
    // Version 2.0, no flags, stored, midnight of the first of January 1980.
    const std::string common = number(20, 2) + number(0, 2) + number(0, 2) + number(0, 2) + number(0x21, 2) +
                               number(checksum(content), 4) + number(content.size(), 4) + number(content.size(), 4) +
                               number(name.size(), 2) + number(0, 2);
    directory += "PK\x01\x02" + number(20, 2) + common + number(0, 2) + number(0, 2) + number(0, 2) + number(0, 4) +
                 number(archive.size(), 4) + name;
    archive += "PK\x03\x04" + common + name + content;
  }
  const size_t start = archive.size();
  archive += directory;
  archive += "PK\x05\x06" + number(0, 4) + number(members.size(), 2) + number(members.size(), 2) +
             number(directory.size(), 4) + number(start, 4) + number(0, 2);
  return archive;
}

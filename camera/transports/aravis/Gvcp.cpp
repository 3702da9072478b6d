#include "Gvcp.h"

#include <algorithm>
#include <cstdio>
#include <utility>

namespace ox::camera::gige {
namespace {

constexpr size_t kHeader = 8;
constexpr size_t kDiscoveryLength = 0xf8;
constexpr uint8_t kKey = 0x42;

std::string textAt(std::span<const uint8_t> bytes, size_t offset, size_t length) {
  const auto text = bytes.subspan(offset, length);
  return {text.begin(), std::find(text.begin(), text.end(), 0)};
}

uint16_t shortAt(std::span<const uint8_t> bytes, size_t offset) {
  return static_cast<uint16_t>(bytes[offset] << 8 | bytes[offset + 1]);
}

}  // namespace

void append(std::vector<uint8_t>& to, uint32_t number) {
  for (int shift = 24; shift >= 0; shift -= 8) to.push_back(static_cast<uint8_t>(number >> shift));
}

uint32_t numberAt(std::span<const uint8_t> bytes, size_t offset) {
  return uint32_t{shortAt(bytes, offset)} << 16 | shortAt(bytes, offset + 2);
}

std::vector<uint8_t> request(uint8_t flags, Command command, uint16_t id, std::span<const uint8_t> payload) {
  std::vector<uint8_t> packet{kKey, flags};
  packet.reserve(kHeader + payload.size());
  append(packet, uint32_t{command} << 16 | static_cast<uint32_t>(payload.size()));
  packet.push_back(static_cast<uint8_t>(id >> 8));
  packet.push_back(static_cast<uint8_t>(id));
  packet.insert(packet.end(), payload.begin(), payload.end());
  return packet;
}

std::optional<Answer> parseAnswer(std::span<const uint8_t> packet) {
  if (packet.size() < kHeader) return std::nullopt;
  const size_t length = shortAt(packet, 4);
  const bool isAnswer = (packet[3] & 1) != 0 && packet.size() >= kHeader + length;
  if (!isAnswer) return std::nullopt;
  return Answer{shortAt(packet, 0), shortAt(packet, 2), shortAt(packet, 6), packet.subspan(kHeader, length)};
}

std::string statusText(uint16_t status) {
  static constexpr std::pair<uint16_t, const char*> kTexts[] = {
      {0x8001, "not implemented"},
      {0x8002, "a parameter is out of range"},
      {0x8003, "no such address"},
      {0x8004, "write protected"},
      {0x8005, "bad alignment"},
      {0x8006, "access denied"},
      {0x8007, "busy"},
  };
  const auto* const known =
      std::find_if(std::begin(kTexts), std::end(kTexts), [&](const auto& t) { return t.first == status; });
  char number[16];
  snprintf(number, sizeof number, " (0x%04x)", status);
  return std::string("refused: ") + (known == std::end(kTexts) ? "unknown reason" : known->second) + number;
}

std::optional<Discovered> parseDiscovery(std::span<const uint8_t> payload) {
  if (payload.size() < kDiscoveryLength) return std::nullopt;
  Discovered found{};
  char mac[18];
  snprintf(mac, sizeof mac, "%02x:%02x:%02x:%02x:%02x:%02x", payload[0x0a], payload[0x0b], payload[0x0c], payload[0x0d],
           payload[0x0e], payload[0x0f]);
  found.facts.identity = std::string(mac) == "00:00:00:00:00:00" ? "" : mac;
  found.address = numberAt(payload, 0x24);
  found.mask = numberAt(payload, 0x34);
  found.gateway = numberAt(payload, 0x44);
  found.facts.vendor = textAt(payload, 0x48, 32);
  found.facts.model = textAt(payload, 0x68, 32);
  found.facts.version = textAt(payload, 0x88, 32);
  found.facts.serial = textAt(payload, 0xd8, 16);
  found.facts.userName = textAt(payload, 0xe8, 16);
  found.facts.address = ipv4Text(found.address);
  found.facts.protocol = "GigEVision";
  return found;
}

}  // namespace ox::camera::gige

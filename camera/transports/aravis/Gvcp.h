// The control protocol of GigE Vision, GVCP: packets and the registers that every camera has. Numbers are big-endian.
#pragma once

#include <OxCameraTransport/Transport.h>

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "Ipv4.h"

namespace ox::camera::gige {

inline constexpr uint16_t kGvcpPort = 3956;
inline constexpr size_t kMaxPacket = 576;       // bytes, more is never sent over this protocol
inline constexpr size_t kMaxMemoryBlock = 512;  // bytes of one memory request

enum Command : uint16_t {
  kDiscovery = 0x0002,  // each answer's number is one above
  kForceAddress = 0x0004,
  kReadRegister = 0x0080,
  kWriteRegister = 0x0082,
  kReadMemory = 0x0084,
  kWriteMemory = 0x0086,
  kPendingAnswer = 0x0089,  // an answer itself: the real one takes that many milliseconds
};

enum Flag : uint8_t { kWantsAnswer = 0x01, kBroadcastAnswer = 0x10 };

enum Register : uint32_t {
  kVersion = 0x0000,
  kSupportedModes = 0x0010,
  kModes = 0x0014,
  kFirstUrl = 0x0200,
  kSecondUrl = 0x0400,
  kStoredAddressRegister = 0x064c,
  kStoredMask = 0x065c,
  kStoredGateway = 0x066c,
  kLinkSpeed = 0x0670,  // megabits per second
  kHeartbeatTime = 0x0938,
  kControlPrivilege = 0x0a00,
  kControllerAddress = 0x0a14,
};
inline constexpr size_t kUrlLength = 512;
inline constexpr uint32_t kExclusive = 1, kControl = 2;  // of kControlPrivilege

struct Answer {
  uint16_t status;
  uint16_t command;
  uint16_t id;
  std::span<const uint8_t> payload;
};

void append(std::vector<uint8_t>& to, uint32_t number);
uint32_t numberAt(std::span<const uint8_t> bytes, size_t offset);

std::vector<uint8_t> request(uint8_t flags, Command command, uint16_t id, std::span<const uint8_t> payload = {});
// Nothing for what is no answer of this protocol: too short, cut off, or foreign.
std::optional<Answer> parseAnswer(std::span<const uint8_t> packet);

// "refused: write protected (0x8004)"
std::string statusText(uint16_t status);

// What a camera says about itself when it is discovered; nothing when the answer is too short for it.
struct Discovered {
  CameraFacts facts;  // without place, reach and what is known of the interface
  Ipv4 address;
  Ipv4 mask;
  Ipv4 gateway;
};
std::optional<Discovered> parseDiscovery(std::span<const uint8_t> payload);

}  // namespace ox::camera::gige

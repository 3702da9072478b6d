#include "GigeAddress.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <set>
#include <sstream>
#include <thread>

#include "Discovery.h"
#include "Gvcp.h"
#include "GvcpChannel.h"

namespace ox::camera::gige {
namespace {

using Clock = std::chrono::steady_clock;

constexpr size_t kCandidates = 32;
constexpr Milliseconds kNeighbourTime{1000};  // in which a neighbour that is there answers
constexpr Milliseconds kForceTime{1000};

Ipv4 number(const std::string& text) { return parseIpv4(text).value_or(0); }

NetworkInterface interfaceOf(const CameraFacts& camera) {
  for (const NetworkInterface& interface : networkInterfaces())
    if (interface.name == camera.interface && interface.text() == camera.interfaceAddress) return interface;
  throw TransportError(Reason::failed, "The interface '" + camera.interface + "' on which the camera answered is gone");
}

// Addresses that the kernel has found somebody at.
std::set<Ipv4> neighbours() {
  std::set<Ipv4> found;
  std::ifstream table("/proc/net/arp");
  std::string line;
  std::getline(table, line);  // the headings
  while (std::getline(table, line)) {
    std::istringstream fields(line);
    std::string address, type;
    unsigned int flags = 0;
    fields >> address >> type >> std::hex >> flags;
    if ((flags & 2) != 0) found.insert(number(address));
  }
  return found;
}

}  // namespace

NetworkConfiguration readConfiguration(Registers& registers) {
  constexpr uint32_t kCurrent = 0x0024, kCurrentMask = 0x0034, kCurrentGateway = 0x0044;
  const auto text = [&](uint32_t address) { return ipv4Text(registers.readRegister(address)); };
  return {{text(kCurrent), text(kCurrentMask), text(kCurrentGateway)},
          {text(kStoredAddressRegister), text(kStoredMask), text(kStoredGateway)},
          registers.readRegister(kModes) & 7,
          registers.readRegister(kSupportedModes) & 7};
}

void storeConfiguration(Registers& registers, const NetworkAddress& address) {
  registers.writeRegister(kStoredAddressRegister, number(address.address));
  registers.writeRegister(kStoredMask, number(address.mask));
  registers.writeRegister(kStoredGateway, number(address.gateway));
  const uint32_t modes = registers.readRegister(kModes);
  if ((modes & kStoredAddress) == 0) registers.writeRegister(kModes, modes | kStoredAddress);
  const NetworkConfiguration now = readConfiguration(registers);
  const bool kept = now.stored.address == address.address && now.stored.mask == address.mask &&
                    number(now.stored.gateway) == number(address.gateway) && (now.modes & kStoredAddress) != 0;
  if (!kept) {
    throw TransportError(Reason::failed, "The camera has not kept the address: it reads back " + now.stored.address +
                                             ", mask " + now.stored.mask + ", gateway " + now.stored.gateway);
  }
}

// The system is made to look for the first candidates; one that nobody answers for is free.
NetworkAddress propose(const CameraFacts& camera) {
  const NetworkInterface interface = interfaceOf(camera);
  const Ipv4 network = interface.address & interface.mask;
  const uint32_t size = ~interface.mask;
  std::vector<Ipv4> candidates;
  const auto consider = [&](Ipv4 address) {
    const bool host = address != network && address != (network | size) && address != interface.address;
    if (host && candidates.size() < kCandidates) candidates.push_back(address);
  };
  consider(network | (number(camera.address) & size));  // its own number, in the network of the interface
  for (uint32_t host = 1; host < size && candidates.size() < kCandidates; ++host)
    consider(network + (interface.address - network + host) % (size + 1));
  const Socket socket = openSocket(interface.address);
  for (const Ipv4 candidate : candidates) {
    sockaddr_in to{};
    to.sin_family = AF_INET;
    to.sin_port = htons(kGvcpPort);
    to.sin_addr.s_addr = htonl(candidate);
    const auto packet = request(kWantsAnswer, kDiscovery, 1);
    sendto(socket.get(), packet.data(), packet.size(), 0, reinterpret_cast<const sockaddr*>(&to), sizeof to);
  }
  std::this_thread::sleep_for(kNeighbourTime);
  std::set<Ipv4> taken = neighbours();
  std::array<uint8_t, kMaxPacket> room;
  sockaddr_in from{};
  for (socklen_t length = sizeof from;
       recvfrom(socket.get(), room.data(), room.size(), 0, reinterpret_cast<sockaddr*>(&from), &length) >= 0;
       length = sizeof from)
    taken.insert(ntohl(from.sin_addr.s_addr));
  const auto isFree =
      std::find_if(candidates.begin(), candidates.end(), [&](Ipv4 address) { return !taken.contains(address); });
  if (isFree == candidates.end())
    throw TransportError(Reason::failed, "Every address that was tried on " + interface.name + " is in use");
  return {ipv4Text(*isFree), ipv4Text(interface.mask), "0.0.0.0"};
}

void force(const CameraFacts& camera, const NetworkAddress& address) {
  if (camera.reach == Reach::busy) throw TransportError(Reason::busy, camera.obstacle);
  std::array<unsigned int, 6> mac{};
  if (sscanf(camera.identity.c_str(), "%2x:%2x:%2x:%2x:%2x:%2x", &mac[0], &mac[1], &mac[2], &mac[3], &mac[4],
             &mac[5]) != 6) {
    throw TransportError(Reason::notSupported,
                         "The camera says no hardware address by which it could be told its address");
  }
  std::vector<uint8_t> payload(2);
  for (const unsigned int byte : mac) payload.push_back(static_cast<uint8_t>(byte));
  for (const std::string& field : {address.address, address.mask, address.gateway}) {
    payload.resize(payload.size() + 12);
    append(payload, number(field));
  }
  const NetworkInterface interface = interfaceOf(camera);
  const Socket socket = openSocket(interface.loopback ? interface.address : INADDR_ANY);
  const int on = 1;
  setsockopt(socket.get(), SOL_SOCKET, SO_BROADCAST, &on, sizeof on);
  setsockopt(socket.get(), SOL_SOCKET, SO_BINDTODEVICE, interface.name.c_str(),
             static_cast<socklen_t>(interface.name.size()));
  sockaddr_in to{};
  to.sin_family = AF_INET;
  to.sin_port = htons(kGvcpPort);
  to.sin_addr.s_addr = htonl(interface.loopback ? parsePlace(camera.place).camera : INADDR_BROADCAST);
  const auto packet = request(kWantsAnswer | kBroadcastAnswer, kForceAddress, 1, payload);
  if (sendto(socket.get(), packet.data(), packet.size(), 0, reinterpret_cast<const sockaddr*>(&to), sizeof to) < 0)
    throw TransportError(Reason::failed, interface.name + " does not send: " + strerror(errno));
  std::array<uint8_t, kMaxPacket> room;
  for (const auto end = Clock::now() + kForceTime; Clock::now() < end;) {
    pollfd ready{socket.get(), POLLIN, 0};
    if (poll(&ready, 1, static_cast<int>(kForceTime.count() / 10)) <= 0) continue;
    const ssize_t received = recv(socket.get(), room.data(), room.size(), 0);
    if (received < 0) continue;
    const auto answer = parseAnswer({room.data(), static_cast<size_t>(received)});
    if (!answer || answer->command != kForceAddress + 1) continue;
    if (answer->status != 0) throw TransportError(Reason::refused, "The address was " + statusText(answer->status));
    return;
  }
  throw TransportError(Reason::timedOut, "The camera did not confirm its new address within 1 s");
}

}  // namespace ox::camera::gige

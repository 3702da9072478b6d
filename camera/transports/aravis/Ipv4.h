// IPv4 addresses as numbers, and the interfaces of this machine.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ox::camera::gige {

using Ipv4 = uint32_t;  // 192.168.0.1 is 0xc0a80001

std::string ipv4Text(Ipv4 address);
std::optional<Ipv4> parseIpv4(const std::string& text);
std::vector<std::string> splitList(std::string_view list);  // by commas, without blanks and empty parts

struct NetworkInterface {
  std::string name;
  int index = 0;
  Ipv4 address = 0;
  Ipv4 mask = 0;
  bool loopback = false;

  bool contains(Ipv4 other) const { return (other & mask) == (address & mask); }
  std::string text() const;  // "192.168.0.2/24"
  uint64_t speed() const;    // bits per second as the system says, 0: not known
};

// Those that are up and have an address; of them those that OXGENAPI_INTERFACES names, by name or address, if it is
// set. `missing` gets the names there that fit none.
std::vector<NetworkInterface> networkInterfaces(std::vector<std::string>* missing = nullptr);

// The interface over which this machine would send to an address, if there is a route.
std::optional<NetworkInterface> interfaceTo(Ipv4 address);

}  // namespace ox::camera::gige

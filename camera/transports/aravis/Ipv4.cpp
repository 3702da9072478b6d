#include "Ipv4.h"

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <fstream>
#include <utility>

namespace ox::camera::gige {
namespace {

Ipv4 addressOf(const sockaddr* address) {
  return ntohl(reinterpret_cast<const sockaddr_in*>(address)->sin_addr.s_addr);
}

std::vector<NetworkInterface> allInterfaces() {
  std::vector<NetworkInterface> all;
  ifaddrs* list = nullptr;
  if (getifaddrs(&list) != 0) return all;
  for (const ifaddrs* entry = list; entry != nullptr; entry = entry->ifa_next) {
    const bool usable = entry->ifa_addr != nullptr && entry->ifa_addr->sa_family == AF_INET &&
                        entry->ifa_netmask != nullptr && (entry->ifa_flags & IFF_UP) != 0;
    if (!usable) continue;
    all.push_back({entry->ifa_name, static_cast<int>(if_nametoindex(entry->ifa_name)), addressOf(entry->ifa_addr),
                   addressOf(entry->ifa_netmask), (entry->ifa_flags & IFF_LOOPBACK) != 0});
  }
  freeifaddrs(list);
  return all;
}

}  // namespace

std::string ipv4Text(Ipv4 address) {
  const in_addr net{htonl(address)};
  char text[INET_ADDRSTRLEN] = "";
  inet_ntop(AF_INET, &net, text, sizeof text);
  return text;
}

std::optional<Ipv4> parseIpv4(const std::string& text) {
  in_addr address{};
  if (inet_pton(AF_INET, text.c_str(), &address) != 1) return std::nullopt;
  return ntohl(address.s_addr);
}

std::vector<std::string> splitList(std::string_view list) {
  std::vector<std::string> parts;
  std::string part;
  for (const char c : list)
    if (c != ',' && c != ' ')
      part += c;
    else if (!part.empty())
      parts.push_back(std::exchange(part, {}));
  if (!part.empty()) parts.push_back(part);
  return parts;
}

std::string NetworkInterface::text() const { return ipv4Text(address) + "/" + std::to_string(std::popcount(mask)); }

uint64_t NetworkInterface::speed() const {
  std::ifstream file("/sys/class/net/" + name + "/speed");
  int64_t megabits = 0;
  return file >> megabits && megabits > 0 ? static_cast<uint64_t>(megabits) * 1'000'000 : 0;
}

std::vector<NetworkInterface> networkInterfaces(std::vector<std::string>* missing) {
  std::vector<NetworkInterface> all = allInterfaces();
  const char* chosen = std::getenv("OXGENAPI_INTERFACES");
  if (chosen == nullptr) return all;
  std::vector<NetworkInterface> wanted;
  for (const std::string& name : splitList(chosen)) {
    const size_t before = wanted.size();
    std::copy_if(all.begin(), all.end(), std::back_inserter(wanted), [&](const NetworkInterface& interface) {
      return interface.name == name || ipv4Text(interface.address) == name;
    });
    if (wanted.size() == before && missing != nullptr) missing->push_back(name);
  }
  return wanted;
}

std::optional<NetworkInterface> interfaceTo(Ipv4 address) {
  const int socket = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  if (socket < 0) return std::nullopt;
  sockaddr_in to{};
  to.sin_family = AF_INET;
  to.sin_port = htons(9);
  to.sin_addr.s_addr = htonl(address);
  sockaddr_in own{};
  socklen_t length = sizeof own;
  const bool routed = connect(socket, reinterpret_cast<const sockaddr*>(&to), sizeof to) == 0 &&
                      getsockname(socket, reinterpret_cast<sockaddr*>(&own), &length) == 0;
  ::close(socket);
  if (!routed) return std::nullopt;
  for (const NetworkInterface& interface : allInterfaces())
    if (interface.address == ntohl(own.sin_addr.s_addr)) return interface;
  // On the loopback device every address of the network is its own.
  for (const NetworkInterface& interface : allInterfaces())
    if (interface.loopback && interface.contains(ntohl(own.sin_addr.s_addr))) return interface;
  return std::nullopt;
}

}  // namespace ox::camera::gige

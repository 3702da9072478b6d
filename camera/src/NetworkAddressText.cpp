#include "NetworkAddressText.h"

#include <arpa/inet.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <optional>
#include <string>

#include "DeviceText.h"
#include "Failure.h"

namespace ox::camera {
namespace {

template <size_t N>
void store(char (&to)[N], const std::string& text) {
  const size_t length = std::min(text.size(), N - 1);
  std::memcpy(to, text.data(), length);
  to[length] = '\0';
}

[[noreturn]] void refuse(const std::string& text) { throw CameraError(OXGENAPI_E_INVALID_ARGUMENT, text); }

template <size_t N>
uint32_t number(const char (&text)[N], const char* what) {
  const std::string copy(text, strnlen(text, N));
  in_addr address{};
  if (inet_pton(AF_INET, copy.c_str(), &address) != 1)
    refuse(std::string("The ") + what + " '" + shown(copy) + "' is no IPv4 address");
  return ntohl(address.s_addr);
}

std::string dotted(uint32_t number) {
  const in_addr address{htonl(number)};
  char text[INET_ADDRSTRLEN] = "";
  inet_ntop(AF_INET, &address, text, sizeof text);
  return text;
}

}  // namespace

TNetworkAddress recordOf(const NetworkAddress& address) {
  TNetworkAddress record{};
  store(record.Address, address.address);
  store(record.Mask, address.mask);
  store(record.Gateway, address.gateway);
  return record;
}

TNetworkConfiguration recordOf(const NetworkConfiguration& configuration) {
  return {recordOf(configuration.current), recordOf(configuration.stored), configuration.modes,
          configuration.supported};
}

NetworkAddress checkedAddress(const TNetworkAddress* record) {
  if (record == nullptr) refuse("There is no address");
  const uint32_t address = number(record->Address, "address");
  const uint32_t mask = number(record->Mask, "mask");
  const uint32_t gateway = record->Gateway[0] == '\0' ? 0 : number(record->Gateway, "gateway");
  if (mask == 0 || !std::has_single_bit(uint64_t{~mask} + 1)) refuse("The mask " + dotted(mask) + " is not contiguous");
  const uint32_t first = address >> 24;
  if (first == 0 || first == 127 || first >= 224) refuse(dotted(address) + " is no address for a camera");
  const bool small = mask >= 0xfffffffe;  // two addresses or one: neither stands for the network
  if (!small && (address & ~mask) == 0)
    refuse(dotted(address) + " is the network itself under the mask " + dotted(mask));
  if (!small && (address & ~mask) == ~mask)
    refuse(dotted(address) + " is the broadcast address under the mask " + dotted(mask));
  if (gateway != 0 && (gateway & mask) != (address & mask)) {
    refuse("The gateway " + dotted(gateway) + " is not in the network of " + dotted(address) + " under the mask " +
           dotted(mask));
  }
  return {dotted(address), dotted(mask), dotted(gateway)};
}

}  // namespace ox::camera

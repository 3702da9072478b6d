#include "FakeGige.h"

#include <arpa/inet.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>

namespace {

constexpr size_t kControl = 0xa00, kDescription = 0x10000;

uint32_t at(const std::vector<uint8_t>& bytes, size_t i) {
  return uint32_t{bytes[i]} << 24 | uint32_t{bytes[i + 1]} << 16 | uint32_t{bytes[i + 2]} << 8 | bytes[i + 3];
}

std::vector<uint8_t> header(uint16_t status, uint16_t command, size_t length, const uint8_t* id) {
  return {static_cast<uint8_t>(status >> 8),
          static_cast<uint8_t>(status),
          static_cast<uint8_t>(command >> 8),
          static_cast<uint8_t>(command),
          static_cast<uint8_t>(length >> 8),
          static_cast<uint8_t>(length),
          id[0],
          id[1]};
}

}  // namespace

FakeGige::FakeGige(const std::string& address) {
  sockaddr_in own{};
  own.sin_family = AF_INET;
  own.sin_port = htons(3956);
  inet_pton(AF_INET, address.c_str(), &own.sin_addr);
  const int made = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  if (bind(made, reinterpret_cast<const sockaddr*>(&own), sizeof own) != 0) {
    ::close(made);
    return;
  }
  socket_ = made;
  number(0x08, 0x0002'0002);
  number(0x0c, ntohl(own.sin_addr.s_addr));  // the lower part of the hardware address
  number(0x10, 7);
  number(0x14, 6);
  number(0x24, ntohl(own.sin_addr.s_addr));
  number(0x34, 0xff000000);
  text(0x48, "Fake & Sons", 32);
  text(0x68, "Loop", 32);
  text(0xd8, "SERIAL-OF-16-CHR", 16);
  number(0x938, 3000);
  thread_ = std::thread([this] { serve(); });
}

FakeGige::~FakeGige() {
  ends_ = true;
  if (thread_.joinable()) thread_.join();
  if (socket_ >= 0) ::close(socket_);
}

void FakeGige::text(size_t address, const std::string& text, size_t length) {
  const std::lock_guard lock(mutex_);
  for (size_t i = 0; i < length; ++i) memory_[address + i] = i < text.size() ? static_cast<uint8_t>(text[i]) : 0;
}

void FakeGige::number(size_t address, uint32_t value) {
  const std::lock_guard lock(mutex_);
  for (size_t i = 0; i < 4; ++i) memory_[address + i] = static_cast<uint8_t>(value >> (24 - 8 * i));
}

uint32_t FakeGige::number(size_t address) {
  const std::lock_guard lock(mutex_);
  return at(memory_, address);
}

void FakeGige::describe(const std::string& name, const std::string& bytes) {
  char url[512];
  snprintf(url, sizeof url, "Local:%s;%zx;%zx", name.c_str(), kDescription, bytes.size());
  text(0x200, url, 512);
  text(kDescription, bytes, (bytes.size() + 3) / 4 * 4);
}

void FakeGige::serve() {
  while (!ends_) {
    pollfd ready{socket_, POLLIN, 0};
    if (poll(&ready, 1, 5) <= 0) continue;
    std::vector<uint8_t> packet(2048);
    sockaddr_in from{};
    socklen_t length = sizeof from;
    const ssize_t size =
        recvfrom(socket_, packet.data(), packet.size(), 0, reinterpret_cast<sockaddr*>(&from), &length);
    packet.resize(size < 0 ? 0 : static_cast<size_t>(size));
    if (packet.size() >= 8 && !silent) answer(packet, from);
  }
}

void FakeGige::send(const std::vector<uint8_t>& bytes, const sockaddr_in& to) const {
  sendto(socket_, bytes.data(), bytes.size(), 0, reinterpret_cast<const sockaddr*>(&to), sizeof to);
}

void FakeGige::answer(const std::vector<uint8_t>& packet, const sockaddr_in& from) {
  const auto command = static_cast<uint16_t>(packet[2] << 8 | packet[3]);
  const size_t address = packet.size() >= 12 ? at(packet, 8) : 0;
  const bool writes_something = command == 0x82 || command == 0x86;
  const bool control = writes_something && address == kControl;
  uint16_t status = 0;
  std::vector<uint8_t> payload;
  if (command == 0x02 && odd) {
    send({1, 2, 3}, from);
    send(header(0, 3, 248, &packet[6]), from);  // says 248 bytes and has none
    std::vector<uint8_t> half = header(0, 3, 100, &packet[6]);
    half.resize(108);
    send(half, from);
  }
  {
    const std::lock_guard lock(mutex_);
    const bool held = (at(memory_, kControl) & 3) != 0;
    const bool holder =
        held && controller_.sin_port == from.sin_port && controller_.sin_addr.s_addr == from.sin_addr.s_addr;
    if (command == 0x02) {
      payload.assign(memory_.begin(), memory_.begin() + 248);
    } else if (command == 0x04) {
      for (const auto& [field, place] : {std::pair{0x24, 28}, {0x34, 44}, {0x44, 60}})
        std::copy_n(packet.begin() + place, 4, memory_.begin() + field);
    } else if (address + 1024 > memory_.size()) {
      status = 0x8003;
    } else if (writes_something && (held ? !holder : !control)) {
      status = 0x8006;
    } else if (writes_something) {
      std::copy(packet.begin() + 12, packet.end(), memory_.begin() + static_cast<ptrdiff_t>(address));
      if (control) controller_ = from;
      if (!control) ++writes;
      payload = {0, 0, 0, 1};
    } else if (command == 0x80) {
      payload.assign(memory_.begin() + static_cast<ptrdiff_t>(address),
                     memory_.begin() + static_cast<ptrdiff_t>(address) + 4);
    } else if (command == 0x84) {
      const size_t length = at(packet, 12);
      payload.assign(packet.begin() + 8, packet.begin() + 12);
      const auto begin = memory_.begin() + static_cast<ptrdiff_t>(address);
      payload.insert(payload.end(), begin, begin + static_cast<ptrdiff_t>(length));
      if (swapsMemory && length == 4) std::reverse(payload.begin() + 4, payload.end());
    }
  }
  if (writes_something && !control && deafToWrites) return;
  if (const int wait = writes_something && !control ? pendingMs.load() : 0; wait > 0) {
    std::vector<uint8_t> pending = header(0, 0x89, 4, &packet[6]);
    pending.insert(pending.end(), {0, 0, static_cast<uint8_t>(wait >> 8), static_cast<uint8_t>(wait)});
    send(pending, from);
    std::this_thread::sleep_for(std::chrono::milliseconds(wait));
  }
  std::vector<uint8_t> result = header(status, static_cast<uint16_t>(command + 1), payload.size(), &packet[6]);
  result.insert(result.end(), payload.begin(), payload.end());
  send(result, from);
}

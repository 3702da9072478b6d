#include "GvcpChannel.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <limits>
#include <thread>

namespace ox::camera::gige {
namespace {

using Clock = std::chrono::steady_clock;

constexpr size_t kWord = 4;
constexpr int kTries = 3;
constexpr Milliseconds kGlance{20};  // how long abandon() may go unseen

sockaddr_in addressOf(Ipv4 address, uint16_t port) {
  sockaddr_in result{};
  result.sin_family = AF_INET;
  result.sin_port = htons(port);
  result.sin_addr.s_addr = htonl(address);
  return result;
}

bool isWrite(Command command) { return command == kWriteRegister || command == kWriteMemory; }

uint32_t registerAddress(uint64_t address, size_t length) {
  if (length > std::numeric_limits<uint32_t>::max() || address > std::numeric_limits<uint32_t>::max() - length)
    throw TransportError(Reason::refused, "A GigE Vision camera has no registers beyond 32 bits");
  return static_cast<uint32_t>(address);
}

}  // namespace

Socket::~Socket() {
  if (handle_ >= 0) ::close(handle_);
}

Socket openSocket(Ipv4 own) {
  Socket socket(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  const sockaddr_in from = addressOf(own, 0);
  if (socket.get() < 0 || bind(socket.get(), reinterpret_cast<const sockaddr*>(&from), sizeof from) != 0)
    throw TransportError(Reason::failed, "No socket on " + ipv4Text(own) + ": " + strerror(errno));
  return socket;
}

GvcpChannel::GvcpChannel(Ipv4 camera, Ipv4 own, Milliseconds answerTime)
    : socket_(openSocket(own)), answerTime_(answerTime) {
  const sockaddr_in to = addressOf(camera, kGvcpPort);
  if (connect(socket_.get(), reinterpret_cast<const sockaddr*>(&to), sizeof to) != 0)
    throw TransportError(Reason::unreachable, "No way to " + ipv4Text(camera) + ": " + strerror(errno));
}

std::optional<std::vector<uint8_t>> GvcpChannel::askOnce(Command command, std::span<const uint8_t> packet, uint16_t id,
                                                         Milliseconds time) {
  std::array<uint8_t, kMaxPacket> room;
  send(socket_.get(), packet.data(), packet.size(), 0);  // a failure shows as an answer that does not come
  for (auto end = Clock::now() + time; !abandoned_;) {
    const auto left = std::chrono::ceil<Milliseconds>(end - Clock::now());
    if (left.count() <= 0) return std::nullopt;
    pollfd ready{socket_.get(), POLLIN, 0};
    if (poll(&ready, 1, static_cast<int>(std::min(left, kGlance).count())) <= 0) continue;
    const ssize_t size = recv(socket_.get(), room.data(), room.size(), 0);
    if (size < 0) {  // nothing listens there, or no way: it may come back
      std::this_thread::sleep_for(kGlance);
      continue;
    }
    const auto answer = parseAnswer({room.data(), static_cast<size_t>(size)});
    if (!answer || answer->id != id) continue;
    if (answer->command == kPendingAnswer && answer->payload.size() >= kWord) {
      end = Clock::now() + Milliseconds{numberAt(answer->payload, 0) & 0xffff} + time;
    } else if (answer->command == command + 1) {
      if (answer->status != 0) throw TransportError(Reason::refused, statusText(answer->status));
      return std::vector<uint8_t>(answer->payload.begin(), answer->payload.end());
    }
  }
  throw TransportError(Reason::lost, "the access was given up");
}

std::vector<uint8_t> GvcpChannel::ask(Command command, std::span<const uint8_t> payload) {
  const std::lock_guard lock(mutex_);
  struct Busy {
    std::atomic<bool>& flag;
    explicit Busy(std::atomic<bool>& f) : flag(f) { flag = true; }
    ~Busy() { flag = false; }
  } busy(busy_);
  id_ = static_cast<uint16_t>(id_ == 0xffff ? 1 : id_ + 1);  // 0 is not allowed
  const std::vector<uint8_t> packet = request(kWantsAnswer, command, id_, payload);
  const int tries = isWrite(command) ? 1 : kTries;
  for (int i = 0; i < tries; ++i) {
    std::optional<std::vector<uint8_t>> answer = askOnce(command, packet, id_, answerTime_ / tries);
    if (answer) return *std::move(answer);
  }
  const std::string time = " within " + std::to_string(answerTime_.count()) + " ms";
  if (isWrite(command)) {
    throw TransportError(Reason::outcomeUnknown,
                         "No answer to a write" + time + ": outcome unknown, it is not repeated");
  }
  throw TransportError(Reason::timedOut, "No answer to a read" + time);
}

uint32_t GvcpChannel::readRegister(uint32_t address) {
  std::vector<uint8_t> payload;
  append(payload, address);
  const std::vector<uint8_t> answer = ask(kReadRegister, payload);
  if (answer.size() < kWord) throw TransportError(Reason::failed, "The camera answered a read with too few bytes");
  return numberAt(answer, 0);
}

void GvcpChannel::writeRegister(uint32_t address, uint32_t value) {
  std::vector<uint8_t> payload;
  append(payload, address);
  append(payload, value);
  ask(kWriteRegister, payload);
}

void GvcpChannel::readWords(uint8_t* to, uint32_t address, size_t length) {
  if (length == kWord && registers_) {
    std::vector<uint8_t> word;
    append(word, readRegister(address));
    std::copy(word.begin(), word.end(), to);
    return;
  }
  for (size_t done = 0; done < length;) {
    const size_t part = std::min(length - done, kMaxMemoryBlock);
    std::vector<uint8_t> payload;
    append(payload, address + static_cast<uint32_t>(done));
    append(payload, static_cast<uint32_t>(part));
    const std::vector<uint8_t> answer = ask(kReadMemory, payload);
    if (answer.size() != kWord + part)
      throw TransportError(Reason::failed, "The camera answered a read with a wrong number of bytes");
    std::copy(answer.begin() + kWord, answer.end(), to + done);
    done += part;
  }
}

void GvcpChannel::writeWords(const uint8_t* from, uint32_t address, size_t length) {
  if (length == kWord && registers_) {
    writeRegister(address, numberAt({from, kWord}, 0));
    return;
  }
  for (size_t done = 0; done < length;) {
    const size_t part = std::min(length - done, kMaxMemoryBlock);
    std::vector<uint8_t> payload;
    append(payload, address + static_cast<uint32_t>(done));
    payload.insert(payload.end(), from + done, from + done + part);
    ask(kWriteMemory, payload);
    done += part;
  }
}

void GvcpChannel::read(void* buffer, uint64_t address, size_t length) {
  const uint32_t start = registerAddress(address, length);
  if (start % kWord == 0 && length % kWord == 0) {
    readWords(static_cast<uint8_t*>(buffer), start, length);
    return;
  }
  const size_t before = start % kWord;
  std::vector<uint8_t> words((before + length + kWord - 1) / kWord * kWord);
  readWords(words.data(), start - static_cast<uint32_t>(before), words.size());
  std::memcpy(buffer, words.data() + before, length);
}

void GvcpChannel::write(const void* buffer, uint64_t address, size_t length) {
  const uint32_t start = registerAddress(address, length);
  if (start % kWord == 0 && length % kWord == 0) {
    writeWords(static_cast<const uint8_t*>(buffer), start, length);
    return;
  }
  const size_t before = start % kWord;
  std::vector<uint8_t> words((before + length + kWord - 1) / kWord * kWord);
  readWords(words.data(), start - static_cast<uint32_t>(before), words.size());
  std::memcpy(words.data() + before, buffer, length);
  writeWords(words.data(), start - static_cast<uint32_t>(before), words.size());
}

}  // namespace ox::camera::gige

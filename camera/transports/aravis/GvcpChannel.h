// Requests to one camera, and its answers.
#pragma once

#include <OxCameraTransport/Transport.h>

#include <atomic>
#include <chrono>
#include <mutex>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "Gvcp.h"

namespace ox::camera::gige {

// A socket that is closed at the end.
class Socket {
 public:
  explicit Socket(int handle) : handle_(handle) {}
  Socket(Socket&& other) noexcept : handle_(std::exchange(other.handle_, -1)) {}
  Socket& operator=(Socket&&) = delete;
  ~Socket();
  int get() const { return handle_; }

 private:
  int handle_;
};

// A UDP socket on one of this machine's addresses (0: any). Throws TransportError.
Socket openSocket(Ipv4 own);

// One request at a time; any thread may call. What reads is asked three times, what writes once. A camera that says it
// needs longer gets that time. Failures are TransportErrors.
class GvcpChannel {
 public:
  // From one of this machine's addresses, 0: any.
  GvcpChannel(Ipv4 camera, Ipv4 own, Milliseconds answerTime);

  uint32_t readRegister(uint32_t address);
  void writeRegister(uint32_t address, uint32_t value);
  // Any place and length, as memory. A write of a part of a word reads the rest first.
  void read(void* buffer, uint64_t address, size_t length);
  void write(const void* buffer, uint64_t address, size_t length);

  // Makes read() and write() move single words as registers.
  void useRegisterAccess(bool use) { registers_ = use; }

  // Whether a request runs now.
  bool isBusy() const { return busy_; }
  // A running request fails, and every later one until resume().
  void abandon() noexcept { abandoned_ = true; }
  void resume() noexcept { abandoned_ = false; }

 private:
  std::vector<uint8_t> ask(Command command, std::span<const uint8_t> payload);
  std::optional<std::vector<uint8_t>> askOnce(Command command, std::span<const uint8_t> packet, uint16_t id,
                                              Milliseconds time);
  void readWords(uint8_t* to, uint32_t address, size_t length);
  void writeWords(const uint8_t* from, uint32_t address, size_t length);

  Socket socket_;
  const Milliseconds answerTime_;
  std::mutex mutex_;
  uint16_t id_ = 0;
  std::atomic<bool> registers_ = false;
  std::atomic<bool> busy_ = false;
  std::atomic<bool> abandoned_ = false;
};

}  // namespace ox::camera::gige

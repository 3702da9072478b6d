// A transfer of a device file, followed at the port: shows how far it has come, and ends cleanly on Ctrl-C.
#pragma once

#include <chrono>
#include <csignal>
#include <cstdint>
#include <string>

#include "Session.h"

namespace tool {

// While it lives, the bytes that pass through the device's file access buffer are counted and shown on standard error:
// as a bar on a terminal, as a line every second otherwise. Ctrl-C lets one port access fail; the library then closes
// the device file, with accesses that pass, and the transfer fails. A second Ctrl-C ends the program as usual.
class Transfer final : public PortWatcher {
 public:
  // `size`: how many bytes are expected, 0 when nobody knows.
  Transfer(Session& session, std::string name, uint64_t size);
  ~Transfer() override;
  Transfer(const Transfer&) = delete;
  Transfer& operator=(const Transfer&) = delete;

  bool mayAccess() override;
  void accessed(int64_t address, int64_t length) override;

  // "10000 bytes in 0.01 s, 1.0 MB/s" for the bytes that really were moved.
  std::string summary(uint64_t bytes) const;
  uint64_t bytes() const { return bytes_; }

 private:
  using Clock = std::chrono::steady_clock;

  void show(Clock::time_point now);
  std::string rate(uint64_t bytes) const;

  Session& session_;
  std::string name_;
  uint64_t size_;
  int64_t bufferAddress_ = -1;
  uint64_t bytes_ = 0;
  bool isTerminal_;
  bool isShown_ = false;
  bool isStopped_ = false;
  Clock::time_point start_ = Clock::now();
  Clock::time_point shown_ = start_;
  struct sigaction former_ {};
};

}  // namespace tool

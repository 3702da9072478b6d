// A transfer of a device file, followed at the port: shows how far it has come, and ends cleanly on Ctrl-C.
#pragma once

#include <cstdint>
#include <string>

#include "Interrupt.h"
#include "Progress.h"
#include "Session.h"

namespace tool {

// While it lives, the bytes that pass through the device's file access buffer are counted and shown as progress. Ctrl-C
// lets one port access fail; the library then closes the device file, with accesses that pass, and the transfer fails.
// A second Ctrl-C ends the program as usual.
class Transfer final : public PortWatcher {
 public:
  // `size`: how many bytes are expected, 0 when nobody knows.
  Transfer(Session& session, std::string name, uint64_t size);
  ~Transfer() override;
  Transfer(const Transfer&) = delete;
  Transfer& operator=(const Transfer&) = delete;

  bool mayAccess() override;
  void accessed(int64_t address, int64_t length) override;

  uint64_t bytes() const { return bytes_; }
  // "10000 bytes in 0.01 s, 1.0 MB/s" for the bytes that really were moved.
  std::string summary(uint64_t bytes) { return progress_.summary(bytes); }

 private:
  Session& session_;
  Progress progress_;
  uint64_t size_;
  int64_t bufferAddress_;
  uint64_t bytes_ = 0;
  bool isStopped_ = false;
  Interrupt interrupt_;
};

}  // namespace tool

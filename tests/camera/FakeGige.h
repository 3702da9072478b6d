// A GigE Vision camera on a loopback address, made of registers, that answers well or badly as a test wants.
#pragma once

#include <netinet/in.h>

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

class FakeGige {
 public:
  explicit FakeGige(const std::string& address);  // not running() when the address is taken
  ~FakeGige();
  FakeGige(const FakeGige&) = delete;
  FakeGige& operator=(const FakeGige&) = delete;

  bool running() const { return socket_ >= 0; }
  void text(size_t address, const std::string& text, size_t length);  // filled up with zeros, not ended by one
  void number(size_t address, uint32_t value);
  uint32_t number(size_t address);
  // Puts a description to where the camera says it is.
  void describe(const std::string& name, const std::string& bytes);

  std::atomic<bool> silent = false;        // answers nothing
  std::atomic<bool> deafToWrites = false;  // writes arrive and get no answer
  std::atomic<bool> odd = false;           // sends three kinds of nonsense before it tells what it is
  std::atomic<bool> swapsMemory = false;   // words read as memory come in the other order
  std::atomic<int> pendingMs = 0;          // asks for so long before each answer to a write
  std::atomic<int> writes = 0;             // that have arrived, control aside

 private:
  void serve();
  void answer(const std::vector<uint8_t>& packet, const sockaddr_in& from);
  void send(const std::vector<uint8_t>& bytes, const sockaddr_in& to) const;

  int socket_ = -1;
  std::mutex mutex_;
  std::vector<uint8_t> memory_ = std::vector<uint8_t>(1 << 18);
  sockaddr_in controller_{};
  std::atomic<bool> ends_ = false;
  std::thread thread_;
};

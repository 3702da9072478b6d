// One opened device and the accesses to it, one at a time. Ends once; accesses that wait end with it.
#pragma once

#include <OxCameraTransport/Transport.h>

#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>

#include "Opening.h"

namespace ox::camera {

class Connection {
 public:
  Connection(uint64_t number, OpenedCamera opened)
      : number_(number), reservation_(std::move(opened.reservation)), device_(std::move(opened.device)) {}
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;
  ~Connection();

  // The openings of its session, counted from 1.
  uint64_t number() const { return number_; }

  // Calls `access` with the device when it is this thread's turn. Throws CameraError when the connection has ended, and
  // what `access` throws; when the connection ended meanwhile, that is the failure.
  template <class Access>
  void use(Access access) {
    take();
    try {
      access(*device_);
    } catch (...) {
      leave(true);
      throw;
    }
    leave(false);
  }

  // Beside a running access.
  void ping() { device_->ping(); }
  bool nextEvent(EventMessage& event, Milliseconds time) { return device_->nextEvent(event, time); }

  // Every access fails with this from now on. Only the first call counts.
  void end(uint32_t code, std::string text);

  // The camera may be opened again, in this program too.
  void release();

  // Gives a share of an ended connection up and waits until the device is closed, at most so long; the last share
  // closes it, on a thread of its own or where an access that runs comes back.
  static void close(std::shared_ptr<Connection> connection, Milliseconds patience);

 private:
  struct Closed {
    std::mutex mutex;
    std::condition_variable changed;
    bool yes = false;
  };

  void take();
  // After a failed access of a connection that has ended: throws why it ended.
  void leave(bool failed);

  const uint64_t number_;
  std::mutex mutex_;
  std::condition_variable turn_;
  bool inUse_ = false;
  uint32_t endCode_ = 0;
  std::string endText_;
  std::unique_ptr<Reservation> reservation_;
  std::unique_ptr<Device> device_;
  std::shared_ptr<Closed> closed_ = std::make_shared<Closed>();
};

}  // namespace ox::camera

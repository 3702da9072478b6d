#include "Connection.h"

#include <system_error>
#include <thread>

#include "Failure.h"

namespace ox::camera {

Connection::~Connection() {
  device_.reset();
  reservation_.reset();
  const std::lock_guard lock(closed_->mutex);
  closed_->yes = true;
  closed_->changed.notify_all();
}

void Connection::take() {
  std::unique_lock lock(mutex_);
  turn_.wait(lock, [this] { return !inUse_ || endCode_ != 0; });
  if (endCode_ != 0) throw CameraError(endCode_, endText_);
  inUse_ = true;
}

void Connection::leave(bool failed) {
  const std::lock_guard lock(mutex_);
  inUse_ = false;
  turn_.notify_one();
  if (failed && endCode_ != 0) throw CameraError(endCode_, endText_);
}

void Connection::end(uint32_t code, std::string text) {
  {
    const std::lock_guard lock(mutex_);
    if (endCode_ != 0) return;
    endCode_ = code;
    endText_ = std::move(text);
    turn_.notify_all();
  }
  device_->abandon();
}

void Connection::release() {
  const std::lock_guard lock(mutex_);
  reservation_.reset();
}

void Connection::close(std::shared_ptr<Connection> connection, Milliseconds patience) {
  const std::shared_ptr<Closed> closed = connection->closed_;
  try {
    std::thread([share = std::move(connection)]() mutable { share.reset(); }).detach();
  } catch (const std::system_error&) {  // without another thread it was closed here
  }
  std::unique_lock lock(closed->mutex);
  closed->changed.wait_for(lock, patience, [&] { return closed->yes; });
}

}  // namespace ox::camera

#include "RemoteCamera.h"

#include <chrono>
#include <limits>
#include <mutex>
#include <thread>

#include "Transports.h"

namespace tool {
namespace {

using ox::simulation::kInvalidArgument;
using ox::simulation::kRuntimeFailure;
using ox::simulation::kSuccess;
using ox::transport::Camera;
using ox::transport::TransportError;

// Transports serve one thread at a time.
class CameraRegisters final : public ox::simulation::RegisterDevice {
 public:
  // Of whichever camera is open when an access comes.
  explicit CameraRegisters(const std::unique_ptr<Camera>& camera) : camera_(camera) {}

  int read(void* buffer, int64_t address, int64_t length) override {
    return access(buffer, length, [&] { camera_->read(buffer, address, static_cast<uint32_t>(length)); });
  }

  int write(const void* buffer, int64_t address, int64_t length) override {
    return access(buffer, length, [&] { camera_->write(buffer, address, static_cast<uint32_t>(length)); });
  }

  int accessMode() override { return ox::simulation::kPortReadWrite; }

 private:
  template <class Transfer>
  int access(const void* buffer, int64_t length, Transfer transfer) {
    if (buffer == nullptr || length < 0 || length > std::numeric_limits<uint32_t>::max()) {
      return fail(kInvalidArgument, "The length of an access is out of range");
    }
    const std::lock_guard lock(mutex_);
    if (!camera_) {
      return fail(kRuntimeFailure, "The camera has not come back");
    }
    try {
      transfer();
      return kSuccess;
    } catch (const TransportError& error) {
      return fail(kRuntimeFailure, error.what());
    }
  }

  std::mutex mutex_;
  const std::unique_ptr<Camera>& camera_;
};

class RemoteCamera final : public Device {
 public:
  explicit RemoteCamera(const std::string& name) : name_(name), transports_(openTransports()) { open(); }

  ox::simulation::RegisterDevice& registers() override { return registers_; }
  void describe(NodeMap& map) override { map.loadText(description()); }

  std::string description() override {
    if (description_.empty()) {
      try {
        description_ = camera_->description();
      } catch (const TransportError& error) {
        throw Failure(kDeviceFailed, error.what());
      }
    }
    return description_;
  }

  // Its firmware restarts it: here it is given up, and looked for until it answers again.
  void restart(std::chrono::milliseconds delay, std::chrono::milliseconds duration) override {
    camera_.reset();
    description_.clear();
    std::this_thread::sleep_for(delay);
    const auto end = std::chrono::steady_clock::now() + 2 * duration + kPatience;
    while (!camera_) {
      try {
        open();
      } catch (const Failure&) {
        if (std::chrono::steady_clock::now() > end) {
          throw;
        }
        std::this_thread::sleep_for(kPause);
      }
    }
  }

  void keep() override {}  // the camera keeps its own registers

 private:
  static constexpr uint32_t kDeviceFailed = 0x80000003;
  static constexpr std::chrono::seconds kPatience{30};  // beyond what the update file expects
  static constexpr std::chrono::milliseconds kPause{500};

  void open() {
    std::string reasons;
    for (const auto& transport : transports_) {
      try {
        camera_ = transport->open(name_);
        return;
      } catch (const TransportError& error) {
        reasons += (reasons.empty() ? "" : "; ") + std::string(error.what());
      }
    }
    throw Failure(kDeviceFailed, reasons);
  }

  std::string name_;
  std::vector<std::unique_ptr<ox::transport::Transport>> transports_;
  std::unique_ptr<Camera> camera_;  // ends before its transport
  CameraRegisters registers_{camera_};
  std::string description_;
};

}  // namespace

std::unique_ptr<Device> openRemoteCamera(const std::string& name) {
  return std::make_unique<RemoteCamera>(name);
}

}  // namespace tool

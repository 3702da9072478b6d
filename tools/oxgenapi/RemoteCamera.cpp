#include "RemoteCamera.h"

#include <limits>
#include <mutex>

#include "NodeMap.h"
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
  explicit CameraRegisters(Camera& camera) : camera_(camera) {}

  int read(void* buffer, int64_t address, int64_t length) override {
    return access(buffer, length, [&] { camera_.read(buffer, address, static_cast<uint32_t>(length)); });
  }

  int write(const void* buffer, int64_t address, int64_t length) override {
    return access(buffer, length, [&] { camera_.write(buffer, address, static_cast<uint32_t>(length)); });
  }

  int accessMode() override { return ox::simulation::kPortReadWrite; }

 private:
  template <class Transfer>
  int access(const void* buffer, int64_t length, Transfer transfer) {
    if (buffer == nullptr || length < 0 || length > std::numeric_limits<uint32_t>::max()) {
      return fail(kInvalidArgument, "The length of an access is out of range");
    }
    const std::lock_guard lock(mutex_);
    try {
      transfer();
      return kSuccess;
    } catch (const TransportError& error) {
      return fail(kRuntimeFailure, error.what());
    }
  }

  std::mutex mutex_;
  Camera& camera_;
};

class RemoteCamera final : public Device {
 public:
  explicit RemoteCamera(const std::string& name) : transports_(openTransports()) {
    std::string reasons;
    for (const auto& transport : transports_) {
      try {
        camera_ = transport->open(name);
        registers_ = std::make_unique<CameraRegisters>(*camera_);
        return;
      } catch (const TransportError& error) {
        reasons += (reasons.empty() ? "" : "; ") + std::string(error.what());
      }
    }
    throw Failure(kDeviceFailed, reasons);
  }

  ox::simulation::RegisterDevice& registers() override { return *registers_; }
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

  void restart() override {}  // its firmware restarts it; the description is fetched anew by the next session
  void keep() override {}     // the camera keeps its own registers

 private:
  static constexpr uint32_t kDeviceFailed = 0x80000003;

  std::vector<std::unique_ptr<ox::transport::Transport>> transports_;
  std::unique_ptr<Camera> camera_;  // ends before its transport
  std::unique_ptr<CameraRegisters> registers_;
  std::string description_;
};

}  // namespace

std::unique_ptr<Device> openRemoteCamera(const std::string& name) {
  return std::make_unique<RemoteCamera>(name);
}

}  // namespace tool

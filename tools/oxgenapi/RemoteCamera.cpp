#include "RemoteCamera.h"

#include <OxCamera/oxcamera.hpp>
#include <chrono>
#include <thread>

namespace tool {
namespace {

using oxgenapi::Camera;
using namespace std::chrono_literals;

// What the library's port callbacks answer, for those of the tool.
class CameraRegisters final : public ox::simulation::RegisterDevice {
 public:
  explicit CameraRegisters(const Camera& camera) : camera_(camera) {}

  int read(void* buffer, int64_t address, int64_t length) override {
    return finished(OxCameraPortRead(buffer, address, length, camera_.handle()));
  }
  int write(const void* buffer, int64_t address, int64_t length) override {
    return finished(OxCameraPortWrite(buffer, address, length, camera_.handle()));
  }
  int accessMode() override { return OxCameraPortAccess(camera_.handle()); }

 private:
  static int finished(int result) {
    return result < 0 ? fail(result, oxgenapi::lastError(static_cast<uint32_t>(result)).what()) : result;
  }
  const Camera& camera_;
};

class RemoteCamera final : public Device {
 public:
  explicit RemoteCamera(const std::string& name) : camera_(Camera::open(name)) {}

  ox::simulation::RegisterDevice& registers() override { return registers_; }
  void describe(NodeMap& map) override { map = camera_.map(); }
  std::string description() override { return camera_.description(); }

  // Its firmware restarts it: it is looked for until it answers again.
  void restart(std::chrono::milliseconds delay, std::chrono::milliseconds duration) override {
    std::this_thread::sleep_for(delay);
    camera_.reopen(2 * duration + kPatience);
  }

  void keep() override {}  // the camera keeps its own registers

 private:
  static constexpr auto kPatience = 30s;  // beyond what the update file expects

  Camera camera_;
  CameraRegisters registers_{camera_};
};

}  // namespace

std::unique_ptr<Device> openRemoteCamera(const std::string& name) {
  return std::make_unique<RemoteCamera>(name);
}

}  // namespace tool

#include "RemoteCamera.h"

#include <OxCamera/oxcamera.hpp>
#include <chrono>
#include <optional>
#include <thread>

namespace tool {
namespace {

using oxgenapi::Camera;
using namespace std::chrono_literals;

// What the library's port callbacks answer, for those of the tool.
class CameraRegisters final : public ox::simulation::RegisterDevice {
 public:
  CameraRegisters(const Camera& camera, const std::optional<Failure>& busy) : camera_(camera), busy_(busy) {}

  int read(void* buffer, int64_t address, int64_t length) override {
    return finished(OxCameraPortRead(buffer, address, length, camera_.handle()));
  }
  int write(const void* buffer, int64_t address, int64_t length) override {
    return busy_ ? fail(static_cast<int>(busy_->code()), busy_->what())
                 : finished(OxCameraPortWrite(buffer, address, length, camera_.handle()));
  }
  int accessMode() override { return OxCameraPortAccess(camera_.handle()); }

 private:
  static int finished(int result) {
    return result < 0 ? fail(result, oxgenapi::lastError(static_cast<uint32_t>(result)).what()) : result;
  }
  const Camera& camera_;
  const std::optional<Failure>& busy_;
};

// With control, unless it is not wanted or another program has it: `busy` is then what a write has to say.
Camera opened(const std::string& name, bool onlyReads, std::optional<Failure>& busy) {
  try {
    return Camera::open(name, onlyReads ? OX_READ_ONLY : OX_CONTROL);
  } catch (const Failure& failure) {
    if (onlyReads || failure.code() != OXCAMERA_E_IN_USE) throw;
    busy = failure;
    return Camera::open(name, OX_READ_ONLY);
  }
}

class RemoteCamera final : public Device {
 public:
  RemoteCamera(const std::string& name, bool onlyReads) : camera_(opened(name, onlyReads, busy_)) {}

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

  std::optional<Failure> busy_;
  Camera camera_;
  CameraRegisters registers_{camera_, busy_};
};

}  // namespace

std::unique_ptr<Device> openRemoteCamera(const std::string& name, bool onlyReads) {
  return std::make_unique<RemoteCamera>(name, onlyReads);
}

}  // namespace tool

#include "Device.h"

#include <OxSimulation/MemoryDevice.h>
#include <OxSimulation/SimulatedCamera.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "Failure.h"
#include "FileReplacement.h"

namespace tool {
namespace {

using ox::simulation::MemoryDevice;
using ox::simulation::RegisterDevice;
using ox::simulation::SimulatedCamera;

constexpr uint32_t kFileFailed = 0x80000003;  // the code that the library itself uses for files

// The file's failures come as exceptions of the standard library; here each becomes one of the tool's.
template <class Action>
void withFile(const std::string& path, Action action) {
  try {
    action();
  } catch (const Failure&) {
    throw;
  } catch (const std::exception& error) {
    const std::string text = error.what();
    throw Failure(kFileFailed, text.find(path) == std::string::npos ? "'" + path + "': " + text : text);
  }
}

class CameraDevice final : public Device {
 public:
  explicit CameraDevice(const std::string& state) : state_(state) {
    // A state that does not exist yet is a camera fresh from the factory.
    if (state_.empty() || !std::filesystem::exists(state_)) {
      return;
    }
    withFile(state_, [this] {
      std::ifstream file(state_, std::ios::binary);
      if (!file) {
        throw Failure(kFileFailed, "'" + state_ + "' cannot be read");
      }
      camera_.loadState(file);
    });
  }

  RegisterDevice& registers() override { return camera_; }
  void restart() override { camera_.reset(); }

  void keep() override {
    if (state_.empty()) {
      return;
    }
    std::ostringstream text;
    camera_.saveState(text);
    FileReplacement file(state_);
    file.write(text.view());
    file.commit();
  }

 private:
  SimulatedCamera camera_;
  std::string state_;
};

class MemoryImage final : public Device {
 public:
  explicit MemoryImage(const std::string& image) : image_(image) {
    if (image_.empty()) {
      memory_ = std::make_unique<MemoryDevice>();
    } else {
      withFile(image_, [this] { memory_ = std::make_unique<MemoryDevice>(image_); });
    }
  }

  RegisterDevice& registers() override { return *memory_; }
  void restart() override {}  // memory without behaviour keeps its bytes

  void keep() override {
    if (!image_.empty()) {
      withFile(image_, [this] { memory_->save(); });
    }
  }

 private:
  std::unique_ptr<MemoryDevice> memory_;
  std::string image_;
};

}  // namespace

std::unique_ptr<Device> openCamera(const std::string& state) {
  return std::make_unique<CameraDevice>(state);
}

std::string cameraDescription() {
  return std::string(SimulatedCamera::description());
}

std::unique_ptr<Device> openMemory(const std::string& image) {
  return std::make_unique<MemoryImage>(image);
}

}  // namespace tool

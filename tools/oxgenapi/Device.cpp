#include "Device.h"

#include <OxSimulation/ChunkLayout.h>
#include <OxSimulation/MemoryDevice.h>
#include <OxSimulation/SimulatedCamera.h>

#include <fstream>
#include <iterator>

#include "Failure.h"
#include "StateFile.h"

namespace tool {
namespace {

using ox::simulation::MemoryDevice;
using ox::simulation::RegisterDevice;
using ox::simulation::SimulatedCamera;

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

// The simulated camera's registers, kept in a file that other runs may change meanwhile.
class SharedRegisters final : public RegisterDevice {
 public:
  SharedRegisters(SimulatedCamera& camera, StateFile& state) : camera_(camera), state_(state) {}

  int read(void* buffer, int64_t address, int64_t length) override {
    return after([&] { state_.follow(); }, [&] { return camera_.read(buffer, address, length); });
  }
  int write(const void* buffer, int64_t address, int64_t length) override {
    return after([&] { state_.lock(); }, [&] { return camera_.write(buffer, address, length); });
  }
  int accessMode() override { return camera_.accessMode(); }

 private:
  template <class Preparation, class Access>
  static int after(Preparation prepare, Access access) {
    try {
      prepare();
    } catch (const std::exception& error) {
      return fail(ox::simulation::kRuntimeFailure, error.what());
    }
    return access();
  }

  SimulatedCamera& camera_;
  StateFile& state_;
};

class CameraDevice final : public Device {
 public:
  explicit CameraDevice(const std::string& state) {
    if (!state.empty()) {
      state_.emplace(camera_, state);
      shared_.emplace(camera_, *state_);
    }
  }

  RegisterDevice& registers() override {
    return shared_ ? static_cast<RegisterDevice&>(*shared_) : static_cast<RegisterDevice&>(camera_);
  }
  void describe(NodeMap& map) override { map.loadText(description()); }
  std::string description() override { return std::string(camera_.currentDescription()); }
  void restart(std::chrono::milliseconds, std::chrono::milliseconds) override {
    if (state_) state_->lock();
    camera_.reset();
  }

  std::optional<EventMessage> nextEvent() override {
    ox::simulation::CameraEvent event;
    if (!camera_.nextEvent(event)) return std::nullopt;
    return EventMessage{event.idText(), std::move(event.payload)};
  }

  Image nextImage() override {
    ox::simulation::Frame frame = camera_.acquireFrame();
    Image image{std::move(frame.data), frame.frameId, {}};
    // An image without chunk mode is pixels up to its last byte.
    if (image.data.size() > frame.imageBytes)
      for (const auto& chunk : ox::simulation::ChunkLayout(image.data))
        image.chunks.push_back({chunk.id, chunk.offset, chunk.length});
    return image;
  }

  void keep() override {
    if (state_) state_->commit();
  }

 private:
  SimulatedCamera camera_;
  std::optional<StateFile> state_;
  std::optional<SharedRegisters> shared_;
};

class MemoryImage final : public Device {
 public:
  MemoryImage(const std::string& xml, const std::string& image) : xml_(xml), image_(image) {
    if (image_.empty())
      memory_ = std::make_unique<MemoryDevice>();
    else
      withFile(image_, [this] { memory_ = std::make_unique<MemoryDevice>(image_); });
  }

  RegisterDevice& registers() override { return *memory_; }
  void describe(NodeMap& map) override { map.loadFile(xml_); }
  std::string description() override {
    std::ifstream file(xml_, std::ios::binary);
    if (!file) throw Failure(kFileFailed, "Cannot read " + xml_);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  void restart(std::chrono::milliseconds, std::chrono::milliseconds) override {
  }  // memory without behaviour keeps its bytes

  void keep() override {
    if (!image_.empty()) withFile(image_, [this] { memory_->save(); });
  }

 private:
  std::unique_ptr<MemoryDevice> memory_;
  std::string xml_;
  std::string image_;
};

}  // namespace

std::optional<EventMessage> Device::nextEvent() {
  throw Failure(OXGENAPI_E_NOT_SUPPORTED, "This device sends no events");
}

Image Device::nextImage() { throw Failure(OXGENAPI_E_NOT_SUPPORTED, "This device sends no images"); }

std::unique_ptr<Device> openCamera(const std::string& state) { return std::make_unique<CameraDevice>(state); }

std::unique_ptr<Device> openMemory(const std::string& xml, const std::string& image) {
  return std::make_unique<MemoryImage>(xml, image);
}

}  // namespace tool

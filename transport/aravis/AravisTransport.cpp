// GigE Vision and USB3 Vision cameras through the aravis library: register access and the camera's description only;
// everything that features mean stays with our own engine.
#include <OxTransport/Transport.h>
#include <arv.h>

#include <cstring>

namespace {

using namespace ox::transport;

std::string textOrEmpty(const char* text) {
  return text == nullptr ? "" : text;
}

// Takes the error over and throws it with what was tried.
[[noreturn]] void fail(const std::string& what, GError* error) {
  std::string text = what;
  if (error != nullptr) {
    text += ": " + textOrEmpty(error->message);
    g_error_free(error);
  }
  throw TransportError(text);
}

class AravisCamera final : public Camera {
 public:
  explicit AravisCamera(ArvDevice* device) : device_(device) {}
  AravisCamera(const AravisCamera&) = delete;
  AravisCamera& operator=(const AravisCamera&) = delete;
  ~AravisCamera() override { g_object_unref(device_); }

  void read(void* buffer, uint64_t address, uint32_t length) override {
    if (isWhole(address, length)) {
      transfer(address, length, buffer);
      return;
    }
    const std::vector<uint8_t> window = words(address, length);
    std::memcpy(buffer, window.data() + address % kWord, length);
  }

  void write(const void* buffer, uint64_t address, uint32_t length) override {
    if (isWhole(address, length)) {
      store(address, length, buffer);
      return;
    }
    std::vector<uint8_t> window = words(address, length);
    std::memcpy(window.data() + address % kWord, buffer, length);
    store(address - address % kWord, static_cast<uint32_t>(window.size()), window.data());
  }

  std::string description() override {
    size_t size = 0;
    const char* xml = arv_device_get_genicam_xml(device_, &size);
    if (xml == nullptr || size == 0) {
      throw TransportError("The camera carries no description");
    }
    // Some cameras pad the text with zero bytes.
    return std::string(xml, strnlen(xml, size));
  }

 private:
  // GigE Vision moves memory in words of four bytes only.
  static constexpr uint32_t kWord = 4;

  bool isWhole(uint64_t address, uint32_t length) const {
    return !ARV_IS_GV_DEVICE(device_) || (address % kWord == 0 && length % kWord == 0);
  }

  // The words that the range touches.
  std::vector<uint8_t> words(uint64_t address, uint32_t length) {
    const uint32_t before = static_cast<uint32_t>(address % kWord);
    std::vector<uint8_t> window((uint64_t{before} + length + kWord - 1) / kWord * kWord);
    transfer(address - before, static_cast<uint32_t>(window.size()), window.data());
    return window;
  }

  void transfer(uint64_t address, uint32_t length, void* buffer) {
    GError* error = nullptr;
    if (!arv_device_read_memory(device_, address, length, buffer, &error)) {
      fail("The camera did not answer a read", error);
    }
  }

  void store(uint64_t address, uint32_t length, const void* buffer) {
    GError* error = nullptr;
    // The library's signature is older than const; it only reads.
    if (!arv_device_write_memory(device_, address, length, const_cast<void*>(buffer), &error)) {
      fail("The camera did not acknowledge a write", error);
    }
  }

  ArvDevice* device_;
};

class AravisTransport final : public Transport {
 public:
  std::vector<CameraEntry> cameras() override {
    arv_update_device_list();
    std::vector<CameraEntry> entries;
    for (unsigned int index = 0; index < arv_get_n_devices(); ++index) {
      entries.push_back({textOrEmpty(arv_get_device_id(index)), textOrEmpty(arv_get_device_vendor(index)),
                         textOrEmpty(arv_get_device_model(index)), textOrEmpty(arv_get_device_serial_nbr(index)),
                         textOrEmpty(arv_get_device_address(index)), textOrEmpty(arv_get_device_protocol(index))});
    }
    return entries;
  }

  std::unique_ptr<Camera> open(const std::string& name) override {
    std::string id = name;
    for (const CameraEntry& entry : cameras()) {
      if (name == entry.id || name == entry.address || name == entry.serial) {
        id = entry.id;
        break;
      }
    }
    GError* error = nullptr;
    ArvDevice* device = arv_open_device(id.c_str(), &error);
    if (device == nullptr) {
      fail("No camera '" + name + "' can be opened", error);
    }
    return std::make_unique<AravisCamera>(device);
  }
};

}  // namespace

extern "C" __attribute__((visibility("default"))) Transport* oxOpenTransport(int version) {
  return version == kInterfaceVersion ? new AravisTransport : nullptr;
}

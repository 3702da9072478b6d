#include "AravisDevices.h"

#include <arv.h>

#include <cstring>
#include <mutex>

#include "AravisStream.h"
#include "Discovery.h"
#include "GigeAddress.h"
#include "GigeDevices.h"
#include "Gvcp.h"
#include "GvcpChannel.h"

namespace ox::camera::aravis {
namespace {

using gige::Place;
using OnLost = std::function<void(const std::string&)>;

constexpr size_t kWord = 4;  // GigE Vision moves memory in words
constexpr std::string_view kUsb = "usb ";

std::string textOrEmpty(const char* text) { return text == nullptr ? "" : text; }

// Takes the error over.
class DriverError {
 public:
  ~DriverError() { g_clear_error(&error_); }
  DriverError() = default;
  DriverError(const DriverError&) = delete;
  DriverError& operator=(const DriverError&) = delete;
  GError** place() { return &error_; }
  bool is(ArvDeviceError code) const {
    return error_ != nullptr && error_->domain == ARV_DEVICE_ERROR && error_->code == code;
  }
  std::string text() const { return error_ == nullptr ? "no reason given" : textOrEmpty(error_->message); }

  [[noreturn]] void fail(bool write) const {
    if (is(ARV_DEVICE_ERROR_TIMEOUT)) {
      if (!write) throw TransportError(Reason::timedOut, "No answer to a read (" + text() + ")");
      throw TransportError(Reason::outcomeUnknown,
                           "No answer to a write (" + text() + "): outcome unknown, it is not repeated");
    }
    if (is(ARV_DEVICE_ERROR_NOT_CONNECTED) || is(ARV_DEVICE_ERROR_NOT_CONTROLLER))
      throw TransportError(Reason::lost, text());
    const bool refusal =
        error_ != nullptr && error_->domain == ARV_DEVICE_ERROR &&
        (error_->code >= ARV_DEVICE_ERROR_PROTOCOL_ERROR_NOT_IMPLEMENTED || is(ARV_DEVICE_ERROR_PROTOCOL_ERROR));
    throw TransportError(refusal ? Reason::refused : Reason::failed, text());
  }

 private:
  GError* error_ = nullptr;
};

class AravisDevice : public Device {
 public:
  AravisDevice(ArvDevice* device, OnLost onLost) : device_(device) {
    // Of the signal, which may still be on its way when this object has ended.
    auto* const own = new OnLost(std::move(onLost));
    signal_ = g_signal_connect_data(
        device_, "control-lost", G_CALLBACK(&AravisDevice::controlLost), own,
        [](gpointer data, GClosure*) { delete static_cast<OnLost*>(data); }, static_cast<GConnectFlags>(0));
  }
  ~AravisDevice() override {
    g_signal_handler_disconnect(device_, signal_);
    g_object_unref(device_);
  }

  std::vector<DescriptionSource> descriptions() override {
    size_t size = 0;
    const char* xml = arv_device_get_genicam_xml(device_, &size);
    if (xml == nullptr || size == 0) return {};
    return {{"driver:", std::string(xml, strnlen(xml, size))}};  // some cameras pad the text with zeros
  }

 protected:
  void readBytes(void* buffer, uint64_t address, size_t length) {
    DriverError error;
    if (!arv_device_read_memory(device_, address, checked(length), buffer, error.place())) error.fail(false);
  }
  void writeBytes(const void* buffer, uint64_t address, size_t length) {
    DriverError error;
    // The library's signature is older than const; it only reads.
    if (!arv_device_write_memory(device_, address, checked(length), const_cast<void*>(buffer), error.place()))
      error.fail(true);
  }
  ArvDevice* device() const { return device_; }

 private:
  static uint32_t checked(size_t length) {
    if (length > UINT32_MAX)
      throw TransportError(Reason::refused, "An access of " + std::to_string(length) + " bytes is too long");
    return static_cast<uint32_t>(length);
  }
  static void controlLost(ArvDevice*, OnLost* onLost) {
    if (*onLost) (*onLost)("control of the camera has gone, or it does not answer any more");
  }

  ArvDevice* device_;
  gulong signal_ = 0;
};

class AravisGige final : public AravisDevice, private gige::Registers {
 public:
  AravisGige(ArvDevice* device, const OpenRequest& request, Place place)
      : AravisDevice(device, request.onLost),
        pings_(place.camera, place.own, kPingTime),
        loopback_(place.camera >> 24 == kLoopback) {}

  void read(void* buffer, uint64_t address, size_t length) override {
    if (address % kWord == 0 && length == kWord && registers_) {
      std::vector<uint8_t> bytes;
      gige::append(bytes, readRegister(static_cast<uint32_t>(address)));
      std::memcpy(buffer, bytes.data(), kWord);
    } else if (address % kWord == 0 && length % kWord == 0) {
      readBytes(buffer, address, length);
    } else {
      const std::vector<uint8_t> window = words(address, length);
      std::memcpy(buffer, window.data() + address % kWord, length);
    }
  }

  void write(const void* buffer, uint64_t address, size_t length) override {
    if (address % kWord == 0 && length == kWord && registers_) {
      writeRegister(static_cast<uint32_t>(address), gige::numberAt({static_cast<const uint8_t*>(buffer), kWord}, 0));
    } else if (address % kWord == 0 && length == kWord) {
      writeWord(buffer, address);
    } else if (address % kWord == 0 && length % kWord == 0) {
      writeBytes(buffer, address, length);
    } else {
      std::vector<uint8_t> window = words(address, length);
      std::memcpy(window.data() + address % kWord, buffer, length);
      writeBytes(window.data(), address - address % kWord, window.size());
    }
  }

  // The library keeps control by itself. Whether the camera is there shows on a channel of its own, which no slow
  // access of the library holds up.
  void ping() override {
    try {
      if ((pings_.readRegister(gige::kControlPrivilege) & (gige::kControl | gige::kExclusive)) == 0)
        throw TransportError(Reason::lost, "control of the camera has gone");
    } catch (const TransportError& error) {
      if (error.reason() != Reason::refused) throw;  // an answer all the same
    }
  }

  std::vector<DescriptionSource> descriptions() override {
    std::vector<DescriptionSource> sources = AravisDevice::descriptions();
    if (sources.empty()) sources = gige::describe(*this);
    return sources;
  }
  bool hasRegisterAccess() const override { return true; }
  void useRegisterAccess(bool use) override { registers_ = use; }
  NetworkConfiguration network() override { return gige::readConfiguration(*this); }
  void storeAddress(const NetworkAddress& address) override { gige::storeConfiguration(*this, address); }
  std::unique_ptr<Stream> openStream(const StreamRequest& request, std::span<const BufferMemory> buffers,
                                     FrameSink& sink) override {
    return openAravisStream(device(), loopback_, request, buffers, sink);
  }

 private:
  static constexpr Milliseconds kPingTime{450};
  static constexpr uint32_t kLoopback = 127;  // first number of its addresses

  // A camera need not have memory writes; one without has changed nothing when it says so.
  void writeWord(const void* buffer, uint64_t address) {
    DriverError error;
    if (arv_device_write_memory(device(), address, kWord, const_cast<void*>(buffer), error.place())) return;
    if (!error.is(ARV_DEVICE_ERROR_PROTOCOL_ERROR_NOT_IMPLEMENTED)) error.fail(true);
    writeRegister(static_cast<uint32_t>(address), gige::numberAt({static_cast<const uint8_t*>(buffer), kWord}, 0));
  }

  uint32_t readRegister(uint32_t address) override {
    DriverError error;
    uint32_t value = 0;
    if (!arv_device_read_register(device(), address, &value, error.place())) error.fail(false);
    return value;
  }
  void writeRegister(uint32_t address, uint32_t value) override {
    DriverError error;
    if (!arv_device_write_register(device(), address, value, error.place())) error.fail(true);
  }

  std::vector<uint8_t> words(uint64_t address, size_t length) {
    const size_t before = address % kWord;
    std::vector<uint8_t> window((before + length + kWord - 1) / kWord * kWord);
    read(window.data(), address - before, window.size());
    return window;
  }

  gige::GvcpChannel pings_;
  const bool loopback_;
  bool registers_ = false;
};

class AravisUsb final : public AravisDevice {
 public:
  using AravisDevice::AravisDevice;
  void read(void* buffer, uint64_t address, size_t length) override { readBytes(buffer, address, length); }
  void write(const void* buffer, uint64_t address, size_t length) override { writeBytes(buffer, address, length); }
  void ping() override {
    uint32_t version = 0;
    readBytes(&version, 0, sizeof version);
  }
  std::unique_ptr<Stream> openStream(const StreamRequest& request, std::span<const BufferMemory> buffers,
                                     FrameSink& sink) override {
    return openAravisStream(device(), false, request, buffers, sink);
  }
};

// Texts that the library writes to standard error are of no use to a program's user.
void silence() {
  static std::once_flag once;
  std::call_once(once, [] {
    const auto drop = [](const gchar*, GLogLevelFlags, const gchar*, gpointer) {};
    for (const char* domain : {"Aravis", "XML"})
      g_log_set_handler(domain, static_cast<GLogLevelFlags>(G_LOG_LEVEL_MASK), drop, nullptr);
  });
}

// Its complaints about a description it cannot use carry no name; those of other code go on being shown.
class SilentOpening {
 public:
  SilentOpening()
      : handler_(g_log_set_handler(
            nullptr, G_LOG_LEVEL_CRITICAL, [](const gchar*, GLogLevelFlags, const gchar*, gpointer) {}, nullptr)) {}
  SilentOpening(const SilentOpening&) = delete;
  SilentOpening& operator=(const SilentOpening&) = delete;
  ~SilentOpening() { g_log_remove_handler(nullptr, handler_); }

 private:
  guint handler_;
};

ArvDevice* newGige(Place place, DriverError& error) {
  const SilentOpening silent;
  GInetAddress* own = g_inet_address_new_from_string(gige::ipv4Text(place.own).c_str());
  GInetAddress* camera = g_inet_address_new_from_string(gige::ipv4Text(place.camera).c_str());
  ArvDevice* device = arv_gv_device_new(own, camera, error.place());
  g_object_unref(own);
  g_object_unref(camera);
  return device;
}

}  // namespace

std::unique_ptr<Device> openGige(const OpenRequest& request) {
  silence();
  const Place place = gige::parsePlace(request.place);
  DriverError error;
  ArvDevice* device = newGige(place, error);
  if (device == nullptr) {
    // The library does not open a camera whose description it cannot use; its registers are all there.
    if (error.is(ARV_DEVICE_ERROR_GENICAM_NOT_FOUND)) return gige::openPlain(request);
    throw TransportError(error.is(ARV_DEVICE_ERROR_TIMEOUT) ? Reason::timedOut : Reason::failed, error.text());
  }
  auto opened = std::make_unique<AravisGige>(device, request, place);
  if (!arv_gv_device_is_controller(ARV_GV_DEVICE(device)))
    throw TransportError(Reason::busy, "another program has control");
  return opened;
}

std::vector<CameraFacts> usbCameras() {
  silence();
  // Lists of the library are its own until the next update.
  static std::mutex& mutex = *new std::mutex;
  const std::lock_guard lock(mutex);
  ArvInterface* bus = arv_uv_interface_get_instance();
  arv_interface_update_device_list(bus);
  std::vector<CameraFacts> cameras;
  for (unsigned int i = 0; i < arv_interface_get_n_devices(bus); ++i) {
    CameraFacts facts;
    facts.identity = textOrEmpty(arv_interface_get_device_physical_id(bus, i));
    facts.place = std::string(kUsb) + textOrEmpty(arv_interface_get_device_id(bus, i));
    facts.vendor = textOrEmpty(arv_interface_get_device_vendor(bus, i));
    facts.model = textOrEmpty(arv_interface_get_device_model(bus, i));
    facts.serial = textOrEmpty(arv_interface_get_device_serial_nbr(bus, i));
    facts.address = textOrEmpty(arv_interface_get_device_address(bus, i));
    facts.protocol = "USB3Vision";
    facts.reach = Reach::free;
    cameras.push_back(std::move(facts));
  }
  return cameras;
}

std::unique_ptr<Device> openUsb(const OpenRequest& request) {
  silence();
  DriverError error;
  const std::string id = request.place.starts_with(kUsb) ? request.place.substr(kUsb.size()) : request.place;
  ArvDevice* device = arv_interface_open_device(arv_uv_interface_get_instance(), id.c_str(), error.place());
  if (device == nullptr)
    throw TransportError(Reason::busy, "The camera cannot be taken, another program may have it: " + error.text());
  return std::make_unique<AravisUsb>(device, request.onLost);
}

}  // namespace ox::camera::aravis

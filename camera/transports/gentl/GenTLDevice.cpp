#include "GenTLDevice.h"

#include <algorithm>
#include <array>
#include <thread>

#include "Answer.h"

namespace ox::camera::gentl {
namespace {

constexpr uint32_t kMostUrls = 64;
constexpr size_t kEventBytes = size_t{1} << 20;  // room for an event message, where the producer needs no less

class GenTLDevice final : public Device {
 public:
  GenTLDevice(std::shared_ptr<System> system, const System::Opened& opened)
      : system_(std::move(system)), opened_(opened) {}

  ~GenTLDevice() override {
    stream_.reset();
    if (events_ != nullptr) functions().GCUnregisterEvent(opened_.device, EVENT_REMOTE_DEVICE);
    system_->close(opened_.device);
  }

  void read(void* buffer, uint64_t address, size_t length) override {
    size_t size = length;
    producer().call(functions().GCReadPort, opened_.port, address, buffer, &size);
    requireWhole("GCReadPort", size, length);
  }

  void write(const void* buffer, uint64_t address, size_t length) override {
    size_t size = length;
    producer().call(functions().GCWritePort, opened_.port, address, buffer, &size);
    requireWhole("GCWritePort", size, length);
  }

  // The newest schema first.
  std::vector<DescriptionSource> descriptions() override {
    struct Source {
      uint64_t version;
      std::string url;
    };
    std::vector<Source> sources;
    uint32_t count = 0;
    if (functions().GCGetNumPortURLs(opened_.port, &count) == GC_ERR_SUCCESS) {
      for (uint32_t index = 0; index < std::min(count, kMostUrls); ++index) {
        const auto ask = [&](URL_INFO_CMD item) {
          return [this, index, item](INFO_DATATYPE* type, void* buffer, size_t* size) {
            return functions().GCGetPortURLInfo(opened_.port, index, item, type, buffer, size);
          };
        };
        std::string url = text(ask(URL_INFO_URL));
        const uint64_t major = number(ask(URL_INFO_SCHEMA_VER_MAJOR)).value_or(0);
        const uint64_t minor = number(ask(URL_INFO_SCHEMA_VER_MINOR)).value_or(0);
        if (!url.empty()) sources.push_back({major << 32 | (minor & UINT32_MAX), std::move(url)});
      }
      std::stable_sort(sources.begin(), sources.end(),
                       [](const Source& left, const Source& right) { return left.version > right.version; });
    }
    if (sources.empty()) {
      sources.push_back({0, requireText(producer(), "GCGetPortURL", [this](INFO_DATATYPE*, void* buffer, size_t* size) {
                           return functions().GCGetPortURL(opened_.port, static_cast<char*>(buffer), size);
                         })});
    }
    std::vector<DescriptionSource> descriptions;
    for (Source& source : sources) descriptions.push_back({std::move(source.url)});
    return descriptions;
  }

  // The producer keeps the connection alive; we ask whether it still has it.
  void ping() override {
    NumberAnswer answer;
    const GC_ERROR code = functions().DevGetInfo(opened_.device, DEVICE_INFO_ACCESS_STATUS, &answer.type,
                                                 answer.bytes.data(), &answer.size);
    if (isDead(code)) producer().fail("DevGetInfo", code);
    answer.code = code;
    if (answer.value() == DEVICE_ACCESS_STATUS_NOACCESS)
      throw TransportError(Reason::lost, producer().name() + ".cti has no access to the camera any more");
  }

  uint64_t payloadSize() override {
    if (!stream_) stream_ = std::make_unique<DataStream>(system_, opened_.device);
    if (stream_->info(STREAM_INFO_DEFINES_PAYLOADSIZE).value_or(0) == 0) return 0;
    return stream_->info(STREAM_INFO_PAYLOAD_SIZE).value_or(0);
  }

  std::unique_ptr<Stream> openStream(const StreamRequest&, std::span<const BufferMemory> buffers,
                                     FrameSink& sink) override {
    if (!stream_) stream_ = std::make_unique<DataStream>(system_, opened_.device);
    const uint64_t frequency =
        number([this](INFO_DATATYPE* type, void* buffer, size_t* size) {
          return functions().DevGetInfo(opened_.device, DEVICE_INFO_TIMESTAMP_FREQUENCY, type, buffer, size);
        }).value_or(0);
    return gentl::openStream(std::move(stream_), frequency, buffers, sink);
  }

  bool nextEvent(EventMessage& event, Milliseconds time) override {
    if (events_ == nullptr) registerEvents();
    size_t size = message_.size();
    const auto wait = static_cast<uint64_t>(time.count());
    const GC_ERROR code = functions().EventGetData(events_, message_.data(), &size, wait);
    if (code == GC_ERR_TIMEOUT || code == GC_ERR_NO_DATA || code == GC_ERR_ABORT) return false;
    if (code != GC_ERR_SUCCESS) producer().fail("EventGetData", code);
    if (size > message_.size()) producer().failAnswer("EventGetData", "says more bytes than the buffer has");
    event.id = eventId(size);
    event.payload.assign(message_.begin(), message_.begin() + static_cast<std::ptrdiff_t>(size));
    std::vector<uint8_t> value(size);
    size_t length = value.size();
    INFO_DATATYPE type = INFO_DATATYPE_UNKNOWN;
    const GC_ERROR asked =
        functions().EventGetDataInfo(events_, message_.data(), size, EVENT_DATA_VALUE, &type, value.data(), &length);
    if (asked == GC_ERR_SUCCESS && length <= value.size()) {
      value.resize(length);
      event.payload = std::move(value);
    }
    return true;
  }

 private:
  const Producer& producer() const { return system_->producer(); }
  const Functions& functions() const { return producer().functions; }

  void requireWhole(const char* function, size_t moved, size_t asked) const {
    if (moved != asked)
      producer().failAnswer(function, "moved " + std::to_string(moved) + " of " + std::to_string(asked) + " bytes");
  }

  void registerEvents() {
    EVENT_HANDLE events = nullptr;
    const GC_ERROR code = functions().GCRegisterEvent(opened_.device, EVENT_REMOTE_DEVICE, &events);
    if (code == GC_ERR_NOT_IMPLEMENTED || code == GC_ERR_NOT_AVAILABLE || code == GC_ERR_INVALID_PARAMETER)
      throw TransportError(Reason::notSupported, producer().name() + ".cti carries no event messages of this camera");
    if (code != GC_ERR_SUCCESS) producer().fail("GCRegisterEvent", code);
    if (events == nullptr) producer().failAnswer("GCRegisterEvent", "gives no handle");
    events_ = events;
    const uint64_t size = number([this](INFO_DATATYPE* type, void* buffer, size_t* length) {
                            return functions().EventGetInfo(events_, EVENT_SIZE_MAX, type, buffer, length);
                          }).value_or(0);
    message_.resize(size == 0 ? kEventBytes : std::min(static_cast<size_t>(size), kEventBytes));
  }

  // Hexadecimal digits; some producers give the number instead of the text.
  std::string eventId(size_t size) const {
    NumberAnswer answer;
    answer.code = functions().EventGetDataInfo(events_, message_.data(), size, EVENT_DATA_NUMID, &answer.type,
                                               answer.bytes.data(), &answer.size);
    std::optional<uint64_t> id = answer.value();
    if (!id) {
      NumberAnswer named;
      named.size = named.bytes.size() - 1;
      named.code = functions().EventGetDataInfo(events_, message_.data(), size, EVENT_DATA_ID, &named.type,
                                                named.bytes.data(), &named.size);
      if (named.code != GC_ERR_SUCCESS) producer().fail("EventGetDataInfo", named.code);
      if (named.type == INFO_DATATYPE_STRING || named.type == INFO_DATATYPE_UNKNOWN)
        return printable(reinterpret_cast<const char*>(named.bytes.data()));
      id = named.value();
      if (!id) producer().failAnswer("EventGetDataInfo", "gives no ID");
    }
    std::array<char, 17> digits{};
    std::snprintf(digits.data(), digits.size(), "%04llX", static_cast<unsigned long long>(*id));
    return digits.data();
  }

  const std::shared_ptr<System> system_;
  const System::Opened opened_;
  std::unique_ptr<DataStream> stream_;  // opened for its payload size, not yet used
  EVENT_HANDLE events_ = nullptr;
  std::vector<uint8_t> message_;
};

}  // namespace

std::unique_ptr<Device> openDevice(const std::shared_ptr<System>& system, const OpenRequest& request) {
  return std::make_unique<GenTLDevice>(system, system->open(request.place, request.control));
}

}  // namespace ox::camera::gentl

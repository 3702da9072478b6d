// Cameras without cameras: as many as OXGENAPI_SIMULATED names, one for itself when it names none, and register images.
#include <OxSimulation/MemoryDevice.h>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <memory>
#include <mutex>
#include <thread>

#include "SimulatedStream.h"
#include "SimulatedUnit.h"

namespace ox::camera::simulated {
namespace {

constexpr std::string_view kName = "simulated";
constexpr std::string_view kImage = "image=";
constexpr size_t kWord = 4;
constexpr Milliseconds kEventInterval{2};  // between two looks for an event message

class SimulatedDevice final : public Device {
 public:
  SimulatedDevice(std::shared_ptr<SimulatedUnit> unit, const OpenRequest& request)
      : unit_(std::move(unit)), opening_(unit_->open(request.control, request.answerTime)) {}
  ~SimulatedDevice() override { unit_->close(opening_); }

  void read(void* buffer, uint64_t address, size_t length) override {
    unit_->read(opening_, buffer, address, length);
    if (isSwapped(length)) std::reverse(static_cast<uint8_t*>(buffer), static_cast<uint8_t*>(buffer) + length);
  }

  void write(const void* buffer, uint64_t address, size_t length) override {
    uint8_t swapped[kWord];
    if (isSwapped(length)) {
      std::reverse_copy(static_cast<const uint8_t*>(buffer), static_cast<const uint8_t*>(buffer) + length, swapped);
      buffer = swapped;
    }
    unit_->write(opening_, buffer, address, length);
  }

  std::vector<DescriptionSource> descriptions() override {
    return {{"local:simulated.xml;0;" + std::to_string(unit_->description().size()), unit_->description()}};
  }
  void ping() override { unit_->ping(opening_); }
  void abandon() noexcept override { unit_->abandon(opening_); }
  bool hasRegisterAccess() const override { return true; }
  void useRegisterAccess(bool use) override { registers_ = use; }
  std::unique_ptr<Stream> openStream(const StreamRequest&, std::span<const BufferMemory> buffers,
                                     FrameSink& sink) override {
    return std::make_unique<SimulatedStream>(unit_, opening_, buffers, sink);
  }
  bool nextEvent(EventMessage& event, Milliseconds time) override {
    simulation::CameraEvent sent;
    const auto end = std::chrono::steady_clock::now() + time;
    while (!unit_->takeEvent(opening_, sent)) {
      if (std::chrono::steady_clock::now() >= end) return false;
      std::this_thread::sleep_for(kEventInterval);
    }
    event = {sent.idText(), std::move(sent.payload)};
    return true;
  }

 private:
  bool isSwapped(size_t length) const { return length == kWord && !registers_ && unit_->order() != Order::plain; }

  const std::shared_ptr<SimulatedUnit> unit_;
  const Opening opening_;
  bool registers_ = false;
};

// Registers from a file, without behaviour; what is written is forgotten at the end.
class ImageDevice final : public Device {
 public:
  explicit ImageDevice(const std::string& path) : memory_(path) {}

  void read(void* buffer, uint64_t address, size_t length) override {
    check(memory_.read(buffer, static_cast<int64_t>(address), static_cast<int64_t>(length)));
  }
  void write(const void* buffer, uint64_t address, size_t length) override {
    check(memory_.write(buffer, static_cast<int64_t>(address), static_cast<int64_t>(length)));
  }
  std::vector<DescriptionSource> descriptions() override { return {}; }
  void ping() override {}

 private:
  static void check(int result) {
    if (result < 0) throw TransportError(Reason::refused, simulation::RegisterDevice::lastFailureText());
  }
  simulation::MemoryDevice memory_;
};

class SimulatedTransport final : public Transport {
 public:
  std::string name() const override { return std::string(kName); }
  bool isAddress(const std::string& name) const override { return name == kName || name.starts_with(kImage); }

  Findings search(const Search& search) override {
    Findings findings;
    if (search.address.starts_with(kImage)) {
      CameraFacts facts;
      facts.place = facts.address = search.address;
      facts.vendor = "OxSimulation";
      facts.model = "Image";
      facts.interface = facts.protocol = "Simulated";
      facts.reach = Reach::free;
      findings.cameras.push_back(facts);
      return findings;
    }
    const char* text = std::getenv("OXGENAPI_SIMULATED");
    try {
      std::vector<UnitConfig> units = parseUnits(text == nullptr ? "" : text);
      if (!search.address.empty()) units.assign(1, parseUnits(std::string(kName) + ",serial=SIM01").front());
      for (const UnitConfig& config : units) {
        const std::shared_ptr<SimulatedUnit> unit = unitOf(config);
        if (unit->isThere()) findings.cameras.push_back(unit->facts());
      }
      const size_t there = findings.cameras.size();
      if (!units.empty() || search.address.empty()) {
        findings.notes.push_back({Note::Kind::interface, "simulated: " + std::to_string(there) + " of " +
                                                             std::to_string(units.size()) +
                                                             " cameras of OXGENAPI_SIMULATED"});
      }
    } catch (const std::invalid_argument& error) {
      findings.notes.push_back(
          {Note::Kind::interfaceFailed, std::string("simulated: OXGENAPI_SIMULATED: ") + error.what()});
    }
    return findings;
  }

  std::unique_ptr<Device> open(const OpenRequest& request) override {
    if (request.place.starts_with(kImage)) {
      try {
        return std::make_unique<ImageDevice>(request.place.substr(kImage.size()));
      } catch (const std::runtime_error& error) {
        throw TransportError(Reason::notFound, error.what());
      }
    }
    std::shared_ptr<SimulatedUnit> unit;
    {
      const std::lock_guard lock(mutex_);
      if (const auto found = units_.find(request.place); found != units_.end()) unit = found->second;
    }
    if (!unit) throw TransportError(Reason::notFound, "There is no simulated camera " + request.place);
    return std::make_unique<SimulatedDevice>(std::move(unit), request);
  }

 private:
  // Cameras keep their registers until the process ends, as real ones do while they have power.
  std::shared_ptr<SimulatedUnit> unitOf(const UnitConfig& config) {
    const std::lock_guard lock(mutex_);
    std::shared_ptr<SimulatedUnit>& unit = units_[config.name];
    if (!unit) unit = std::make_shared<SimulatedUnit>(config);
    return unit;
  }

  std::mutex mutex_;
  std::map<std::string, std::shared_ptr<SimulatedUnit>> units_;
};

}  // namespace
}  // namespace ox::camera::simulated

extern "C" __attribute__((visibility("default"))) ox::camera::Transport* oxCameraTransport(int version) {
  return version == ox::camera::kTransportVersion ? new ox::camera::simulated::SimulatedTransport : nullptr;
}

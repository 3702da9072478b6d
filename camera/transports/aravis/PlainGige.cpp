#include <algorithm>
#include <atomic>

#include "Discovery.h"
#include "GigeAddress.h"
#include "GigeDevices.h"
#include "GvcpChannel.h"

namespace ox::camera::gige {
namespace {

class PlainGige final : public Device, private Registers {
 public:
  explicit PlainGige(const OpenRequest& request, Place place)
      : control_(request.control), channel_(place.camera, place.own, request.answerTime) {
    if (!control_) {
      channel_.readRegister(kVersion);
      return;
    }
    if ((channel_.readRegister(kControlPrivilege) & (kControl | kExclusive)) != 0)
      throw TransportError(Reason::busy, "another program has control");
    try {
      channel_.writeRegister(kControlPrivilege, kControl);
    } catch (const TransportError& error) {  // another program may have come first
      if (error.reason() != Reason::refused) throw;
      throw TransportError(Reason::busy, std::string("control was ") + error.what());
    }
  }

  ~PlainGige() override {
    if (!control_ || lost_) return;
    try {
      channel_.resume();
      channel_.writeRegister(kControlPrivilege, 0);
    } catch (const TransportError&) {  // it is gone, and frees itself
    }
  }

  void read(void* buffer, uint64_t address, size_t length) override { channel_.read(buffer, address, length); }
  void write(const void* buffer, uint64_t address, size_t length) override { channel_.write(buffer, address, length); }
  std::vector<DescriptionSource> descriptions() override { return describe(*this); }

  // Every request keeps control; one that runs shows by itself whether the camera is there.
  void ping() override {
    if (channel_.isBusy()) return;
    const uint32_t privilege = channel_.readRegister(control_ ? kControlPrivilege : kVersion);
    if (control_ && (privilege & (kControl | kExclusive)) == 0) {
      lost_ = true;
      throw TransportError(Reason::lost, "control of the camera has gone");
    }
  }

  void abandon() noexcept override { channel_.abandon(); }
  bool hasRegisterAccess() const override { return true; }
  void useRegisterAccess(bool use) override { channel_.useRegisterAccess(use); }
  NetworkConfiguration network() override { return readConfiguration(*this); }
  void storeAddress(const NetworkAddress& address) override { storeConfiguration(*this, address); }

 private:
  uint32_t readRegister(uint32_t address) override { return channel_.readRegister(address); }
  void writeRegister(uint32_t address, uint32_t value) override { channel_.writeRegister(address, value); }

  const bool control_;
  GvcpChannel channel_;
  std::atomic<bool> lost_ = false;
};

}  // namespace

std::unique_ptr<Device> openPlain(const OpenRequest& request) {
  return std::make_unique<PlainGige>(request, parsePlace(request.place));
}

std::vector<DescriptionSource> describe(Port& registers) {
  std::vector<DescriptionSource> sources;
  for (const Register address : {kFirstUrl, kSecondUrl}) {
    std::string url(kUrlLength, '\0');
    try {
      registers.read(url.data(), address, url.size());
    } catch (const TransportError&) {
      if (sources.empty() && address == kFirstUrl) throw;
      break;
    }
    url.resize(std::min(url.find('\0'), url.size()));
    if (!url.empty()) sources.push_back({url});
  }
  return sources;
}

}  // namespace ox::camera::gige

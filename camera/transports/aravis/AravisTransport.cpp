// GigE Vision and USB3 Vision cameras. Registers and streams come through the aravis library; what it does not tell
// about a camera (interface, name, busy, wrong subnet, permission) is asked of the camera and of the system.
#include <algorithm>

#include "AravisDevices.h"
#include "Discovery.h"
#include "GigeAddress.h"
#include "GigeDevices.h"
#include "UsbCameras.h"

namespace ox::camera::aravis {
namespace {

// One line for each camera on USB: what the driver says where it may open it, what the system says where not.
void addUsb(Findings& findings) {
  const std::vector<usb::UsbCamera> known = usb::systemCameras();
  size_t closed = 0;
  for (const usb::UsbCamera& camera : known) {
    if (camera.mayOpen) continue;
    findings.cameras.push_back(usb::factsOf(camera));
    ++closed;
  }
  std::vector<CameraFacts> open = known.size() > closed ? usbCameras() : std::vector<CameraFacts>{};
  for (CameraFacts& facts : open) {
    const auto isIt = [&](const usb::UsbCamera& camera) {
      const bool named = !camera.serial.empty() && (camera.serial == facts.serial || camera.serial == facts.identity);
      return camera.mayOpen && (named || known.size() == closed + 1);
    };
    const auto camera = std::find_if(known.begin(), known.end(), isIt);
    if (camera != known.end()) usb::complete(facts, *camera);
    findings.cameras.push_back(std::move(facts));
  }
  findings.notes.push_back({Note::Kind::interface, "USB was looked at, " + std::to_string(known.size()) +
                                                       (known.size() == 1 ? " USB3 Vision camera is there"
                                                                          : " USB3 Vision cameras are there")});
}

class AravisTransport final : public Transport {
 public:
  std::string name() const override { return "aravis"; }
  bool isAddress(const std::string& name) const override { return gige::parseIpv4(name).has_value(); }

  Findings search(const Search& search) override {
    Findings findings = gige::discover(search);
    const bool found = search.wanted && std::any_of(findings.cameras.begin(), findings.cameras.end(), search.wanted);
    if (search.address.empty() && !found) addUsb(findings);
    return findings;
  }

  std::unique_ptr<Device> open(const OpenRequest& request) override {
    const bool network = request.place.find('.') != std::string::npos &&
                         gige::parseIpv4(request.place.substr(0, request.place.find(' ')));
    if (!network) return openUsb(request);
    return request.control ? openGige(request) : gige::openPlain(request);
  }

  NetworkAddress proposeAddress(const CameraFacts& camera) override {
    requireNetwork(camera);
    return gige::propose(camera);
  }
  void forceAddress(const CameraFacts& camera, const NetworkAddress& address) override {
    requireNetwork(camera);
    gige::force(camera, address);
  }

 private:
  static void requireNetwork(const CameraFacts& camera) {
    if (camera.protocol != "GigEVision")
      throw TransportError(Reason::notSupported, "This camera has no network address");
  }
};

}  // namespace
}  // namespace ox::camera::aravis

extern "C" __attribute__((visibility("default"))) ox::camera::Transport* oxCameraTransport(int version) {
  return version == ox::camera::kTransportVersion ? new ox::camera::aravis::AravisTransport : nullptr;
}

#include "Odd.h"

using namespace ox::camera;

namespace {

OddScript script;

class OddTransport final : public Transport {
 public:
  std::string name() const override { return "odd"; }
  bool isAddress(const std::string& name) const override { return name.starts_with("10."); }
  Findings search(const Search& search) override { return script.search ? script.search(search) : Findings{}; }
  std::unique_ptr<Device> open(const OpenRequest& request) override {
    if (!script.open) throw TransportError(Reason::failed, "nothing here can be opened");
    return script.open(request);
  }
};

}  // namespace

extern "C" __attribute__((visibility("default"))) Transport* oxCameraTransport(int version) {
  return version == kTransportVersion ? new OddTransport : nullptr;
}

extern "C" __attribute__((visibility("default"))) OddScript* oddScript() { return &script; }

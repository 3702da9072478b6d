#include "Session.h"

#include <algorithm>

#include "NearNames.h"
#include "Progress.h"
#include "RemoteCamera.h"

namespace tool {

Session::Session(const Options& options) : options_(options), output_(options.json, options.colour) {}

NodeMap& Session::map() {
  if (!map_) {
    open();
  }
  return *map_;
}

Device& Session::device() {
  map();
  return *device_;
}

WatchedPort& Session::port() {
  map();
  return *port_;
}

const std::vector<std::string>& Session::ports() {
  map();
  return ports_;
}

void Session::keep() {
  if (device_) {
    device_->keep();
  }
}

void Session::report(const Failure& failure) {
  failed_ = true;
  if (!output_.json()) {
    output_.failure(failure);
    suggest(failure);
  }
}

void Session::reportHidden() {
  if (failed_ || !port_ || !port_->failure()) {
    return;
  }
  failed_ = true;
  const Failure& failure = *port_->failure();
  output_.failure(Failure(failure.code(), std::string("an access to the device failed: ") + failure.what()));
}

// A name that does not exist may be a slip of the hand.
void Session::suggest(const Failure& failure) {
  if (failure.code() != OXGENAPI_E_NOT_PRESENT || failure.feature().empty() || !map_) {
    return;
  }
  const std::vector<std::string> near = nearNames(failure.feature(), map_->nodeNames());
  std::string text;
  for (const std::string& name : near) {
    text += (text.empty() ? "Did you mean " : &name == &near.back() ? " or " : ", ") + name;
  }
  if (!text.empty()) {
    output_.hint(text + "?");
  }
}

NodeMap& Session::restart(std::chrono::milliseconds delay, std::chrono::milliseconds duration) {
  map();
  device_->restart(delay, duration);
  map_ = load();
  return *map_;
}

void Session::open() {
  if (!options_.camera.empty()) {
    Progress progress(output_, "looking for " + options_.camera, 0, "");
    progress.begin();
    device_ = openRemoteCamera(options_.camera);
  } else {
    device_ = options_.xml.empty() ? openCamera(options_.state) : openMemory(options_.xml, options_.memory);
  }
  port_ = std::make_unique<WatchedPort>(failing(device_->registers()));
  map_ = load();
}

ox::simulation::RegisterDevice& Session::failing(ox::simulation::RegisterDevice& device) {
  const Faults& wanted = options_.faults;
  if (wanted.access == 0 && wanted.every == 0) {
    return device;
  }
  faults_ = std::make_unique<ox::simulation::FaultPort>(device);
  const auto code = static_cast<int>(wanted.code);
  if (wanted.access > 0) {
    faults_->failNth(wanted.access, code, wanted.text);
  }
  if (wanted.every > 0) {
    faults_->failEvery(wanted.every, code, wanted.text);
  }
  return *faults_;
}

NodeMap Session::load() {
  NodeMap map;
  Progress progress(output_, "fetching the description", 0, "");
  if (!options_.camera.empty()) {
    progress.begin();
  }
  device_->describe(map);
  progress.clear();
  connect(map);
  return map;
}

// The device answers "Device", and every other port that nothing serves yet and that is not filled by event messages.
// A chunk port shows no mark here; connecting it does no harm, attaching a chunk takes its place.
void Session::connect(NodeMap& map) {
  ports_.clear();
  for (const std::string& name : map.nodeNames()) {
    try {
      const Node node = map.node(name);
      if (node.type() != NT_Port) {
        continue;
      }
      const bool vacant = node.access() == 0 && node.infoText(NI_EventID).empty();
      if (name == "Device" || vacant) {
        map.connect(*port_, name);
        ports_.push_back(name);
      }
    } catch (const Failure&) {
      continue;  // a node without a handle is no port
    }
  }
}

}  // namespace tool

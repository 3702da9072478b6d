#include "Session.h"

#include <OxCamera/CameraTypes.h>

#include <algorithm>

#include "NearNames.h"
#include "Progress.h"
#include "RemoteCamera.h"

namespace tool {
namespace {

std::string nearFeatures(const NodeMap& map, const std::string& wanted) {
  const std::vector<std::string> all = map.nodeNames();
  std::vector<std::string> features = all;
  std::erase_if(features, [&](const std::string& name) {
    const auto node = map.tryNode(name);
    return !node || !node->infoBoolean(NI_IsFeature);
  });
  const std::vector<std::string> near = nearNames(wanted, features);
  return question(near.empty() ? nearNames(wanted, all) : near);
}

// The entries of an enumeration that it can be set to now; for anything else nothing.
std::string choices(const NodeMap& map, const std::string& feature) {
  try {
    const Node node = map.node(feature);
    if (node.type() != NT_Enumeration) return "";
    std::string list;
    for (const std::string& name : node.list(NL_EnumEntries))
      if (const Node entry = map.node(name); entry.readable()) list += (list.empty() ? "" : ", ") + entry.text();
    return list.empty() ? "" : "It can be " + list;
  } catch (const Failure&) {
    return "";  // advice is not worth a failure of its own
  }
}

}  // namespace

Session::Session(const Options& options) : options_(options), output_(options.json, options.colour) {}

NodeMap& Session::map() {
  if (!map_) open();
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
  if (device_ && port_ && port_->hasWritten()) device_->keep();
}

void Session::report(const Failure& failure) {
  fail(failure.code() == OXCAMERA_E_NOT_FOUND ? kNoCamera : kFailed);
  if (!output_.json()) {
    output_.failure(failure);
    suggest(failure);
  }
}

void Session::reportHidden() {
  if (failed() || !port_ || !port_->failure()) return;
  fail();
  const Failure& failure = *port_->failure();
  output_.failure(Failure(failure.code(), std::string("an access to the device failed: ") + failure.what()));
}

// A name that does not exist, or an entry that an enumeration does not have, may be a slip of the hand.
void Session::suggest(const Failure& failure) {
  if (!map_) return;
  const std::string_view text = failure.what();
  const size_t noEntry = text.find(": no entry named '");
  std::string advice;
  if (failure.code() == OXGENAPI_E_NOT_PRESENT && !failure.feature().empty()) {
    advice = nearFeatures(*map_, failure.feature());
  } else if (text.ends_with("NULL pointer dereferenced")) {  // what a line of settings with an unknown name gives
    const std::string name(text.substr(0, text.find(':')));
    advice = map_->tryNode(name) ? "The device lacks one of its selectors" : nearFeatures(*map_, name);
    advice = advice.empty() ? "The device has no " + name : advice;
  } else if (noEntry != text.npos) {
    const size_t start = text.substr(0, noEntry).rfind(' ') + 1;  // 0 where the name stands first
    advice = choices(*map_, std::string(text.substr(start, noEntry - start)));
  }
  if (!advice.empty()) output_.hint(advice);
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
    device_ = openRemoteCamera(options_.camera, onlyReads_);
  } else if (!options_.xml.empty()) {
    device_ = openMemory(options_.xml, options_.memory);
  } else {
    if (options_.state.empty()) {
      output_.note(
          "a simulated camera answers, and forgets everything when this command ends; --camera, --xml or --state "
          "name another device");
    }
    device_ = openCamera(options_.state);
  }
  port_ = std::make_unique<WatchedPort>(failing(device_->registers()));
  map_ = load();
}

ox::simulation::RegisterDevice& Session::failing(ox::simulation::RegisterDevice& device) {
  const Faults& wanted = options_.faults;
  if (wanted.access == 0 && wanted.every == 0) return device;
  faults_ = std::make_unique<ox::simulation::FaultPort>(device);
  const auto code = static_cast<int>(wanted.code);
  if (wanted.access > 0) faults_->failNth(wanted.access, code, wanted.text);
  if (wanted.every > 0) faults_->failEvery(wanted.every, code, wanted.text);
  return *faults_;
}

NodeMap Session::load() {
  NodeMap map;
  Progress progress(output_, "fetching the description", 0, "");
  if (!options_.camera.empty()) progress.begin();
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
      if (node.type() != NT_Port) continue;
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

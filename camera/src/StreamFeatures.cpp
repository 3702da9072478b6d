#include "StreamFeatures.h"

#include <algorithm>

#include "Failure.h"

namespace ox::camera {
namespace {

using oxgenapi::Node;

// The feature if the camera has it and it can be used now.
oxgenapi::Result<Node> find(const oxgenapi::NodeMap& map, const char* name) { return map.tryNode(name); }

Node require(const oxgenapi::NodeMap& map, const char* name) {
  auto node = map.tryNode(name);
  if (!node) throw CameraError(OXGENAPI_E_RUNTIME, std::string("The description has no ") + name);
  return *node;
}

// What goes wrong at a feature has the camera's own reason where the port failed.
template <class Use>
auto named(const char* name, Use use) {
  try {
    return use();
  } catch (const oxgenapi::Error& error) {
    const std::string text = error.what();
    throw CameraError(error.code(), text.find(name) == std::string::npos ? std::string(name) + ": " + text : text);
  }
}

double real(const oxgenapi::NodeMap& map, const char* name) noexcept {
  try {
    const auto node = find(map, name);
    if (!node) return 0;
    const auto value = node->tryReal();
    return value ? *value : 0;
  } catch (...) {
    return 0;
  }
}

}  // namespace

bool StreamFeatures::lock() {
  const auto node = find(map_, "TLParamsLocked");
  if (!node) return false;
  return named("TLParamsLocked", [&] {
    if (!node->writable()) return false;
    node->set(int64_t{1});
    return true;
  });
}

void StreamFeatures::unlock() {
  named("TLParamsLocked", [&] { require(map_, "TLParamsLocked").set(int64_t{0}); });
}

uint64_t StreamFeatures::payloadSize() {
  const Node node = require(map_, "PayloadSize");
  node.invalidate();
  const int64_t size = named("PayloadSize", [&] { return node.integer(); });
  if (size <= 0) throw CameraError(OXGENAPI_E_RUNTIME, "PayloadSize: the camera says " + std::to_string(size));
  return static_cast<uint64_t>(size);
}

void StreamFeatures::startAcquisition() {
  named("AcquisitionStart", [&] { require(map_, "AcquisitionStart").execute(); });
}

void StreamFeatures::stopAcquisition() {
  named("AcquisitionStop", [&] {
    const Node node = require(map_, "AcquisitionStop");
    if (node.writable()) node.execute();
  });
}

void StreamFeatures::forgetPacketSize() noexcept {
  try {
    if (const auto node = find(map_, "GevSCPSPacketSize")) node->invalidate();
  } catch (...) {  // a camera without it
  }
}

void StreamFeatures::detachChunks() noexcept { NMDetachAllChunks(map_.handle()); }

void StreamFeatures::attachChunks(const TChunkData* chunks, size_t count) {
  named("Chunks", [&] {
    map_.detachChunks();
    map_.attachChunks(chunks, count);
  });
}

void StreamFeatures::enableChunks(const std::vector<std::string>& names) {
  const auto mode = find(map_, "ChunkModeActive"), selector = find(map_, "ChunkSelector");
  const auto enable = find(map_, "ChunkEnable");
  if (!mode || !selector || !enable) throw CameraError(OXGENAPI_E_NOT_SUPPORTED, "The camera has no chunks");
  const std::vector<std::string> known =
      named("ChunkSelector", [&] { return map_.enumeration("ChunkSelector").entries(); });
  std::string lacking;
  for (const std::string& name : names)
    if (std::find(known.begin(), known.end(), name) == known.end()) lacking += (lacking.empty() ? "" : ", ") + name;
  if (!lacking.empty()) throw CameraError(OXGENAPI_E_INVALID_ARGUMENT, "The camera has no chunk " + lacking);
  named("ChunkModeActive", [&] { mode->set(true); });
  const std::string before = named("ChunkSelector", [&] { return selector->text(); });
  const auto restore = [&] { named("ChunkSelector", [&] { selector->set(before); }); };
  try {
    for (const std::string& name : names) {
      named("ChunkSelector", [&] { selector->set(name); });
      named("ChunkEnable", [&] {
        if (!enable->boolean()) enable->set(true);  // some that are always on cannot be written
      });
    }
  } catch (...) {
    try {
      restore();
    } catch (...) {  // the first failure is the one to report
    }
    throw;
  }
  restore();
}

std::string StreamFeatures::obstacles() noexcept {
  try {
    std::string text;
    const auto value = [&](const char* name) {
      const auto node = find(map_, name);
      if (!node) return std::string();
      const auto is = node->tryText();
      return is ? *is : std::string();
    };
    if (value("TriggerMode") == "On") {
      const std::string selector = value("TriggerSelector"), source = value("TriggerSource");
      text += "Trigger mode is on";
      if (!selector.empty()) text += " for " + selector;
      if (!source.empty()) text += ", the source is " + source;
      text += "\n";
    }
    const std::string mode = value("AcquisitionMode");
    if (mode == "SingleFrame" || mode == "MultiFrame") text += "AcquisitionMode is " + mode + "\n";
    return text;
  } catch (...) {
    return {};
  }
}

double StreamFeatures::exposureMs() noexcept {
  const double exposure = real(map_, "ExposureTime");  // us
  return (exposure > 0 ? exposure : real(map_, "ExposureTimeAbs")) / 1000;
}

double StreamFeatures::periodMs() noexcept {
  for (const char* name : {"AcquisitionResultingFrameRate", "ResultingFrameRate", "AcquisitionFrameRate"})
    if (const double rate = real(map_, name); rate > 0) return 1000 / rate;
  return 0;
}

}  // namespace ox::camera

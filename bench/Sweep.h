// Reads every feature of a description over a device full of zeros that counts what it is asked for, place by place.
#pragma once
#include <OxBase/OxBase.h>
#include <OxGenApi/OxGenApi.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "UncacheablePlaces.h"

inline void requireSweep(bool done) {
  if (!done) std::abort();
}

struct EmptyDevice {
  std::map<Place, long> reads;
  bool counting = true;
};

inline int readEmptyDevice(void* to, int64_t address, int64_t length, void* user) {
  auto& device = *static_cast<EmptyDevice*>(user);
  if (device.counting) ++device.reads[{address, length}];
  std::memset(to, 0, static_cast<size_t>(length));
  return 0;
}
inline int writeEmptyDevice(const void*, int64_t, int64_t, void*) { return 0; }

// The same device for the engine.
class EmptyPort final : public GENAPI_NAMESPACE::CPortImpl {
 public:
  GENAPI_NAMESPACE::EAccessMode GetAccessMode() const override { return GENAPI_NAMESPACE::RW; }
  void Read(void* to, int64_t, int64_t length) override { std::memset(to, 0, static_cast<size_t>(length)); }
  void Write(const void*, int64_t, int64_t) override {}
};

class SweptCamera {
 public:
  explicit SweptCamera(const std::string& text) {
    requireSweep(CreateNodeMap(map_) == OXGENAPI_OK);
    requireSweep(NMLoadXMLString(map_, text.c_str()) == OXGENAPI_OK);
    uint32_t count = 0;
    requireSweep(NMNodeCount(map_, count) == OXGENAPI_OK);
    for (uint32_t i = 0; i < count; ++i) {
      char name[512];
      size_t size = sizeof name;
      NODE node = nullptr;
      requireSweep(NMListNode(map_, i, name, size) == OXGENAPI_OK);
      requireSweep(NMGetNode(map_, name, node) == OXGENAPI_OK);
      nodes_.push_back(node);
      TNodeType type = NT_Invalid;
      requireSweep(NType(node, &type) == OXGENAPI_OK);
      if (type == NT_Port) connect(name);
      bool isFeature = false;
      // Whether a command is done is asked past all caches.
      if (type == NT_Command || NInfoAsBoolean(node, NI_IsFeature, &isFeature) != OXGENAPI_OK) continue;
      if (isFeature) features_.push_back(node);
    }
  }
  ~SweptCamera() {
    for (const NODE node : nodes_) OxIfaceContainerReleaseUseCounter(node);
    OxIfaceContainerReleaseUseCounter(map_);
  }
  SweptCamera(const SweptCamera&) = delete;
  SweptCamera& operator=(const SweptCamera&) = delete;

  // The number of features that could be read.
  long sweep() {
    long read = 0;
    for (const NODE node : features_) {
      char text[4096];
      size_t size = sizeof text;
      read += NGetAsString(node, text, size) == OXGENAPI_OK;
    }
    return read;
  }

  EmptyDevice device;

 private:
  // Most have one port, "Device"; others that chunks or events fill stay as they are.
  void connect(const char* port) {
    if (std::strstr(port, "Device") == nullptr) return;
    const auto connected = NMConnectPortEx(map_, readEmptyDevice, writeEmptyDevice, nullptr, &device, port);
    requireSweep(connected == OXGENAPI_OK);
  }

  NODEMAP map_ = nullptr;
  std::vector<NODE> nodes_, features_;
};

struct SweepCounts {
  long all = 0, most = 0, cacheable = 0;
};

inline SweepCounts count(const EmptyDevice& device, const std::set<Place>& uncacheable) {
  SweepCounts counts;
  for (const auto& [place, reads] : device.reads) {
    counts.all += reads;
    if (uncacheable.contains(place)) continue;
    counts.cacheable += reads;
    counts.most = std::max(counts.most, reads);
  }
  return counts;
}

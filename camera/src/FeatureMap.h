// The node map of one camera: its description, its port, the byte order that it means.
#pragma once

#include <OxGenApi/OxGenApi.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

#include "CameraList.h"
#include "Connection.h"

namespace ox::camera {

// What the port of a node map talks to. Found through a number that is never used twice, so that a node map that
// outlives its camera reaches nothing.
class FeaturePort {
 public:
  virtual void readFeature(void* buffer, uint64_t address, size_t length) = 0;
  virtual void writeFeature(const void* buffer, uint64_t address, size_t length) = 0;
  virtual TAccessMode featureAccess() const = 0;

 protected:
  ~FeaturePort() = default;
};

class FeatureMap {
 public:
  FeatureMap(std::string file, TByteOrder byteOrder) : file_(std::move(file)), byteOrder_(byteOrder) {}
  ~FeatureMap();
  FeatureMap(const FeatureMap&) = delete;
  FeatureMap& operator=(const FeatureMap&) = delete;

  // Where the port of the node map leads; once, before anything else.
  void connectTo(std::weak_ptr<FeaturePort> port);

  // The loaded and connected node map; loads it on the first call. The caller owns a reference. Throws CameraError.
  NODEMAP take(Connection& connection, const ListedCamera& camera);

  // After the camera was opened again: drops what was remembered, and loads the description if it is another one.
  // Throws CameraError.
  void renew(Connection& connection, const ListedCamera& camera);

  // The bytes of the description in use, else those of the first source that can be read. Throws CameraError.
  std::string description(Connection& connection);

 private:
  using Use = std::function<void(const std::string& bytes)>;

  // Calls `use` with the bytes of one source after the other until it does not throw. Throws CameraError with the
  // reason of each.
  void fromSources(Connection& connection, const Use& use) const;
  void load(NODEMAP map, Connection& connection);
  void chooseByteOrder(NODEMAP map, Connection& connection, const ListedCamera& camera) const;
  void connect(NODEMAP map) const;

  const std::string file_;  // in place of the camera's own description; empty: that
  const TByteOrder byteOrder_;
  uint64_t key_ = 0;
  std::mutex loading_;        // held while the first description is loaded
  mutable std::mutex mutex_;  // a leaf, for what follows
  NODEMAP map_ = nullptr;
  std::string bytes_;
};

// From a handler: the result of a port callback. What the camera does not allow has the code that features report as
// not readable or not writable.
int failPort() noexcept;

// Runs the access of a port callback.
template <class Access>
int answerPort(Access access) noexcept {
  try {
    access();
    return 0;
  } catch (...) {
    return failPort();
  }
}

}  // namespace ox::camera

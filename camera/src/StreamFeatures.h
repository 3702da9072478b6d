// The features that starting and stopping use, and those that explain why no image comes. No other is touched.
#pragma once

#include <OxGenApi/oxgenapi.hpp>

#include <cstdint>
#include <string>
#include <vector>

namespace ox::camera {

class StreamFeatures {
 public:
  // Takes over the caller's reference.
  explicit StreamFeatures(NODEMAP map) : map_(oxgenapi::Handle<NODEMAP>::adopt(map)) {}

  // Throw CameraError, with the feature's name in front.
  bool lock();  // false: the camera has nothing to lock
  void unlock();
  uint64_t payloadSize();
  void startAcquisition();
  void stopAcquisition();  // of a camera that has stopped by itself, too

  // After something else has written the packet size.
  void forgetPacketSize() noexcept;
  void detachChunks() noexcept;
  // Throws before it writes anything if the camera lacks one of them.
  void enableChunks(const std::vector<std::string>& names);
  void attachChunks(const TChunkData* chunks, size_t count);

  // Sentences about features that let a camera wait, each on a line; empty when there is nothing.
  std::string obstacles() noexcept;
  // How long one image may take with these settings, in ms; 0: not known.
  double exposureMs() noexcept;
  double periodMs() noexcept;

 private:
  oxgenapi::NodeMap map_;
};

}  // namespace ox::camera

// Streaming of one camera: the start sequence and its exact reverse, waits, images that are out.
#pragma once

#include <OxCamera/ImageTypes.h>

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "Connection.h"
#include "ImageQueue.h"
#include "StreamFeatures.h"

namespace ox::camera {

class Session;

class Acquisition {
 public:
  explicit Acquisition(Session& session) : session_(session) {}
  ~Acquisition();
  Acquisition(const Acquisition&) = delete;
  Acquisition& operator=(const Acquisition&) = delete;

  // Throw CameraError, TransportError.
  void start(const TStreamOptions& options);
  void stop();
  void next(uint32_t timeMs, TImage& image);
  void grab(uint32_t timeMs, TImage& image);
  void giveBack(const TImage& image);
  void part(const TImage& image, size_t index, TImagePart& part);
  void attachChunks(const TImage& image, bool bigEndian);
  void enableChunks(const std::vector<std::string>& names);
  void cancel();
  TStreamStatistics statistics();
  std::string advice();

  // The camera is lost: waits end when all that has come was fetched, the receiver goes on a thread of its own.
  void lose(const std::string& text) noexcept;
  // The camera is to be closed: waits end, the stream is stopped as far as that goes within this time. Call finish()
  // when the connection has ended.
  void close(Milliseconds patience) noexcept;
  void finish() noexcept;

 private:
  struct Running;
  struct Receiver;

  std::shared_ptr<Running> running() const;
  std::shared_ptr<ImageQueue> holderOf(const TImage& image) const;
  void wait(uint32_t timeMs, ImageQueue::Clock::time_point newerThan, TImage& image);
  std::string explain(Running& running);
  void detach(const TImage& image);  // its chunks from the features
  void forget();                     // former queues whose images have all come back; with the mutex held

  Session& session_;
  std::mutex sequence_;  // of a start or a stop
  std::thread closing_;

  mutable std::mutex mutex_;  // a leaf, for what follows
  std::shared_ptr<Running> running_;
  std::vector<std::shared_ptr<ImageQueue>> queues_;  // the last one, and those with images out
  TStreamStatistics last_{};
  uint64_t attached_ = 0;  // serial of the image whose chunks the features show
  std::shared_ptr<StreamFeatures> attachedTo_;
};

}  // namespace ox::camera

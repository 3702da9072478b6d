// The receiver of a simulated camera: a thread that lets it draw each picture that is due into a queued buffer.
#pragma once

#include <OxCameraTransport/Stream.h>

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <span>
#include <thread>
#include <vector>

#include "SimulatedUnit.h"

namespace ox::camera::simulated {

class SimulatedStream final : public Stream {
 public:
  SimulatedStream(std::shared_ptr<SimulatedUnit> unit, const Opening& opening, std::span<const BufferMemory> buffers,
                  FrameSink& sink);
  ~SimulatedStream() override;

  void queue(size_t buffer) noexcept override;
  LinkFacts facts() override;

 private:
  void receive();
  // Whether a frame was due.
  bool receiveOne(Frame& frame);

  const std::shared_ptr<SimulatedUnit> unit_;
  const Opening opening_;
  const std::vector<BufferMemory> buffers_;
  FrameSink& sink_;
  std::atomic<uint64_t> noBuffer_{0};
  std::mutex mutex_;  // a leaf, for what follows
  std::condition_variable changed_;
  std::vector<size_t> queued_;  // a ring, oldest first
  size_t first_ = 0, count_ = 0;
  bool ends_ = false;
  std::thread thread_;
};

}  // namespace ox::camera::simulated

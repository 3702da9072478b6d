// The buffers of one stream and where each of them is: with the receiver, filled, or with the caller. Filled on the
// receive thread, emptied by any other.
#pragma once

#include <OxCamera/ImageTypes.h>
#include <OxCameraTransport/Stream.h>

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace ox::camera {

// Counts frames across numbers that are missing, and across the end of 16-bit numbers, which go from 65535 to 1.
class FrameCount {
 public:
  // The count of the frame of that number, from 1.
  uint64_t next(uint64_t id);
  uint64_t missing() const { return missing_; }

 private:
  uint64_t last_ = 0;
  uint64_t count_ = 0;
  uint64_t missing_ = 0;
};

class ImageQueue final : public FrameSink {
 public:
  using Clock = std::chrono::steady_clock;

  // Without memory of the caller, `count` buffers of `payload` bytes. Throws std::bad_alloc, CameraError
  // BUFFER_TOO_SMALL.
  ImageQueue(size_t count, const TFrameMemory* memory, uint64_t payload, bool latestOnly);
  ~ImageQueue();

  std::vector<BufferMemory> memory() const;

  // Gives all buffers to the receiver, which takes them until detach().
  void attach(Stream& stream);
  void detach();
  // Waits end with this code and text: at once, or only when all that has come was fetched. Only the first call counts.
  void end(uint32_t code, std::string text, bool atOnce);
  void cancel();

  void arrived(const Frame& frame) noexcept override;

  enum class Wait { image, timeOut };
  // The next image. `newerThan`: images that came before are skipped. Throws CameraError.
  Wait next(Clock::time_point until, Clock::time_point newerThan, TImage& image);
  // Whether the image was one of this queue that is with the caller; it is not, then.
  bool giveBack(const TImage& image);
  // Calls with what is known of an image that the caller holds; false when he does not.
  bool withHeld(const TImage& image, const std::function<void(const Frame&, const BufferMemory&)>& use) const;

  bool allReturned() const;
  // The fields that the library counts itself.
  void count(TStreamStatistics& statistics) const;
  // Since the last frame came, or since the start.
  Clock::duration silence() const;

 private:
  enum class Place { receiver, filled, caller };
  struct Slot {
    BufferMemory memory;
    void* user = nullptr;
    Place place = Place::receiver;
    Frame frame;
    uint64_t serial = 0;
    uint64_t count = 0;
    int64_t completeNs = 0;
    Clock::time_point came;
  };
  struct Free {
    void operator()(uint8_t* memory) const noexcept;
  };

  void release(size_t buffer);  // with the mutex held
  void hand(size_t buffer, TImage& image);
  const Slot* held(const TImage& image) const;

  const uint64_t payload_;
  const bool latestOnly_;
  std::unique_ptr<uint8_t, Free> own_;
  mutable std::mutex mutex_;  // held while a buffer is given to the receiver
  std::condition_variable changed_;
  std::vector<Slot> slots_;
  std::vector<size_t> filled_;  // a ring, oldest first
  size_t firstFilled_ = 0, filledCount_ = 0;
  Stream* stream_ = nullptr;
  FrameCount frames_;
  uint32_t endCode_ = 0;
  std::string endText_;
  bool endsAtOnce_ = false;
  uint64_t cancels_ = 0;
  uint32_t waiting_ = 0;
  bool cancelNext_ = false;
  size_t held_ = 0;
  uint32_t skippedSince_ = 0;
  uint64_t complete_ = 0, incomplete_ = 0, delivered_ = 0, skipped_ = 0, bytes_ = 0;
  Clock::time_point lastFrame_ = Clock::now();
};

}  // namespace ox::camera

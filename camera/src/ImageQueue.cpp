#include "ImageQueue.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <new>
#include <utility>

#include "Failure.h"
#include "ImageRecord.h"

namespace ox::camera {
namespace {

constexpr size_t kPage = 4096;
constexpr uint64_t kShortIds = 65535;  // GigE Vision before 2.0; 0 is not used

std::atomic<uint64_t> serials{0};

// What a driver says about a frame is input like any other: parts lie in the memory, and in what was received.
void confine(Frame& frame, const BufferMemory& memory) {
  if (frame.received > memory.size) {
    frame.needed = std::max(frame.needed, frame.received);
    frame.received = memory.size;
    frame.state = FrameState::tooSmall;
  }
  for (Part& part : frame.parts) {
    if (part.offset > frame.received) part.offset = frame.received;
    if (part.size <= frame.received - part.offset) continue;
    part.size = frame.received - part.offset;
    if (frame.state == FrameState::complete) frame.state = FrameState::incomplete;
  }
}

}  // namespace

uint64_t FrameCount::next(uint64_t id) {
  uint64_t steps = 1;
  if (count_ != 0) {
    if (id > last_)
      steps = id - last_;
    else if (last_ <= kShortIds && last_ - id > kShortIds / 2)
      steps = id == 0 ? 1 : kShortIds - last_ + id;  // one that does not skip 0 has counted to 65535, too
  }
  if (steps == 0) steps = 1;
  missing_ += steps - 1;
  last_ = id;
  return count_ += steps;
}

void ImageQueue::Free::operator()(uint8_t* memory) const noexcept { std::free(memory); }

ImageQueue::ImageQueue(size_t count, const TFrameMemory* memory, uint64_t payload, bool latestOnly)
    : payload_(payload), latestOnly_(latestOnly), slots_(count), filled_(count) {
  if (memory == nullptr) {
    if (payload > (SIZE_MAX / 2 - kPage) / count) throw std::bad_alloc();
    const size_t each = std::max<size_t>(kPage, (payload + kPage - 1) / kPage * kPage);
    own_.reset(static_cast<uint8_t*>(std::aligned_alloc(kPage, each * count)));
    if (!own_) throw std::bad_alloc();
    for (size_t i = 0; i < count; ++i) slots_[i].memory = {own_.get() + i * each, payload};
  } else {
    for (size_t i = 0; i < count; ++i) {
      if (memory[i].Data == nullptr || memory[i].Size < payload) {
        throw CameraError(OXCAMERA_E_BUFFER_TOO_SMALL, "Buffer " + std::to_string(i) + " needs " +
                                                           std::to_string(payload) + " bytes, has " +
                                                           std::to_string(memory[i].Data ? memory[i].Size : 0));
      }
      slots_[i].memory = {memory[i].Data, memory[i].Size};
      slots_[i].user = memory[i].User;
    }
  }
  for (Slot& slot : slots_) slot.frame.parts.reserve(4);
}

ImageQueue::~ImageQueue() = default;

std::vector<BufferMemory> ImageQueue::memory() const {
  std::vector<BufferMemory> all;
  for (const Slot& slot : slots_) all.push_back(slot.memory);
  return all;
}

void ImageQueue::attach(Stream& stream) {
  const std::lock_guard lock(mutex_);
  stream_ = &stream;
  for (size_t i = 0; i < slots_.size(); ++i) stream.queue(i);
}

void ImageQueue::detach() {
  const std::lock_guard lock(mutex_);
  stream_ = nullptr;
}

void ImageQueue::end(uint32_t code, std::string text, bool atOnce) {
  const std::lock_guard lock(mutex_);
  if (atOnce) endsAtOnce_ = true;
  if (endCode_ == 0) {
    endCode_ = code;
    endText_ = std::move(text);
  }
  changed_.notify_all();
}

void ImageQueue::cancel() {
  const std::lock_guard lock(mutex_);
  if (waiting_ == 0) cancelNext_ = true;
  ++cancels_;
  changed_.notify_all();
}

void ImageQueue::release(size_t buffer) {
  slots_[buffer].place = Place::receiver;
  if (stream_ != nullptr) stream_->queue(buffer);
}

void ImageQueue::arrived(const Frame& frame) noexcept {
  const std::lock_guard lock(mutex_);
  if (frame.buffer >= slots_.size() || slots_[frame.buffer].place != Place::receiver || stream_ == nullptr) return;
  Slot& slot = slots_[frame.buffer];
  try {
    slot.frame = frame;
  } catch (const std::bad_alloc&) {  // of more parts than any frame before
    slot.frame.parts.clear();
  }
  confine(slot.frame, slot.memory);
  slot.came = lastFrame_ = Clock::now();
  slot.completeNs = std::chrono::system_clock::now().time_since_epoch() / std::chrono::nanoseconds(1);
  slot.count = frames_.next(frame.id);
  ++(slot.frame.state == FrameState::complete ? complete_ : incomplete_);
  bytes_ += slot.frame.received;
  while (latestOnly_ && filledCount_ > 0) {
    release(filled_[firstFilled_]);
    firstFilled_ = (firstFilled_ + 1) % filled_.size();
    --filledCount_;
    ++skipped_;
    ++skippedSince_;
  }
  slot.place = Place::filled;
  filled_[(firstFilled_ + filledCount_++) % filled_.size()] = frame.buffer;
  changed_.notify_one();
}

void ImageQueue::hand(size_t buffer, TImage& image) {
  Slot& slot = slots_[buffer];
  slot.place = Place::caller;
  slot.serial = ++serials;
  ++held_;
  ++delivered_;
  image = recordOf(slot.frame, slot.memory);
  image.Serial = slot.serial;
  image.User = slot.user;
  image.Count = slot.count;
  image.CompleteNs = slot.completeNs;
  image.Skipped = std::exchange(skippedSince_, 0);
}

ImageQueue::Wait ImageQueue::next(Clock::time_point until, Clock::time_point newerThan, TImage& image) {
  std::unique_lock lock(mutex_);
  const uint64_t cancels = cancels_;
  for (;;) {
    if (endCode_ != 0 && endsAtOnce_) throw CameraError(endCode_, endText_);
    if (std::exchange(cancelNext_, false) || cancels != cancels_)
      throw CameraError(OXCAMERA_E_CANCELLED, "The wait was cancelled");
    while (filledCount_ > 0) {
      const size_t buffer = filled_[firstFilled_];
      firstFilled_ = (firstFilled_ + 1) % filled_.size();
      --filledCount_;
      if (slots_[buffer].came >= newerThan) {
        hand(buffer, image);
        if (filledCount_ > 0) changed_.notify_one();
        return Wait::image;
      }
      ++skipped_;
      ++skippedSince_;
      release(buffer);
    }
    if (endCode_ != 0) throw CameraError(endCode_, endText_);
    if (held_ == slots_.size()) {
      throw CameraError(OXCAMERA_E_ALL_HELD,
                        "The caller holds all " + std::to_string(slots_.size()) + " buffers: give images back");
    }
    if (Clock::now() >= until) return Wait::timeOut;
    ++waiting_;
    changed_.wait_until(lock, until);
    --waiting_;
  }
}

const ImageQueue::Slot* ImageQueue::held(const TImage& image) const {
  if (image.Buffer >= slots_.size()) return nullptr;
  const Slot& slot = slots_[image.Buffer];
  return slot.place == Place::caller && slot.serial == image.Serial ? &slot : nullptr;
}

bool ImageQueue::giveBack(const TImage& image) {
  const std::lock_guard lock(mutex_);
  if (held(image) == nullptr) return false;
  --held_;
  release(image.Buffer);
  return true;
}

bool ImageQueue::withHeld(const TImage& image,
                          const std::function<void(const Frame&, const BufferMemory&)>& use) const {
  const Slot* slot = nullptr;
  {
    const std::lock_guard lock(mutex_);
    slot = held(image);
  }
  // A buffer that the caller holds is the caller's: nobody else changes its slot.
  if (slot != nullptr) use(slot->frame, slot->memory);
  return slot != nullptr;
}

bool ImageQueue::allReturned() const {
  const std::lock_guard lock(mutex_);
  return held_ == 0;
}

void ImageQueue::count(TStreamStatistics& statistics) const {
  const std::lock_guard lock(mutex_);
  statistics.Complete = complete_;
  statistics.Incomplete = incomplete_;
  statistics.Lost = frames_.missing();
  statistics.Delivered = delivered_;
  statistics.Skipped = skipped_;
  statistics.Bytes = bytes_;
  statistics.PayloadSize = payload_;
  statistics.Buffers = slots_.size();
  statistics.Held = held_;
  statistics.Waiting = filledCount_;
}

ImageQueue::Clock::duration ImageQueue::silence() const {
  const std::lock_guard lock(mutex_);
  return Clock::now() - lastFrame_;
}

}  // namespace ox::camera

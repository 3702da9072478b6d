#include "SimulatedStream.h"

#include <chrono>
#include <exception>
#include <optional>

namespace ox::camera::simulated {
namespace {

constexpr Milliseconds kLook{1};  // how often the camera is asked for a picture

}  // namespace

SimulatedStream::SimulatedStream(std::shared_ptr<SimulatedUnit> unit, const Opening& opening,
                                 std::span<const BufferMemory> buffers, FrameSink& sink)
    : unit_(std::move(unit)),
      opening_(opening),
      buffers_(buffers.begin(), buffers.end()),
      sink_(sink),
      queued_(buffers.size()),
      thread_([this] { receive(); }) {}

SimulatedStream::~SimulatedStream() {
  {
    const std::lock_guard lock(mutex_);
    ends_ = true;
    changed_.notify_all();
  }
  thread_.join();
}

void SimulatedStream::queue(size_t buffer) noexcept {
  const std::lock_guard lock(mutex_);
  if (count_ < queued_.size()) queued_[(first_ + count_++) % queued_.size()] = buffer;
}

LinkFacts SimulatedStream::facts() {
  LinkFacts facts;
  facts.noBuffer = noBuffer_;
  return facts;
}

void SimulatedStream::receive() {
  Frame frame;
  for (;;) {
    while (receiveOne(frame)) {
    }
    std::unique_lock lock(mutex_);
    if (changed_.wait_for(lock, kLook, [this] { return ends_; })) return;
  }
}

bool SimulatedStream::receiveOne(Frame& frame) {
  std::optional<size_t> buffer;
  {
    const std::lock_guard lock(mutex_);
    if (ends_) return false;
    if (count_ > 0) buffer = queued_[first_];
  }
  const BufferMemory memory = buffer ? buffers_[*buffer] : BufferMemory{};
  simulation::Frame drawn;
  uint64_t needed = 0;
  SimulatedUnit::Sent sent = SimulatedUnit::Sent::nothing;
  try {
    sent = unit_->takeFrame(opening_, {static_cast<uint8_t*>(memory.data), memory.size}, drawn, needed);
  } catch (const std::exception&) {  // a size that no memory holds: the frame is lost
  }
  if (sent == SimulatedUnit::Sent::nothing) return false;
  if (!buffer) {
    ++noBuffer_;
    return true;
  }
  {
    const std::lock_guard lock(mutex_);
    first_ = (first_ + 1) % queued_.size();
    --count_;
  }
  frame.buffer = *buffer;
  frame.needed = needed;
  frame.id = drawn.frameId;
  frame.timeKnown = true;
  frame.time = drawn.timestampNs;
  frame.firstData = std::chrono::system_clock::now().time_since_epoch() / std::chrono::nanoseconds(1);
  frame.hasChunks = needed > drawn.imageBytes;
  frame.payload = frame.hasChunks ? Payload::chunks : Payload::image;
  frame.state = sent == SimulatedUnit::Sent::whole ? FrameState::complete
                : sent == SimulatedUnit::Sent::cut ? FrameState::incomplete
                                                   : FrameState::tooSmall;
  frame.received = sent == SimulatedUnit::Sent::whole ? needed : sent == SimulatedUnit::Sent::cut ? needed / 2 : 0;
  Part part;
  part.kind = PartKind::image;
  part.size = drawn.imageBytes;
  part.format = drawn.pixelFormat;
  part.width = drawn.width;
  part.height = drawn.height;
  frame.parts.assign(1, part);
  sink_.arrived(frame);
  return true;
}

}  // namespace ox::camera::simulated

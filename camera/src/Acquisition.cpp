#include "Acquisition.h"

#include <algorithm>
#include <system_error>
#include <thread>
#include <utility>

#include "ChunkWalk.h"
#include "Failure.h"
#include "ImageRecord.h"
#include "Session.h"

namespace ox::camera {
namespace {

using Clock = ImageQueue::Clock;

constexpr size_t kUsualBuffers = 8;
constexpr size_t kLeastBuffers = 2;
constexpr size_t kMostBuffers = 4096;
constexpr uint32_t kUsualResendPercent = 25;
constexpr Milliseconds kUsualWait{1000};
constexpr Milliseconds kSilence{3000};
constexpr const char* kStopped = "The stream was stopped";
constexpr const char* kNotStarted = "No stream runs";

StreamRequest requestOf(const TStreamOptions& options, uint64_t payload) {
  StreamRequest request;
  request.payload = payload;
  request.packetSize = static_cast<PacketSize>(options.PacketSize);
  request.packetBytes = options.PacketBytes;
  request.receive = static_cast<Receive>(options.Receive);
  request.socketBytes = options.SocketBytes;
  const uint32_t percent = options.ResendPercent == 0 ? kUsualResendPercent : options.ResendPercent;
  request.resendShare = percent > 100 ? 0 : percent / 100.0;
  return request;
}

size_t checkedCount(const TStreamOptions& options) {
  const size_t count = options.BufferCount == 0 ? kUsualBuffers : options.BufferCount;
  if (count < kLeastBuffers || count > kMostBuffers) {
    throw CameraError(OXGENAPI_E_INVALID_ARGUMENT, "BufferCount is " + std::to_string(count) + ": a stream takes " +
                                                       std::to_string(kLeastBuffers) + " to " +
                                                       std::to_string(kMostBuffers));
  }
  return count;
}

void complete(TStreamStatistics& statistics, const LinkFacts& link) {
  const auto known = [](const std::optional<uint64_t>& number) { return number.value_or(OX_UNKNOWN); };
  statistics.NoBuffer = known(link.noBuffer);
  // The gap that frames without a buffer leave in the numbers shows with the next frame that comes.
  statistics.Lost -= std::min(statistics.Lost, link.noBuffer.value_or(0));
  statistics.Packets = known(link.packets);
  statistics.Missing = known(link.missing);
  statistics.ResendsAsked = known(link.resendsAsked);
  statistics.Resent = known(link.resent);
  statistics.Duplicates = known(link.duplicates);
  statistics.Ignored = known(link.ignored);
  statistics.PacketAsked = link.packetAsked;
  statistics.PacketSet = link.packetSet;
  statistics.SocketAsked = link.socketAsked;
  statistics.SocketGranted = link.socketGranted;
  statistics.Receive = static_cast<TReceiveMethod>(link.receive);
}

}  // namespace

// A stream and the connection that it needs. Whoever takes it ends it.
struct Acquisition::Receiver {
  std::shared_ptr<ImageQueue> queue;
  std::shared_ptr<Connection> connection;  // its device outlives the stream
  std::unique_ptr<Stream> stream;

  // Ends the stream. The connection is still to be given back.
  void end() {
    queue->detach();
    stream.reset();
  }
};

struct Acquisition::Running {
  explicit Running(NODEMAP map) : features(map) {}

  std::shared_ptr<ImageQueue> queue;
  StreamFeatures features;
  bool locked = false;

  std::mutex mutex;  // for what follows
  std::unique_ptr<Receiver> receiver;
  LinkFacts link;  // of the time when the receiver ended

  LinkFacts facts() {
    const std::lock_guard lock(mutex);
    return receiver ? receiver->stream->facts() : link;
  }
  bool receives() {
    const std::lock_guard lock(mutex);
    return receiver != nullptr;
  }
  std::unique_ptr<Receiver> take() {
    const std::lock_guard lock(mutex);
    if (receiver) link = receiver->stream->facts();
    return std::move(receiver);
  }
};

Acquisition::~Acquisition() { finish(); }

std::shared_ptr<Acquisition::Running> Acquisition::running() const {
  const std::lock_guard lock(mutex_);
  return running_;
}

void Acquisition::start(const TStreamOptions& options) {
  const std::lock_guard sequence(sequence_);
  const size_t count = checkedCount(options);
  session_.requireControl();
  {
    const std::lock_guard lock(mutex_);
    if (running_ && running_->receives()) throw CameraError(OXCAMERA_E_IN_USE, "A stream of this camera runs already");
    running_.reset();
  }
  std::shared_ptr<Connection> connection = session_.connection();
  auto running = std::make_shared<Running>(session_.nodeMap());
  bool started = false;
  try {
    running->locked = running->features.lock();
    uint64_t payload = 0;
    connection->use([&](Device& device) { payload = device.payloadSize(); });
    if (payload == 0) payload = running->features.payloadSize();
    running->queue = std::make_shared<ImageQueue>(count, options.Buffers, payload, options.LatestOnly != 0);
    auto receiver = std::make_unique<Receiver>(Receiver{running->queue, connection, nullptr});
    connection->use([&](Device& device) {
      receiver->stream = device.openStream(requestOf(options, payload), running->queue->memory(), *running->queue);
    });
    running->queue->attach(*receiver->stream);
    running->receiver = std::move(receiver);
    if (options.PacketSize != PS_Keep) running->features.forgetPacketSize();
    {
      const std::lock_guard lock(mutex_);
      running_ = running;
      forget();
      queues_.push_back(running->queue);
    }
    started = true;
    running->features.startAcquisition();
  } catch (...) {
    const auto undo = [](auto step) {
      try {
        step();
      } catch (...) {  // the failure of the start is the one to report
      }
    };
    // A start without an answer may have happened.
    if (started) undo([&] { running->features.stopAcquisition(); });
    if (const auto receiver = running->take()) receiver->end();
    if (running->locked) undo([&] { running->features.unlock(); });
    {
      const std::lock_guard lock(mutex_);
      if (running_ == running) running_.reset();
      if (running->queue) std::erase(queues_, running->queue);
    }
    if (running->queue) running->queue->end(OXCAMERA_E_STOPPED, "The stream could not be started", true);
    session_.giveBack(std::move(connection));
    throw;
  }
  // A loss that came in between has found nothing to end.
  if (session_.state() == CS_Lost) lose("The camera was lost during the start");
}

void Acquisition::stop() {
  if (const auto before = running()) before->queue->end(OXCAMERA_E_STOPPED, kStopped, true);
  const std::lock_guard sequence(sequence_);
  const std::shared_ptr<Running> running = this->running();
  if (!running) return;
  running->queue->end(OXCAMERA_E_STOPPED, kStopped, true);
  std::exception_ptr failure;
  const auto step = [&](auto work) {
    try {
      work();
    } catch (...) {
      if (!failure) failure = std::current_exception();
    }
  };
  const bool lost = session_.state() != CS_Open;
  if (!lost) step([&] { running->features.stopAcquisition(); });
  if (const auto receiver = running->take()) {
    receiver->end();
    session_.giveBack(std::move(receiver->connection));
  }
  if (!lost && running->locked) step([&] { running->features.unlock(); });
  {
    const std::lock_guard lock(mutex_);
    last_ = {};
    running->queue->count(last_);
    complete(last_, running->link);
    running_.reset();
    forget();
  }
  if (failure) std::rethrow_exception(failure);
}

void Acquisition::lose(const std::string& text) noexcept {
  const std::shared_ptr<Running> running = this->running();
  if (!running) return;
  running->queue->end(OXCAMERA_E_LOST, "The camera is lost: " + text, false);
  auto receiver = std::shared_ptr<Receiver>(running->take());
  if (!receiver) return;
  // Perhaps on a thread of the transport, which its end waits for.
  try {
    std::thread([receiver] { receiver->end(); }).detach();
  } catch (const std::system_error&) {
    receiver->end();
  }
}

void Acquisition::close(Milliseconds patience) noexcept {
  const std::shared_ptr<Running> running = this->running();
  if (!running) return;
  running->queue->end(OXCAMERA_E_CLOSED, "The camera is closed", true);
  struct Done {
    std::mutex mutex;
    std::condition_variable changed;
    bool yes = false;
  };
  const auto done = std::make_shared<Done>();
  const auto stopping = [this, done] {
    try {
      stop();
    } catch (...) {  // the camera is being closed: there is nobody to tell
    }
    const std::lock_guard lock(done->mutex);
    done->yes = true;
    done->changed.notify_all();
  };
  try {
    const std::lock_guard lock(mutex_);
    if (closing_.joinable()) return;
    closing_ = std::thread(stopping);
  } catch (const std::system_error&) {
    stopping();
  }
  std::unique_lock lock(done->mutex);
  done->changed.wait_for(lock, patience, [&] { return done->yes; });
}

void Acquisition::finish() noexcept {
  std::thread closing;
  {
    const std::lock_guard lock(mutex_);
    closing = std::move(closing_);
  }
  if (closing.joinable()) closing.join();
}

void Acquisition::forget() {
  std::erase_if(queues_, [](const std::shared_ptr<ImageQueue>& queue) { return queue->allReturned(); });
  if (running_ && running_->queue && std::find(queues_.begin(), queues_.end(), running_->queue) == queues_.end())
    queues_.push_back(running_->queue);
}

void Acquisition::next(uint32_t timeMs, TImage& image) { wait(timeMs, {}, image); }

void Acquisition::grab(uint32_t timeMs, TImage& image) {
  const auto now = Clock::now();
  if (!running()) {
    try {
      start({});
    } catch (const CameraError& error) {
      if (error.code() != OXCAMERA_E_IN_USE) throw;  // another thread was faster
    }
  }
  wait(timeMs, now, image);
}

void Acquisition::wait(uint32_t timeMs, Clock::time_point newerThan, TImage& image) {
  const std::shared_ptr<Running> running = this->running();
  if (!running) throw CameraError(OXCAMERA_E_STOPPED, kNotStarted);
  const auto begin = Clock::now();
  const bool usual = timeMs == OX_WAIT_DEFAULT;
  Milliseconds time = usual ? kUsualWait : Milliseconds{timeMs};
  if (running->queue->next(begin + time, newerThan, image) == ImageQueue::Wait::image) return;
  std::string limits;
  if (usual) {
    const double exposure = running->features.exposureMs(), period = running->features.periodMs();
    const double longest = std::min(exposure + 2 * std::max(exposure, period), 86'400'000.0);
    if (longest > 0) {
      time += Milliseconds{static_cast<int64_t>(longest)};
      limits = " (exposure " + std::to_string(static_cast<int64_t>(exposure)) + " ms, period " +
               std::to_string(static_cast<int64_t>(period)) + " ms)";
      if (running->queue->next(begin + time, newerThan, image) == ImageQueue::Wait::image) return;
    }
  }
  if (timeMs == 0) throw CameraError(OXCAMERA_E_TIMEOUT, "No image waits");
  throw CameraError(OXCAMERA_E_TIMEOUT,
                    "No image came within " + std::to_string(time.count()) + " ms" + limits + explain(*running));
}

std::string Acquisition::explain(Running& running) {
  const LinkFacts link = running.facts();
  TStreamStatistics counters{};
  running.queue->count(counters);
  std::string text;
  if (link.packets && counters.Complete + counters.Incomplete == 0) {
    text = *link.packets == 0 ? "; no packet has come since the start"
                              : "; " + std::to_string(*link.packets) + " packets have come, but no frame";
  }
  std::string obstacles = running.features.obstacles();
  for (size_t end; (end = obstacles.find('\n')) != std::string::npos; obstacles.erase(0, end + 1))
    text += "; " + obstacles.substr(0, end);
  return text;
}

std::shared_ptr<ImageQueue> Acquisition::holderOf(const TImage& image) const {
  std::vector<std::shared_ptr<ImageQueue>> queues;
  {
    const std::lock_guard lock(mutex_);
    queues = queues_;
  }
  for (const std::shared_ptr<ImageQueue>& queue : queues)
    if (queue->withHeld(image, [](const Frame&, const BufferMemory&) {})) return queue;
  throw CameraError(OXGENAPI_E_INVALID_ARGUMENT, "This image was given back, or is not of this camera");
}

void Acquisition::detach(const TImage& image) {
  std::shared_ptr<StreamFeatures> features;
  {
    const std::lock_guard lock(mutex_);
    if (image.Serial == 0 || attached_ != image.Serial) return;
    attached_ = 0;
    features = std::move(attachedTo_);
  }
  if (features) features->detachChunks();
}

void Acquisition::giveBack(const TImage& image) {
  const std::shared_ptr<Running> running = this->running();
  detach(image);
  if (running && running->queue->giveBack(image)) return;
  if (!holderOf(image)->giveBack(image))
    throw CameraError(OXGENAPI_E_INVALID_ARGUMENT, "This image was given back, or is not of this camera");
  const std::lock_guard lock(mutex_);
  forget();
}

void Acquisition::part(const TImage& image, size_t index, TImagePart& part) {
  holderOf(image)->withHeld(image, [&](const Frame& frame, const BufferMemory& memory) {
    if (index >= frame.parts.size())
      throw CameraError(OXGENAPI_E_INVALID_ARGUMENT, "Index out of range: " + std::to_string(index) + " of " +
                                                         std::to_string(frame.parts.size()) + " parts");
    part = recordOf(frame.parts[index], memory);
  });
}

void Acquisition::attachChunks(const TImage& image, bool bigEndian) {
  holderOf(image)->withHeld(image, [&](const Frame& frame, const BufferMemory& memory) {
    if (!frame.hasChunks) throw CameraError(OXGENAPI_E_NOT_SUPPORTED, "The image has no chunks");
    if (frame.state != FrameState::complete)
      throw CameraError(OXGENAPI_E_NOT_SUPPORTED, "Data of the image is missing, so its chunks are not attached");
    auto* const bytes = static_cast<uint8_t*>(memory.data);
    std::vector<TChunkData> chunks = walkChunks({bytes, static_cast<size_t>(frame.received)}, bigEndian);
    const auto features = std::make_shared<StreamFeatures>(session_.nodeMap());
    {
      const std::lock_guard lock(mutex_);
      attached_ = image.Serial;
      attachedTo_ = features;
    }
    features->attachChunks(chunks.data(), chunks.size());
  });
}

void Acquisition::enableChunks(const std::vector<std::string>& names) {
  const std::lock_guard sequence(sequence_);
  session_.requireControl();
  const std::shared_ptr<Running> running = this->running();
  if (running && running->receives())
    throw CameraError(OXCAMERA_E_IN_USE, "Chunks are chosen before the stream starts; one runs");
  StreamFeatures(session_.nodeMap()).enableChunks(names);
}

void Acquisition::cancel() {
  if (const auto running = this->running()) running->queue->cancel();
}

TStreamStatistics Acquisition::statistics() {
  const std::shared_ptr<Running> running = this->running();
  if (!running) {
    const std::lock_guard lock(mutex_);
    TStreamStatistics statistics = last_;
    statistics.Held = statistics.Waiting = 0;
    for (const std::shared_ptr<ImageQueue>& queue : queues_) {
      TStreamStatistics former{};
      queue->count(former);
      statistics.Held += former.Held;
    }
    return statistics;
  }
  TStreamStatistics statistics{};
  // In this order a frame in between is missing in both, not counted twice.
  const LinkFacts link = running->facts();
  running->queue->count(statistics);
  complete(statistics, link);
  statistics.Running = 1;
  return statistics;
}

std::string Acquisition::advice() {
  const std::shared_ptr<Running> running = this->running();
  if (!running) return {};
  std::string text = running->facts().advice;
  const auto add = [&](const std::string& sentence) { text += (text.empty() ? "" : "\n") + sentence; };
  TStreamStatistics counters{};
  running->queue->count(counters);
  if (counters.Held == counters.Buffers)
    add("All " + std::to_string(counters.Buffers) + " buffers are held by this program");
  else if (session_.state() == CS_Lost)
    add("The camera is lost");
  else if (running->queue->silence() >= kSilence)
    add("No frame for 3 s" + explain(*running));
  return text;
}

}  // namespace ox::camera

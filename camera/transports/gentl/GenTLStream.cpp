// A data stream of a producer: buffers of ours announced to it, and a thread that waits for filled ones.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <thread>
#include <vector>

#include "Answer.h"
#include "GenTLDevice.h"

namespace ox::camera::gentl {
namespace {

constexpr uint64_t kWait = 100;            // ms of one wait for a buffer
constexpr Milliseconds kAfterFailure{20};  // before the next wait
constexpr uint32_t kMostParts = 256;       // of a frame
constexpr uint64_t kNanoseconds = 1'000'000'000;

Payload payloadOf(uint64_t type) {
  switch (type) {
    case PAYLOAD_TYPE_IMAGE: return Payload::image;
    case PAYLOAD_TYPE_RAW_DATA: return Payload::raw;
    case PAYLOAD_TYPE_FILE: return Payload::file;
    case PAYLOAD_TYPE_CHUNK_DATA:
    case PAYLOAD_TYPE_CHUNK_ONLY: return Payload::chunks;
    case PAYLOAD_TYPE_JPEG: return Payload::jpeg;
    case PAYLOAD_TYPE_JPEG2000: return Payload::jpeg2000;
    case PAYLOAD_TYPE_H264: return Payload::h264;
    case PAYLOAD_TYPE_MULTI_PART: return Payload::multiPart;
    default: return Payload::unknown;
  }
}

PartKind kindOf(uint64_t type) {
  switch (type) {
    case PART_DATATYPE_2D_IMAGE: return PartKind::image;
    case PART_DATATYPE_2D_PLANE_BIPLANAR:
    case PART_DATATYPE_2D_PLANE_TRIPLANAR:
    case PART_DATATYPE_2D_PLANE_QUADPLANAR: return PartKind::plane;
    case PART_DATATYPE_3D_IMAGE:
    case PART_DATATYPE_3D_PLANE_BIPLANAR:
    case PART_DATATYPE_3D_PLANE_TRIPLANAR:
    case PART_DATATYPE_3D_PLANE_QUADPLANAR: return PartKind::depth;
    case PART_DATATYPE_CONFIDENCE_MAP: return PartKind::confidence;
    case PART_DATATYPE_JPEG:
    case PART_DATATYPE_JPEG2000: return PartKind::compressed;
    default: return PartKind::other;
  }
}

uint32_t pixels(std::optional<uint64_t> number) {
  return number && *number <= UINT32_MAX ? static_cast<uint32_t>(*number) : 0;
}

class GenTLStream final : public Stream {
 public:
  GenTLStream(std::unique_ptr<DataStream> stream, uint64_t tickFrequency, std::span<const BufferMemory> buffers,
              FrameSink& sink)
      : stream_(std::move(stream)), tickFrequency_(tickFrequency), sink_(sink), buffers_(buffers.size()) {
    const uint64_t least = stream_->info(STREAM_INFO_BUF_ANNOUNCE_MIN).value_or(0);
    if (least > buffers.size())
      producer().failAnswer("DSGetInfo", "asks for at least " + std::to_string(least) + " buffers, there are " +
                                             std::to_string(buffers.size()));
    try {
      announce(buffers);
      producer().call(functions().GCRegisterEvent, handle(), EVENT_NEW_BUFFER, &event_);
      if (event_ == nullptr) producer().failAnswer("GCRegisterEvent", "gives no handle");
      for (const Buffer& buffer : buffers_) producer().call(functions().DSQueueBuffer, handle(), buffer.handle);
      producer().call(functions().DSStartAcquisition, handle(), ACQ_START_FLAGS_DEFAULT, GENTL_INFINITE);
      started_ = true;
      frame_.parts.reserve(kMostParts);
      thread_ = std::thread([this] { receive(); });
    } catch (...) {
      end();
      throw;
    }
  }

  ~GenTLStream() override { end(); }

  // Every buffer is with the producer from the start, so that the first time counts for that.
  void queue(size_t index) noexcept override {
    {
      const std::lock_guard lock(mutex_);
      Buffer& buffer = buffers_[index];
      if (buffer.queued) return;
      buffer.queued = true;
      if (!buffer.expected) {
        buffer.expected = true;
        ++expected_;
        changed_.notify_all();
        return;
      }
    }
    if (functions().DSQueueBuffer(handle(), buffers_[index].handle) != GC_ERR_SUCCESS) ++refused_;
  }

  LinkFacts facts() override {
    LinkFacts facts;
    facts.noBuffer = stream_->info(STREAM_INFO_NUM_UNDERRUN);
    const std::lock_guard lock(mutex_);
    facts.advice = advice_;
    if (refused_ > 0)
      facts.advice += (advice_.empty() ? "" : "\n") + producer().name() + ".cti refused " + std::to_string(refused_) +
                      " buffers that were given back";
    return facts;
  }

 private:
  struct Buffer {
    BUFFER_HANDLE handle = nullptr;
    BufferMemory memory;
    bool expected = false;  // given to us once
    bool queued = false;
  };

  const Producer& producer() const { return stream_->producer(); }
  const Functions& functions() const { return producer().functions; }
  DS_HANDLE handle() const { return stream_->handle(); }

  void announce(std::span<const BufferMemory> buffers) {
    const uint64_t alignment = stream_->info(STREAM_INFO_BUF_ALIGNMENT).value_or(1);
    for (size_t i = 0; i < buffers.size(); ++i) {
      if (alignment > 1 && reinterpret_cast<uintptr_t>(buffers[i].data) % alignment != 0)
        producer().failAnswer("DSGetInfo", "asks for buffers at multiples of " + std::to_string(alignment) + " bytes");
      BUFFER_HANDLE announced = nullptr;
      producer().call(functions().DSAnnounceBuffer, handle(), buffers[i].data, buffers[i].size,
                      reinterpret_cast<void*>(i), &announced);
      if (announced == nullptr) producer().failAnswer("DSAnnounceBuffer", "gives no handle");
      buffers_[i].handle = announced;
      buffers_[i].memory = buffers[i];
    }
  }

  // The reverse of the start, as far as it came.
  void end() {
    {
      const std::lock_guard lock(mutex_);
      ends_ = true;
      changed_.notify_all();
    }
    if (thread_.joinable()) {
      functions().EventKill(event_);
      thread_.join();
    }
    if (started_) functions().DSStopAcquisition(handle(), ACQ_STOP_FLAGS_DEFAULT);
    functions().DSFlushQueue(handle(), ACQ_QUEUE_ALL_DISCARD);
    if (event_ != nullptr) functions().GCUnregisterEvent(handle(), EVENT_NEW_BUFFER);
    for (const Buffer& buffer : buffers_)
      if (buffer.handle != nullptr) functions().DSRevokeBuffer(handle(), buffer.handle, nullptr, nullptr);
  }

  void receive() {
    {
      // The receiver above is ready when it has given all its buffers.
      std::unique_lock lock(mutex_);
      changed_.wait(lock, [this] { return ends_ || expected_ == buffers_.size(); });
    }
    while (!ends_) {
      std::array<uint8_t, 256> record{};  // room for a producer that does not look at the size
      size_t size = sizeof(EVENT_NEW_BUFFER_DATA);
      const GC_ERROR code = functions().EventGetData(event_, record.data(), &size, kWait);
      if (ends_) return;
      if (code == GC_ERR_SUCCESS && size == sizeof(EVENT_NEW_BUFFER_DATA)) {
        EVENT_NEW_BUFFER_DATA filled;
        std::memcpy(&filled, record.data(), sizeof filled);
        deliver(filled);
      } else if (code == GC_ERR_SUCCESS) {
        advise(producer().name() + ".cti announces buffers with " + std::to_string(size) + " bytes instead of 16");
        pause();
      } else if (code != GC_ERR_TIMEOUT) {
        if (code != GC_ERR_ABORT && code != GC_ERR_NO_DATA)
          advise(producer().name() + ".cti: EventGetData failed with " + codeName(code));
        if (isDead(code)) return;
        pause();
      }
    }
  }

  void pause() {
    std::unique_lock lock(mutex_);
    changed_.wait_for(lock, kAfterFailure, [this] { return ends_.load(); });
  }

  void advise(std::string sentence) {
    const std::lock_guard lock(mutex_);
    if (advice_.empty()) advice_ = std::move(sentence);
  }

  void deliver(const EVENT_NEW_BUFFER_DATA& filled) {
    const auto found = std::find_if(buffers_.begin(), buffers_.end(),
                                    [&](const Buffer& buffer) { return buffer.handle == filled.BufferHandle; });
    if (found == buffers_.end()) return advise(producer().name() + ".cti delivers a buffer that it was not given");
    {
      const std::lock_guard lock(mutex_);
      if (!found->queued) {
        if (advice_.empty()) advice_ = producer().name() + ".cti delivers a buffer twice";
        return;
      }
      found->queued = false;
    }
    describe(*found);
    frame_.buffer = static_cast<size_t>(found - buffers_.begin());
    sink_.arrived(frame_);
  }

  std::optional<uint64_t> info(const Buffer& buffer, BUFFER_INFO_CMD item) const {
    return number([&](INFO_DATATYPE* type, void* to, size_t* size) {
      return functions().DSGetBufferInfo(handle(), buffer.handle, item, type, to, size);
    });
  }
  bool is(const Buffer& buffer, BUFFER_INFO_CMD item) const { return info(buffer, item).value_or(0) != 0; }

  void describe(const Buffer& buffer) {
    const uint64_t filled = info(buffer, BUFFER_INFO_SIZE_FILLED).value_or(buffer.memory.size);
    frame_.received = std::min<uint64_t>(filled, buffer.memory.size);
    frame_.needed = 0;
    const bool tooSmall = filled > buffer.memory.size || is(buffer, BUFFER_INFO_DATA_LARGER_THAN_BUFFER);
    frame_.state = tooSmall                                ? FrameState::tooSmall
                   : is(buffer, BUFFER_INFO_IS_INCOMPLETE) ? FrameState::incomplete
                                                           : FrameState::complete;
    if (frame_.state == FrameState::complete) frame_.needed = frame_.received;
    frame_.id = info(buffer, BUFFER_INFO_FRAMEID).value_or(0);
    frame_.firstData = std::chrono::system_clock::now().time_since_epoch() / std::chrono::nanoseconds(1);
    readTime(buffer);
    const uint64_t type = info(buffer, BUFFER_INFO_PAYLOADTYPE).value_or(PAYLOAD_TYPE_IMAGE);
    frame_.payload = payloadOf(type);
    frame_.hasChunks = is(buffer, BUFFER_INFO_CONTAINS_CHUNKDATA) || frame_.payload == Payload::chunks;
    frame_.parts.clear();
    uint32_t parts = 0;
    if (frame_.payload == Payload::multiPart &&
        functions().DSGetNumBufferParts(handle(), buffer.handle, &parts) == GC_ERR_SUCCESS && parts > 0) {
      for (uint32_t index = 0; index < std::min(parts, kMostParts); ++index) readPart(buffer, index);
    } else if (type != PAYLOAD_TYPE_CHUNK_ONLY && info(buffer, BUFFER_INFO_IMAGEPRESENT).value_or(1) != 0) {
      readImage(buffer);
    }
  }

  void readTime(const Buffer& buffer) {
    std::optional<uint64_t> time = info(buffer, BUFFER_INFO_TIMESTAMP_NS);
    if (!time && tickFrequency_ != 0) {
      if (const std::optional<uint64_t> ticks = info(buffer, BUFFER_INFO_TIMESTAMP))
        time = *ticks / tickFrequency_ * kNanoseconds +
               static_cast<uint64_t>(static_cast<double>(*ticks % tickFrequency_) * 1e9 /
                                     static_cast<double>(tickFrequency_));
    }
    frame_.timeKnown = time.has_value();
    frame_.time = time.value_or(0);
  }

  void readImage(const Buffer& buffer) {
    Part part;
    part.kind = PartKind::image;
    part.offset = std::min(info(buffer, BUFFER_INFO_IMAGEOFFSET).value_or(0), frame_.received);
    part.size = std::min(info(buffer, BUFFER_INFO_DATA_SIZE).value_or(frame_.received), frame_.received - part.offset);
    part.format = pixels(info(buffer, BUFFER_INFO_PIXELFORMAT));
    part.width = pixels(info(buffer, BUFFER_INFO_WIDTH));
    const uint32_t delivered = pixels(info(buffer, BUFFER_INFO_DELIVERED_IMAGEHEIGHT));
    part.height = delivered != 0 ? delivered : pixels(info(buffer, BUFFER_INFO_HEIGHT));
    part.x = pixels(info(buffer, BUFFER_INFO_XOFFSET));
    part.y = pixels(info(buffer, BUFFER_INFO_YOFFSET));
    part.xPadding = pixels(info(buffer, BUFFER_INFO_XPADDING));
    part.yPadding = pixels(info(buffer, BUFFER_INFO_YPADDING));
    frame_.parts.push_back(part);
  }

  void readPart(const Buffer& buffer, uint32_t index) {
    const auto ask = [&](BUFFER_PART_INFO_CMD item) {
      return number([&](INFO_DATATYPE* type, void* to, size_t* size) {
        return functions().DSGetBufferPartInfo(handle(), buffer.handle, index, item, type, to, size);
      });
    };
    Part part;
    const auto start = reinterpret_cast<uintptr_t>(buffer.memory.data);
    const uint64_t base = ask(BUFFER_PART_INFO_BASE).value_or(start);
    if (base < start || base - start > frame_.received) return;
    part.offset = base - start;
    part.size = std::min(ask(BUFFER_PART_INFO_DATA_SIZE).value_or(0), frame_.received - part.offset);
    part.kind = kindOf(ask(BUFFER_PART_INFO_DATA_TYPE).value_or(PART_DATATYPE_UNKNOWN));
    part.format = pixels(ask(BUFFER_PART_INFO_DATA_FORMAT));
    part.width = pixels(ask(BUFFER_PART_INFO_WIDTH));
    const uint32_t delivered = pixels(ask(BUFFER_PART_INFO_DELIVERED_IMAGEHEIGHT));
    part.height = delivered != 0 ? delivered : pixels(ask(BUFFER_PART_INFO_HEIGHT));
    part.x = pixels(ask(BUFFER_PART_INFO_XOFFSET));
    part.y = pixels(ask(BUFFER_PART_INFO_YOFFSET));
    part.xPadding = pixels(ask(BUFFER_PART_INFO_XPADDING));
    part.purpose = ask(BUFFER_PART_INFO_DATA_PURPOSE_ID).value_or(0);
    frame_.parts.push_back(part);
  }

  const std::unique_ptr<DataStream> stream_;
  const uint64_t tickFrequency_;
  FrameSink& sink_;
  EVENT_HANDLE event_ = nullptr;
  bool started_ = false;
  std::atomic<bool> ends_ = false;
  std::atomic<uint64_t> refused_ = 0;
  std::mutex mutex_;  // a leaf, for what follows
  std::condition_variable changed_;
  std::vector<Buffer> buffers_;
  size_t expected_ = 0;
  std::string advice_;
  Frame frame_;  // of the thread
  std::thread thread_;
};

}  // namespace

DataStream::DataStream(std::shared_ptr<System> system, DEV_HANDLE device) : system_(std::move(system)) {
  const Functions& functions = producer().functions;
  uint32_t count = 0;
  producer().call(functions.DevGetNumDataStreams, device, &count);
  if (count == 0)
    throw TransportError(Reason::notSupported, producer().name() + ".cti has no data stream of this camera");
  const std::string id = requireText(producer(), "DevGetDataStreamID", [&](INFO_DATATYPE*, void* buffer, size_t* size) {
    return functions.DevGetDataStreamID(device, 0, static_cast<char*>(buffer), size);
  });
  producer().call(functions.DevOpenDataStream, device, id.c_str(), &handle_);
  if (handle_ == nullptr) producer().failAnswer("DevOpenDataStream", "gives no handle");
}

DataStream::~DataStream() { producer().functions.DSClose(handle_); }

std::optional<uint64_t> DataStream::info(STREAM_INFO_CMD item) const {
  return number([&](INFO_DATATYPE* type, void* buffer, size_t* size) {
    return producer().functions.DSGetInfo(handle_, item, type, buffer, size);
  });
}

std::unique_ptr<Stream> openStream(std::unique_ptr<DataStream> stream, uint64_t tickFrequency,
                                   std::span<const BufferMemory> buffers, FrameSink& sink) {
  return std::make_unique<GenTLStream>(std::move(stream), tickFrequency, buffers, sink);
}

}  // namespace ox::camera::gentl

#include "AravisStream.h"

#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <fstream>
#include <string>
#include <vector>

namespace ox::camera::aravis {
namespace {

constexpr uint64_t kLargestSocketBuffer = INT32_MAX;
constexpr uint64_t kUsualSocketBuffer = uint64_t{1} << 20;

bool mayUsePacketSockets() {
  const int made = ::socket(AF_PACKET, SOCK_RAW | SOCK_CLOEXEC, 0);
  if (made >= 0) ::close(made);
  return made >= 0;
}

uint64_t numberIn(const char* file) {
  uint64_t number = 0;
  std::ifstream(file) >> number;
  return number;
}

Payload payloadOf(ArvBufferPayloadType type) {
  switch (type) {
    case ARV_BUFFER_PAYLOAD_TYPE_NO_DATA: return Payload::none;
    case ARV_BUFFER_PAYLOAD_TYPE_IMAGE: return Payload::image;
    case ARV_BUFFER_PAYLOAD_TYPE_RAWDATA: return Payload::raw;
    case ARV_BUFFER_PAYLOAD_TYPE_FILE: return Payload::file;
    case ARV_BUFFER_PAYLOAD_TYPE_CHUNK_DATA:
    case ARV_BUFFER_PAYLOAD_TYPE_EXTENDED_CHUNK_DATA: return Payload::chunks;
    case ARV_BUFFER_PAYLOAD_TYPE_JPEG: return Payload::jpeg;
    case ARV_BUFFER_PAYLOAD_TYPE_JPEG2000: return Payload::jpeg2000;
    case ARV_BUFFER_PAYLOAD_TYPE_H264: return Payload::h264;
    case ARV_BUFFER_PAYLOAD_TYPE_MULTIPART: return Payload::multiPart;
    default: return Payload::unknown;
  }
}

PartKind partKindOf(ArvBufferPartDataType type) {
  switch (type) {
    case ARV_BUFFER_PART_DATA_TYPE_2D_IMAGE: return PartKind::image;
    case ARV_BUFFER_PART_DATA_TYPE_2D_PLANE_BIPLANAR:
    case ARV_BUFFER_PART_DATA_TYPE_2D_PLANE_TRIPLANAR:
    case ARV_BUFFER_PART_DATA_TYPE_2D_PLANE_QUADPLANAR: return PartKind::plane;
    case ARV_BUFFER_PART_DATA_TYPE_3D_IMAGE:
    case ARV_BUFFER_PART_DATA_TYPE_3D_PLANE_BIPLANAR:
    case ARV_BUFFER_PART_DATA_TYPE_3D_PLANE_TRIPLANAR:
    case ARV_BUFFER_PART_DATA_TYPE_3D_PLANE_QUADPLANAR: return PartKind::depth;
    case ARV_BUFFER_PART_DATA_TYPE_CONFIDENCE_MAP: return PartKind::confidence;
    case ARV_BUFFER_PART_DATA_TYPE_CHUNK_DATA: return PartKind::chunks;
    case ARV_BUFFER_PART_DATA_TYPE_JPEG:
    case ARV_BUFFER_PART_DATA_TYPE_JPEG2000: return PartKind::compressed;
    default: return PartKind::other;
  }
}

bool hasPixels(PartKind kind) { return kind >= PartKind::image && kind <= PartKind::confidence; }

uint32_t positive(gint number) { return number < 0 ? 0 : static_cast<uint32_t>(number); }

// The driver's failure as ours.
struct Error {
  GError* error = nullptr;
  ~Error() { g_clear_error(&error); }
  std::string text() const { return error == nullptr ? "no reason given" : error->message; }
};

class AravisStream final : public Stream {
 public:
  AravisStream(ArvDevice* device, bool loopback, const StreamRequest& request, std::span<const BufferMemory> buffers,
               FrameSink& sink)
      : sink_(sink) {
    uint64_t total = 0;
    for (const BufferMemory& memory : buffers) total += memory.size;
    timeKnown_ = true;
    if (ARV_IS_GV_DEVICE(device)) prepareNetwork(ARV_GV_DEVICE(device), loopback, request);
    Error error;
    ArvStream* const stream = arv_device_create_stream(device, &AravisStream::callBack, this, &error.error);
    if (stream == nullptr) throw TransportError(Reason::failed, "No stream: " + error.text() + usbLimit(device, total));
    if (ARV_IS_GV_STREAM(stream)) configure(stream, request);
    for (size_t i = 0; i < buffers.size(); ++i)
      buffers_.push_back(arv_buffer_new_full(buffers[i].size, buffers[i].data, reinterpret_cast<void*>(i), nullptr));
    stream_ = stream;
  }

  ~AravisStream() override {
    ends_ = true;
    g_object_unref(stream_.load());  // stops its thread
    for (ArvBuffer* buffer : buffers_) g_object_unref(buffer);
  }

  void queue(size_t buffer) noexcept override {
    g_object_ref(buffers_[buffer]);
    arv_stream_push_buffer(stream_, buffers_[buffer]);
  }

  LinkFacts facts() override {
    LinkFacts facts = facts_;
    guint64 complete = 0, failures = 0, underruns = 0;
    arv_stream_get_statistics(stream_, &complete, &failures, &underruns);
    facts.noBuffer = underruns;
    if (!ARV_IS_GV_STREAM(stream_.load())) return facts;
    const auto info = [&](const char* name) { return arv_stream_get_info_uint64_by_name(stream_, name); };
    facts.packets = info("n_received_packets");
    facts.missing = info("n_missing_packets");
    facts.resendsAsked = info("n_resend_requests");
    facts.resent = info("n_resent_packets");
    facts.duplicates = info("n_duplicated_packets");
    facts.ignored = info("n_ignored_packets");
    return facts;
  }

 private:
  void prepareNetwork(ArvGvDevice* device, bool loopback, const StreamRequest& request) {
    Error error;
    timeKnown_ = arv_gv_device_get_timestamp_tick_frequency(device, &error.error) != 0;
    const bool allowed = mayUsePacketSockets();
    if (request.receive == Receive::packet && !allowed)
      throw TransportError(Reason::noPermission, "A packet socket needs the capability CAP_NET_RAW");
    const bool packet =
        request.receive == Receive::packet || (request.receive == Receive::automatic && allowed && !loopback);
    facts_.receive = packet ? Receive::packet : Receive::standard;
    arv_gv_device_set_stream_options(device,
                                     packet ? ARV_GV_STREAM_OPTION_NONE : ARV_GV_STREAM_OPTION_PACKET_SOCKET_DISABLED);
    arv_gv_device_set_packet_size_adjustment(device, ARV_GV_PACKET_SIZE_ADJUSTMENT_NEVER);
    Error sizing;
    if (request.packetSize == PacketSize::automatic) {
      facts_.packetAsked = arv_gv_device_auto_packet_size(device, &sizing.error);
    } else if (request.packetSize == PacketSize::number) {
      facts_.packetAsked = request.packetBytes;
      arv_gv_device_set_packet_size(device, static_cast<gint>(std::min<uint32_t>(request.packetBytes, INT32_MAX)),
                                    &sizing.error);
    }
    if (sizing.error != nullptr) throw TransportError(Reason::refused, "Packet size: " + sizing.text());
    Error reading;
    facts_.packetSet = arv_gv_device_get_packet_size(device, &reading.error);
    if (facts_.packetAsked != 0 && facts_.packetSet != facts_.packetAsked) {
      advise("The camera took packets of " + std::to_string(facts_.packetSet) + " bytes, not of " +
             std::to_string(facts_.packetAsked));
    }
  }

  void configure(ArvStream* stream, const StreamRequest& request) {
    const uint64_t needed =
        std::min(request.socketBytes == 0 ? request.payload : request.socketBytes, kLargestSocketBuffer);
    // Each packet takes more room in the kernel than its bytes: a buffer of one small frame does not hold that frame.
    facts_.socketAsked = request.socketBytes == 0 ? std::max(needed, kUsualSocketBuffer) : needed;
    g_object_set(stream, "socket-buffer", ARV_GV_STREAM_SOCKET_BUFFER_FIXED, "socket-buffer-size",
                 static_cast<gint>(facts_.socketAsked), "packet-resend",
                 request.resendShare > 0 ? ARV_GV_STREAM_PACKET_RESEND_ALWAYS : ARV_GV_STREAM_PACKET_RESEND_NEVER,
                 "packet-request-ratio", request.resendShare, nullptr);
    // The socket is the library's; what the system grants follows from its limit.
    const uint64_t limit = numberIn("/proc/sys/net/core/rmem_max");
    facts_.socketGranted = limit == 0 ? facts_.socketAsked : std::min(limit, facts_.socketAsked);
    if (facts_.socketGranted < needed) {
      advise("The system cuts the receive buffer to " + std::to_string(facts_.socketGranted) + " bytes, " +
             std::to_string(facts_.socketAsked) +
             " are needed: sysctl -w net.core.rmem_max=" + std::to_string(facts_.socketAsked));
    }
  }

  void advise(const std::string& sentence) { facts_.advice += (facts_.advice.empty() ? "" : "\n") + sentence; }

  static std::string usbLimit(ArvDevice* device, uint64_t total) {
    if (!ARV_IS_UV_DEVICE(device)) return {};
    const uint64_t limit = numberIn("/sys/module/usbcore/parameters/usbfs_memory_mb");
    const uint64_t needed = (total >> 20) + 1;
    if (limit == 0 || needed <= limit) return {};
    return "; the buffers need " + std::to_string(needed) + " MiB, usbcore.usbfs_memory_mb allows all USB cameras " +
           std::to_string(limit);
  }

  static void callBack(void* self, ArvStreamCallbackType type, ArvBuffer*) {
    if (type == ARV_STREAM_CALLBACK_TYPE_BUFFER_DONE) static_cast<AravisStream*>(self)->collect();
  }

  // On the receive thread. No buffer is done before one was queued, which is after the stream is known.
  void collect() {
    ArvStream* const stream = stream_;
    if (ends_) return;
    while (ArvBuffer* const buffer = arv_stream_try_pop_buffer(stream)) {
      describe(buffer);
      g_object_unref(buffer);
      if (arv_buffer_get_status(buffer) != ARV_BUFFER_STATUS_ABORTED) sink_.arrived(frame_);
    }
  }

  void describe(ArvBuffer* buffer) {
    size_t size = 0;
    const auto* const data = static_cast<const uint8_t*>(arv_buffer_get_data(buffer, &size));
    frame_.buffer = reinterpret_cast<size_t>(arv_buffer_get_user_data(buffer));
    const ArvBufferStatus status = arv_buffer_get_status(buffer);
    frame_.state = status == ARV_BUFFER_STATUS_SUCCESS         ? FrameState::complete
                   : status == ARV_BUFFER_STATUS_SIZE_MISMATCH ? FrameState::tooSmall
                                                               : FrameState::incomplete;
    frame_.received = size;
    frame_.needed = status == ARV_BUFFER_STATUS_SUCCESS ? size : 0;
    frame_.id = arv_buffer_get_frame_id(buffer);
    frame_.timeKnown = timeKnown_;
    frame_.time = arv_buffer_get_timestamp(buffer);
    frame_.firstData = static_cast<int64_t>(arv_buffer_get_system_timestamp(buffer));
    frame_.payload = payloadOf(arv_buffer_get_payload_type(buffer));
    frame_.hasChunks = arv_buffer_has_chunks(buffer) != FALSE;
    frame_.parts.clear();
    // An incomplete frame need not have its leader, and then no geometry.
    if (size == 0) return;
    const guint count = arv_buffer_get_n_parts(buffer);
    for (guint i = 0; i < count; ++i) frame_.parts.push_back(partOf(buffer, i, data));
  }

  static Part partOf(ArvBuffer* buffer, guint i, const uint8_t* data) {
    Part part;
    size_t size = 0;
    const auto* const start = static_cast<const uint8_t*>(arv_buffer_get_part_data(buffer, i, &size));
    part.kind = partKindOf(arv_buffer_get_part_data_type(buffer, i));
    part.offset = start == nullptr || start < data ? 0 : static_cast<uint64_t>(start - data);
    part.size = start == nullptr ? 0 : size;
    part.purpose = arv_buffer_get_part_component_id(buffer, i);
    if (!hasPixels(part.kind)) return part;
    part.format = arv_buffer_get_part_pixel_format(buffer, i);
    gint x = 0, y = 0, width = 0, height = 0;
    arv_buffer_get_part_region(buffer, i, &x, &y, &width, &height);
    part.x = positive(x);
    part.y = positive(y);
    part.width = positive(width);
    part.height = positive(height);
    arv_buffer_get_part_padding(buffer, i, &x, &y);
    part.xPadding = positive(x);
    part.yPadding = positive(y);
    return part;
  }

  FrameSink& sink_;
  std::atomic<ArvStream*> stream_ = nullptr;
  std::atomic<bool> ends_ = false;
  std::vector<ArvBuffer*> buffers_;
  LinkFacts facts_;
  Frame frame_;  // of the receive thread
  bool timeKnown_ = false;
};

}  // namespace

std::unique_ptr<Stream> openAravisStream(ArvDevice* device, bool loopback, const StreamRequest& request,
                                         std::span<const BufferMemory> buffers, FrameSink& sink) {
  return std::make_unique<AravisStream>(device, loopback, request, buffers, sink);
}

}  // namespace ox::camera::aravis

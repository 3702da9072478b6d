// How images come from a transport: it fills the buffers that it was given, and says what is in each. Buffers belong to
// libOxCamera or to its caller; nothing is copied on the way, and nothing is allocated for a frame.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace ox::camera {

enum class PacketSize { keep, automatic, number };

// How packets get from the network card to the receiver.
enum class Receive {
  automatic,  // the transport takes the fastest that works on this interface with this program's rights
  standard,   // a socket of the system
  packet,     // a packet socket, past the system's protocol layers: needs a right, receives nothing on the loopback
};

struct StreamRequest {
  uint64_t payload = 0;  // bytes of a frame, as the camera says
  PacketSize packetSize = PacketSize::keep;
  uint32_t packetBytes = 0;  // for PacketSize::number
  Receive receive = Receive::automatic;
  uint64_t socketBytes = 0;   // receive buffer in the kernel; 0: one frame
  double resendShare = 0.25;  // of a frame's packets, at most so many are asked for again; 0: none
};

struct BufferMemory {
  void* data = nullptr;
  size_t size = 0;
};

enum class Payload : uint32_t { unknown, image, chunks, multiPart, raw, file, jpeg, jpeg2000, h264, none };

enum class PartKind : uint32_t { unknown, image, plane, depth, confidence, chunks, compressed, other };

// Where one part lies in its buffer, and its geometry if it has one.
struct Part {
  PartKind kind = PartKind::unknown;
  uint64_t offset = 0;                           // bytes
  uint64_t size = 0;                             // bytes
  uint32_t format = 0;                           // PFNC number
  uint32_t width = 0, height = 0, x = 0, y = 0;  // pixels
  uint32_t xPadding = 0, yPadding = 0;           // bytes after each row, and after the last one
  uint64_t purpose = 0;                          // number that the camera gives the part's component
};

enum class FrameState : uint32_t { complete, incomplete, tooSmall };

struct Frame {
  size_t buffer = 0;  // its place in the list of buffers
  FrameState state = FrameState::complete;
  uint64_t received = 0;  // bytes in the buffer
  uint64_t needed = 0;    // bytes of the whole frame, 0: not known
  uint64_t id = 0;        // as it came
  bool timeKnown = false;
  uint64_t time = 0;      // of the camera, ns
  int64_t firstData = 0;  // time of the system when data came first, ns since 1970; 0: not known
  Payload payload = Payload::image;
  bool hasChunks = false;
  std::vector<Part> parts;  // kept by the transport between frames
};

// Receives the frames of a stream. The transport calls it on its receive thread, so it must return at once and must not
// call code of the application.
class FrameSink {
 public:
  virtual void arrived(const Frame& frame) noexcept = 0;

 protected:
  ~FrameSink() = default;
};

// Since the stream was opened. Empty: this transport does not know.
struct LinkFacts {
  std::optional<uint64_t> noBuffer;  // frames that came while no buffer was queued
  std::optional<uint64_t> packets, missing, resendsAsked, resent, duplicates, ignored;
  uint32_t packetAsked = 0, packetSet = 0;  // bytes of a packet; 0 if not known, or if the transport has no packets
  Receive receive = Receive::automatic;     // in use; automatic: does not apply
  uint64_t socketAsked = 0, socketGranted = 0;
  std::string advice;  // one sentence, empty when all is well
};

class Stream {
 public:
  Stream() = default;
  Stream(const Stream&) = delete;
  Stream& operator=(const Stream&) = delete;
  // The sink is not called and no buffer is touched afterwards. Ends within a second, also when the camera is gone.
  virtual ~Stream() = default;

  // Gives a buffer to the receiver. From any thread, also from inside the sink.
  virtual void queue(size_t buffer) noexcept = 0;

  virtual LinkFacts facts() = 0;
};

}  // namespace ox::camera

// What stands between libOxCamera and a way to reach cameras. A transport is a module of its own, loaded when cameras
// are first looked for, so that nobody depends on what a transport stands on. It moves bytes and tells facts; what
// features, names, loss and reopening mean is decided above it. Everything that foreign code or a device says (sizes,
// counts, texts) is checked here, before it goes up.
//
// Threads: a Transport is used from several threads at once. A Device gets one read or write at a time; ping() and
// abandon() come from other threads beside them. A Device ends when no thread is inside it.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include "OxCameraTransport/Stream.h"

namespace ox::camera {

using Milliseconds = std::chrono::milliseconds;

// Why something at a camera failed.
enum class Reason {
  failed,          // none of the others
  notFound,        // nothing of that name or address answers
  busy,            // another program, or this one, has control
  noPermission,    // the system forbids it
  unreachable,     // it answers, but not at an address that this machine can use
  timedOut,        // no answer to a read or a request
  outcomeUnknown,  // no answer to a write: it may have happened
  lost,            // the camera or the control over it is gone
  refused,         // the camera answered no
  readOnly,        // opened without control
  notSupported,
};

// One line that says what was tried and what went wrong.
class __attribute__((visibility("default"))) TransportError : public std::runtime_error {
 public:
  TransportError(Reason reason, const std::string& text) : std::runtime_error(text), reason_(reason) {}
  Reason reason() const noexcept { return reason_; }

 private:
  Reason reason_;
};

enum class Reach { unknown, free, busy, wrongSubnet, noPermission };

// A camera as it was found, on one way. Texts are bytes as the device gave them, cut at the first zero; empty where it
// says nothing.
struct CameraFacts {
  std::string place;     // names it in open(): unique on its transport for as long as it stays where it is
  std::string identity;  // what no other camera should have (MAC address, GUID): the same on every way to it
  std::string vendor;
  std::string model;
  std::string serial;
  std::string userName;
  std::string version;
  std::string address;           // network address or bus position
  std::string interface;         // "eth0", "usb3"
  std::string interfaceAddress;  // "192.168.0.2/24"
  std::string protocol;          // "GigEVision", "USB3Vision", "Simulated"
  uint64_t linkSpeed = 0;        // bits per second, 0: not known
  Reach reach = Reach::unknown;
  std::string obstacle;  // one sentence: why it cannot be opened, and what mends that
};

// What a search has tried.
struct Note {
  enum class Kind { module, moduleFailed, interface, interfaceFailed, answer, advice };
  Kind kind;
  std::string text;  // one sentence that names its subject first
};

struct Search {
  Milliseconds time{1000};   // how long answers are collected
  std::string address = {};  // not empty: ask only there, directly
  std::function<bool(const CameraFacts&)> wanted =
      {};  // set: the search may end soon after a camera for which it holds
};

struct Findings {
  std::vector<CameraFacts> cameras;
  std::vector<Note> notes;
};

// IPv4 as text: "192.168.0.20", "255.255.255.0", "0.0.0.0" for none.
struct NetworkAddress {
  std::string address;
  std::string mask;
  std::string gateway;
};

// How a camera gets its address: bits of a set.
enum AddressMode : uint32_t { kStoredAddress = 1, kDhcp = 2, kLinkLocal = 4 };

struct NetworkConfiguration {
  NetworkAddress current;
  NetworkAddress stored;
  uint32_t modes = 0;      // tried at power on, of AddressMode
  uint32_t supported = 0;  // those that the camera has
};

// Where a description comes from: its URL in the notation of the standard, and its bytes where the transport has them
// already. Without bytes they are read through the device's registers, or from the file that the URL names.
struct DescriptionSource {
  std::string url;
  std::optional<std::string> bytes = std::nullopt;
};

// Registers and the description that explains them: of the camera, or of a module between it and the program.
class Port {
 public:
  Port() = default;
  Port(const Port&) = delete;
  Port& operator=(const Port&) = delete;
  virtual ~Port() = default;

  // Move `length` bytes, all or none as far as the protocol can tell, and end in bounded time. Throw TransportError. A
  // write is sent once; without an answer it fails as outcomeUnknown.
  virtual void read(void* buffer, uint64_t address, size_t length) = 0;
  virtual void write(const void* buffer, uint64_t address, size_t length) = 0;

  // The best source first. Throws TransportError.
  virtual std::vector<DescriptionSource> descriptions() = 0;
};

// A message that the camera sent by itself.
struct EventMessage {
  std::string id;  // hexadecimal digits, as descriptions write it
  std::vector<uint8_t> payload;
};

// An open camera. Abilities that not every camera has are virtual functions with a default; new ones come at the end
// and raise kTransportVersion.
class Device : public Port {
 public:
  // Keeps the connection alive and finds out whether it is: asked several times in a heartbeat time, also while a read
  // or write runs. Throws TransportError: lost ends the connection, anything else is an answer that did not come.
  virtual void ping() = 0;

  // A running read or write is to fail soon, as well as this device can do that.
  virtual void abandon() noexcept {}

  // Whether a word of four bytes can be moved in two ways: as memory, and as a register with a number in it. Old
  // cameras mean the second, and some have the bytes in another order for the first.
  virtual bool hasRegisterAccess() const { return false; }
  // Chooses how read() and write() move words of four bytes; memory at first.
  virtual void useRegisterAccess(bool) {}

  // Throw TransportError. The stored address is written, switched on, and read back.
  virtual NetworkConfiguration network();
  virtual void storeAddress(const NetworkAddress& address);

  // Makes the receiver ready: frames that the camera sends from now on go into the buffers that were queued. One stream
  // at a time; it ends before its device. The sink and the memory outlive it. Throws TransportError.
  virtual std::unique_ptr<Stream> openStream(const StreamRequest& request, std::span<const BufferMemory> buffers,
                                             FrameSink& sink);

  // Bytes of a frame where the transport decides that; 0: the camera's feature PayloadSize does. Throws TransportError.
  virtual uint64_t payloadSize() { return 0; }

  // Takes the oldest event message, or waits for one, up to `time`; false: none came. Beside reads and writes, one
  // thread at a time. Throws TransportError.
  virtual bool nextEvent(EventMessage& event, Milliseconds time);
};

struct OpenRequest {
  std::string place;
  bool control = true;                               // false: registers are only read, nobody is kept out
  Milliseconds answerTime{2000};                     // of one request
  std::function<void(const std::string&)> onLost{};  // may be called from any thread, once; must not throw
};

class Transport {
 public:
  Transport() = default;
  Transport(const Transport&) = delete;
  Transport& operator=(const Transport&) = delete;
  virtual ~Transport() = default;

  // One word, lower case: the prefix that chooses this transport.
  virtual std::string name() const = 0;

  // Whether a name is an address that this transport can ask without a search.
  virtual bool isAddress(const std::string& name) const = 0;

  // Looks for cameras. What goes wrong on the way is a note; never throws for one interface or answer.
  virtual Findings search(const Search& search) = 0;

  // Throws TransportError.
  virtual std::unique_ptr<Device> open(const OpenRequest& request) = 0;

  // An address that nobody on the camera's interface uses; giving a camera an address for now, whatever it has. Throw
  // TransportError.
  virtual NetworkAddress proposeAddress(const CameraFacts& camera);
  virtual void forceAddress(const CameraFacts& camera, const NetworkAddress& address);
};

inline NetworkConfiguration Device::network() {
  throw TransportError(Reason::notSupported, "This camera has no network address");
}
inline void Device::storeAddress(const NetworkAddress&) {
  throw TransportError(Reason::notSupported, "This camera has no network address");
}
inline std::unique_ptr<Stream> Device::openStream(const StreamRequest&, std::span<const BufferMemory>, FrameSink&) {
  throw TransportError(Reason::notSupported, "This camera sends no images on this way");
}
inline bool Device::nextEvent(EventMessage&, Milliseconds) {
  throw TransportError(Reason::notSupported, "This way to the camera carries no event messages");
}
inline NetworkAddress Transport::proposeAddress(const CameraFacts&) {
  throw TransportError(Reason::notSupported, "This camera has no network address");
}
inline void Transport::forceAddress(const CameraFacts&, const NetworkAddress&) {
  throw TransportError(Reason::notSupported, "This camera has no network address");
}

// The one symbol a module exports, under the name kTransportEntry. `version` is kTransportVersion of the library; a
// module of another version answers null. A transport lives as long as the process.
inline constexpr int kTransportVersion = 4;
inline constexpr const char* kTransportEntry = "oxCameraTransport";
using OpenTransport = Transport* (*)(int version);

}  // namespace ox::camera

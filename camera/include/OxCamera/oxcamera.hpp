/// @file
/// Cameras as C++ objects (C++17, header-only), on the objects of oxgenapi.hpp.
///
///     auto camera = oxgenapi::Camera::open("GV01");
///     camera["ExposureTime"].set(20000);
///
///     for (const oxgenapi::FoundCamera& found : oxgenapi::findCameras()) std::cout << found.id << '\n';
///
/// What fails throws oxgenapi::Error with a code of OxCamera/CameraTypes.h or of OxGenApi/Types.h. Copies of a Camera
/// stand for the same open camera; the last one closes it.
#ifndef OXCAMERA_OXCAMERA_HPP
#define OXCAMERA_OXCAMERA_HPP

#include <OxGenApi/oxgenapi.hpp>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "OxCamera/OxCamera.h"
#include "OxCamera/cpp/Image.hpp"

namespace oxgenapi {

/// A camera as a search found it; see TCameraInfo for what each field is.
struct FoundCamera {
  std::string id, vendor, model, serial, userName, version, address, interface, interfaceAddress, protocol, transport;
  std::string ways, identity, obstacle;
  TCameraReach reach = CR_Unknown;
  int64_t linkSpeed = 0;  ///< bits per second
};

/// One thing that a search has tried.
struct CameraNote {
  TCameraNote kind;
  std::string text;
};

/// What one search has found.
class CameraList {
 public:
  explicit CameraList(std::chrono::milliseconds time = std::chrono::milliseconds(0)) {
    OXCAMERALIST raw = nullptr;
    check(OxCameraFind(static_cast<uint32_t>(time.count()), raw));
    handle_ = Handle<OXCAMERALIST>::adopt(raw);
  }
  OXCAMERALIST handle() const noexcept { return handle_.get(); }

  std::vector<FoundCamera> cameras() const {
    size_t count = 0;
    check(OxCameraListCount(handle(), count));
    std::vector<FoundCamera> all(count);
    for (size_t i = 0; i < count; ++i) {
      FoundCamera& camera = all[i];
      std::string* const texts[] = {
          &camera.id,        &camera.vendor,  &camera.model,     &camera.serial,           &camera.userName,
          &camera.version,   &camera.address, &camera.interface, &camera.interfaceAddress, &camera.protocol,
          &camera.transport, &camera.ways,    &camera.identity,  &camera.obstacle};
      uint32_t info = CI_Id;
      for (std::string* text : texts) {
        check(detail::readText(*text, [&](char* to, size_t& size) {
          return OxCameraListText(handle(), i, static_cast<TCameraInfo>(info), to, size);
        }));
        ++info;
      }
      int64_t reach = 0;
      check(OxCameraListNumber(handle(), i, CI_Reach, reach));
      camera.reach = static_cast<TCameraReach>(reach);
      check(OxCameraListNumber(handle(), i, CI_LinkSpeed, camera.linkSpeed));
    }
    return all;
  }

  std::vector<CameraNote> notes() const {
    size_t count = 0;
    check(OxCameraNoteCount(handle(), count));
    std::vector<CameraNote> all(count);
    for (size_t i = 0; i < count; ++i) {
      check(detail::readText(all[i].text,
                             [&](char* to, size_t& size) { return OxCameraNote(handle(), i, all[i].kind, to, size); }));
    }
    return all;
  }

  /// By the camera's position in cameras().
  TNetworkAddress proposeAddress(size_t index) const {
    TNetworkAddress address{};
    check(OxCameraProposeAddress(handle(), index, address));
    return address;
  }
  void forceAddress(size_t index, const TNetworkAddress& address) const {
    check(OxCameraForceAddress(handle(), index, &address));
  }

 private:
  Handle<OXCAMERALIST> handle_;
};

/// The cameras of all transports.
inline std::vector<FoundCamera> findCameras(std::chrono::milliseconds time = std::chrono::milliseconds(0)) {
  return CameraList(time).cameras();
}

/// How to open a camera; a zero stands for the default of TCameraOptions.
struct CameraOptions {
  TCameraAccess access = OX_CONTROL;
  std::chrono::milliseconds search{0}, answer{0}, retry{0}, heartbeat{0};
  TByteOrder byteOrder = BO_Automatic;
  std::string description = {};  ///< file in place of the camera's own description
  std::string registers = {};    ///< file with a register image in place of a camera
};

/// An event message, as the camera sent it.
struct CameraEvent {
  std::string id;  ///< hexadecimal digits, as descriptions write it
  std::vector<uint8_t> payload;
};

/// How a stream starts; a zero stands for the default of TStreamOptions.
struct StreamOptions {
  size_t buffers = 0;
  std::vector<TFrameMemory> memory = {};  ///< in place of buffers of the library; outlives the stream
  bool latestOnly = false;                ///< only the newest image waits
  TPacketSize packetSize = PS_Keep;
  uint32_t packetBytes = 0;  ///< for PS_Number
  TReceiveMethod receive = RM_Automatic;
  uint64_t socketBytes = 0;
  uint32_t resendPercent = 0;
};

/// An open camera.
class Camera {
 public:
  /// An empty name: the only camera there is. See OxCameraOpen for what else a name may be.
  static Camera open(const std::string& name = {}, const CameraOptions& options = {}) {
    TCameraOptions flat{};
    flat.StructSize = sizeof flat;
    flat.Access = options.access;
    flat.SearchMs = static_cast<uint32_t>(options.search.count());
    flat.AnswerMs = static_cast<uint32_t>(options.answer.count());
    flat.RetryMs = static_cast<uint32_t>(options.retry.count());
    flat.HeartbeatMs = static_cast<uint32_t>(options.heartbeat.count());
    flat.ByteOrder = options.byteOrder;
    flat.Description = options.description.empty() ? nullptr : options.description.c_str();
    flat.Registers = options.registers.empty() ? nullptr : options.registers.c_str();
    OXCAMERA raw = nullptr;
    check(OxCameraOpenEx(name.c_str(), &flat, raw), name);
    return Camera(Handle<OXCAMERA>::adopt(raw));
  }

  static Camera open(const std::string& name, TCameraAccess access) {
    CameraOptions options;
    options.access = access;
    return open(name, options);
  }

  OXCAMERA handle() const noexcept { return handle_.get(); }

  // ---- Features and registers ----

  /// The camera's features. Throws when its description cannot be used; everything else works without.
  NodeMap map() const {
    NODEMAP raw = nullptr;
    check(OxCameraNodeMap(handle(), raw));
    return NodeMap(Handle<NODEMAP>::adopt(raw));
  }
  /// Throws when there is none. Keep the map() and the nodes that you use often.
  Node operator[](const std::string& feature) const { return map().node(feature); }

  void read(void* buffer, uint64_t address, size_t length) const {
    check(OxCameraRead(handle(), buffer, address, length));
  }
  void write(const void* buffer, uint64_t address, size_t length) const {
    check(OxCameraWrite(handle(), buffer, address, length));
  }
  /// The bytes of the description, XML or zip, usable or not.
  std::string description() const {
    size_t size = 0;
    check(OxCameraDescription(handle(), nullptr, size));
    std::string bytes(size, '\0');
    check(OxCameraDescription(handle(), bytes.data(), size));
    return bytes;
  }
  std::string text(TCameraInfo item) const {
    std::string text;
    check(detail::readText(text, [&](char* to, size_t& size) { return OxCameraText(handle(), item, to, size); }));
    return text;
  }
  int64_t number(TCameraInfo item) const {
    int64_t value = 0;
    check(OxCameraNumber(handle(), item, value));
    return value;
  }
  /// Why the last failed access failed, with the camera's own code; features report it under theirs.
  Error lastFailure() const {
    uint32_t code = 0;
    std::string text;
    check(
        detail::readText(text, [&](char* to, size_t& size) { return OxCameraLastFailure(handle(), code, to, size); }));
    return Error(code, text);
  }

  // ---- Loss ----

  TCameraState state() const {
    TCameraState state = CS_Closed;
    check(OxCameraState(handle(), state));
    return state;
  }
  /// `callback` runs on a thread of the library, once for each loss; an empty one takes the former away.
  void onLoss(std::function<void(Camera, const std::string& reason)> callback) const {
    if (!callback) {
      check(OxCameraOnLoss(handle(), nullptr, nullptr, nullptr));
      return;
    }
    check(OxCameraOnLoss(handle(), callLost, new LossCallback(std::move(callback)), deleteCallback));
  }
  /// Whether the camera was lost within that time.
  bool waitForLoss(std::chrono::milliseconds time) const {
    const uint32_t code = OxCameraWaitForLoss(handle(), static_cast<uint32_t>(time.count()));
    if (code != OXGENAPI_OK && code != OXCAMERA_E_TIMEOUT) throw lastError(code);
    return code == OXGENAPI_OK;
  }
  /// Opens the same camera again; nodes and maps stay.
  void reopen(std::chrono::milliseconds retry = std::chrono::milliseconds(0)) const {
    check(OxCameraReopen(handle(), static_cast<uint32_t>(retry.count())));
  }
  void close() const { check(OxCameraClose(handle())); }

  // ---- Images ----

  void start(const StreamOptions& options = {}) const {
    TStreamOptions flat{};
    flat.StructSize = sizeof flat;
    flat.BufferCount = options.memory.empty() ? options.buffers : options.memory.size();
    flat.Buffers = options.memory.empty() ? nullptr : options.memory.data();
    flat.LatestOnly = options.latestOnly ? 1 : 0;
    flat.PacketSize = options.packetSize;
    flat.PacketBytes = options.packetBytes;
    flat.Receive = options.receive;
    flat.SocketBytes = options.socketBytes;
    flat.ResendPercent = options.resendPercent;
    check(OxCameraStartEx(handle(), &flat));
  }
  void stop() const { check(OxCameraStop(handle())); }
  /// The next image. A negative time: the default, which follows the exposure.
  Image next(std::chrono::milliseconds time = std::chrono::milliseconds(-1)) const {
    return image(OxCameraNextImage, time);
  }
  /// An image that came after this call; starts a stream if none runs and leaves it running.
  Image grab(std::chrono::milliseconds time = std::chrono::milliseconds(-1)) const {
    return image(OxCameraGrabImage, time);
  }
  /// Lets the camera send these chunks, by the entries of ChunkSelector; before start().
  void enableChunks(const std::vector<std::string>& names) const {
    std::vector<const char*> flat;
    flat.reserve(names.size());
    for (const std::string& name : names) flat.push_back(name.c_str());
    check(OxCameraEnableChunks(handle(), flat.data(), flat.size()));
  }
  /// Ends waits of other threads, or the next wait.
  void cancelWait() const { check(OxCameraCancelWait(handle())); }
  TStreamStatistics statistics() const {
    TStreamStatistics statistics{};
    statistics.StructSize = sizeof statistics;
    check(OxCameraStreamStatistics(handle(), &statistics));
    return statistics;
  }
  /// What hampers the stream, one sentence a line; empty when nothing is known.
  std::string advice() const {
    std::string text;
    check(detail::readText(text, [&](char* to, size_t& size) { return OxCameraStreamAdvice(handle(), to, size); }));
    return text;
  }

  // ---- Events ----

  /// Waits for the next event message and delivers it to map() on this thread; see OxCameraNextEvent. Empty: none came.
  std::optional<CameraEvent> nextEvent(std::chrono::milliseconds time) const {
    TCameraEvent event{};
    event.StructSize = sizeof event;
    const uint32_t code =
        OxCameraNextEvent(handle(), static_cast<uint32_t>(std::max<int64_t>(time.count(), 0)), &event);
    if (code == OXCAMERA_E_TIMEOUT) return std::nullopt;
    check(code);
    const auto* const data = static_cast<const uint8_t*>(event.Data);
    return CameraEvent{event.EventID, {data, data + event.Size}};
  }

  // ---- Network ----

  TNetworkConfiguration network() const {
    TNetworkConfiguration configuration{};
    check(OxCameraNetwork(handle(), configuration));
    return configuration;
  }
  void storeAddress(const TNetworkAddress& address) const { check(OxCameraStoreAddress(handle(), &address)); }

 private:
  using LossCallback = std::function<void(Camera, const std::string&)>;

  Image image(uint32_t (*wait)(OXCAMERA, uint32_t, TImage*), std::chrono::milliseconds time) const {
    TImage record;
    check(wait(handle(), time.count() < 0 ? OX_WAIT_DEFAULT : static_cast<uint32_t>(time.count()), &record));
    return Image(handle_, record);
  }

  explicit Camera(Handle<OXCAMERA> handle) noexcept : handle_(std::move(handle)) {}

  static void callLost(OXCAMERA camera, const char* reason, void* callback) {
    try {
      (*static_cast<LossCallback*>(callback))(Camera(Handle<OXCAMERA>::share(camera)), reason);
    } catch (...) {  // nobody is left to hear of it
    }
  }
  static void deleteCallback(void* callback) { delete static_cast<LossCallback*>(callback); }

  Handle<OXCAMERA> handle_;
};

}  // namespace oxgenapi

#endif

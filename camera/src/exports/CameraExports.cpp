#include <OxCamera/Camera.h>

#include "ExportFrame.h"
#include "NetworkAddressText.h"

using namespace ox::camera;

namespace {

uint32_t open(const char* name, const TCameraOptions* options, OXCAMERA& camera) {
  camera = nullptr;
  return guarded([&] {
    auto session = Session::open(name == nullptr ? "" : name, readOptions(options));
    auto object = orxBase::detail::make_shared_t<CameraObject>(std::move(session));
    camera = static_cast<OXCAMERA>(static_cast<void*>(object.release()));
  });
}

void checkBuffer(const void* buffer, size_t length) {
  if (buffer == nullptr && length > 0) throw CameraError(OXGENAPI_E_INVALID_ARGUMENT, "There is no buffer");
}

template <class Access>
int onPort(void* camera, const void* buffer, int64_t length, Access access) noexcept {
  return answerPort([&] {
    if (length < 0) throw CameraError(OXGENAPI_E_INVALID_ARGUMENT, "The length of an access is negative");
    checkBuffer(buffer, static_cast<size_t>(length));
    const auto object = resolve<CameraObject>(camera);
    if (!object) throw CameraError(OXCAMERA_E_CLOSED, "The camera is closed");
    object->session->prepareFeatures();
    access(*object->session);
  });
}

}  // namespace

uint32_t OxCameraOpen(const char* Name, TCameraAccess Access, OXCAMERA& Camera) {
  TCameraOptions options{};
  options.StructSize = sizeof options;
  options.Access = Access;
  return open(Name, &options, Camera);
}

uint32_t OxCameraOpenEx(const char* Name, const TCameraOptions* Options, OXCAMERA& Camera) {
  return open(Name, Options, Camera);
}

bool IsCamera(OXCAMERA Object) { return static_cast<bool>(resolve<CameraObject>(Object)); }

uint32_t OxCameraClose(OXCAMERA Camera) {
  return onCamera(Camera, [](Session& session) { session.close(); });
}

uint32_t OxCameraText(OXCAMERA Camera, TCameraInfo Info, char* Text, size_t& TextSize) {
  return onCamera(Camera, [&](Session& session) { giveText(session.camera().text(Info), Text, TextSize); });
}

uint32_t OxCameraNumber(OXCAMERA Camera, TCameraInfo Info, int64_t& Value) {
  return onCamera(Camera, [&](Session& session) { Value = session.camera().number(Info); });
}

uint32_t OxCameraNodeMap(OXCAMERA Camera, NODEMAP& NodeMap) {
  NodeMap = nullptr;
  return onCamera(Camera, [&](Session& session) { NodeMap = session.nodeMap(); });
}

uint32_t OxCameraDescription(OXCAMERA Camera, void* Buffer, size_t& Size) {
  return onCamera(Camera, [&](Session& session) {
    const std::string bytes = session.description();
    if (Buffer != nullptr) std::memcpy(Buffer, bytes.data(), std::min(Size, bytes.size()));
    Size = bytes.size();
  });
}

uint32_t OxCameraRead(OXCAMERA Camera, void* Buffer, uint64_t Address, size_t Length) {
  return onCamera(Camera, [&](Session& session) {
    checkBuffer(Buffer, Length);
    session.read(Buffer, Address, Length);
  });
}

uint32_t OxCameraWrite(OXCAMERA Camera, const void* Buffer, uint64_t Address, size_t Length) {
  return onCamera(Camera, [&](Session& session) {
    checkBuffer(Buffer, Length);
    session.write(Buffer, Address, Length);
  });
}

int OxCameraPortRead(void* pBuffer, int64_t Address, int64_t Length, void* pUserData) {
  return onPort(pUserData, pBuffer, Length, [&](Session& session) {
    session.readFeature(pBuffer, static_cast<uint64_t>(Address), static_cast<size_t>(Length));
  });
}

int OxCameraPortWrite(const void* pBuffer, int64_t Address, int64_t Length, void* pUserData) {
  return onPort(pUserData, pBuffer, Length, [&](Session& session) {
    session.writeFeature(pBuffer, static_cast<uint64_t>(Address), static_cast<size_t>(Length));
  });
}

TAccessMode OxCameraPortAccess(void* pUserData) {
  const auto object = resolve<CameraObject>(pUserData);
  return object ? object->session->featureAccess() : AM_NotAvailable;
}

uint32_t OxCameraLastFailure(OXCAMERA Camera, uint32_t& Code, char* Text, size_t& TextSize) {
  return onCamera(Camera, [&](Session& session) {
    const Session::Failure failure = session.lastFailure();
    Code = failure.code;
    giveText(failure.text, Text, TextSize);
  });
}

uint32_t OxCameraState(OXCAMERA Camera, TCameraState& State) {
  return onCamera(Camera, [&](Session& session) { State = session.state(); });
}

uint32_t OxCameraOnLoss(OXCAMERA Camera, TCameraLoss Callback, void* pUserData, TReleaseNotify Release) {
  return guarded([&] {
    // Goes with the last copy of the callback, or now if there is to be none.
    const std::shared_ptr<void> user(pUserData, [Release](void* data) {
      if (Release != nullptr) Release(data);
    });
    const auto object = resolve<CameraObject>(Camera);
    if (!object) throw CameraError(OXGENAPI_E_INVALID_HANDLE, CameraObject::kInvalid);
    if (Callback == nullptr) {
      object->session->onLoss({});
      return;
    }
    object->session->onLoss([weak = object->weak_from_this(), Callback, user](const std::string& reason) {
      if (const auto camera = weak.lock())
        Callback(static_cast<OXCAMERA>(static_cast<void*>(camera.container())), reason.c_str(), user.get());
    });
  });
}

uint32_t OxCameraWaitForLoss(OXCAMERA Camera, uint32_t TimeMs) {
  return onCamera(Camera, [&](Session& session) { session.waitForLoss(Milliseconds{TimeMs}); });
}

uint32_t OxCameraReopen(OXCAMERA Camera, uint32_t RetryMs) {
  return onCamera(Camera, [&](Session& session) { session.reopen(Milliseconds{RetryMs}); });
}

uint32_t OxCameraNetwork(OXCAMERA Camera, TNetworkConfiguration& Configuration) {
  return onCamera(Camera, [&](Session& session) {
    session.use([&](Device& device) { Configuration = recordOf(device.network()); });
  });
}

uint32_t OxCameraStoreAddress(OXCAMERA Camera, const TNetworkAddress* Address) {
  return onCamera(Camera, [&](Session& session) {
    const NetworkAddress address = checkedAddress(Address);
    session.requireControl();
    session.use([&](Device& device) { device.storeAddress(address); });
  });
}

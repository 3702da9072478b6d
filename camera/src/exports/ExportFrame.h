// What every export does around its one call: resolve the handle, hold the object, turn what is thrown into a code.
#pragma once

#include <OxBase/OxBase.h>
#include <OxBase/SharedRef.h>
#include <OxCamera/CameraTypes.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>

#include "CameraList.h"
#include "Failure.h"
#include "Session.h"

namespace ox::camera {

// The objects behind the handles.
struct CameraObject : orxBase::enable_shared_from_this<CameraObject> {
  explicit CameraObject(std::shared_ptr<Session> opened) : session(std::move(opened)) {}
  ~CameraObject() override { session->close(); }
  static uint64_t interfaceId() {
    static const uint64_t id = OxRegisterInterface("OxCamera");
    return id;
  }
  static constexpr const char* kInvalid = "Invalid OXCAMERA handle";
  const std::shared_ptr<Session> session;
};

struct ListObject : orxBase::enable_shared_from_this<ListObject> {
  explicit ListObject(CameraList found) : list(std::move(found)) {}
  static uint64_t interfaceId() {
    static const uint64_t id = OxRegisterInterface("OxCameraList");
    return id;
  }
  static constexpr const char* kInvalid = "Invalid OXCAMERALIST handle";
  const CameraList list;
};

// The live object behind a handle, empty when it is none of this kind.
template <class Object>
orxBase::shared_ref<Object> resolve(const void* handle) noexcept {
  auto* const container = static_cast<OxHandle>(const_cast<void*>(handle));
  if (container == nullptr || OxIfaceContainerCheckedAddUseCounter(container) < 0) return {};
  auto reference = orxBase::shared_ref<Object>::adopt(container, nullptr);
  void* found = nullptr;
  if (OxIfaceContainerQuery(container, Object::interfaceId(), &found) < 0 || found == nullptr) return {};
  reference.release();
  return orxBase::shared_ref<Object>::adopt(container, static_cast<Object*>(found));
}

template <class Work>
uint32_t guarded(Work&& work) noexcept {
  try {
    work();
    return OXGENAPI_OK;
  } catch (...) {
    return failWithCurrentException();
  }
}

// Calls with the object behind the handle, or refuses the handle.
template <class Object, class Call>
uint32_t on(const void* handle, Call&& call) noexcept {
  return guarded([&] {
    const auto object = resolve<Object>(handle);
    if (!object) throw CameraError(OXGENAPI_E_INVALID_HANDLE, Object::kInvalid);
    call(*object);
  });
}

template <class Call>
uint32_t onCamera(OXCAMERA handle, Call&& call) noexcept {
  return on<CameraObject>(handle, [&](CameraObject& object) { call(*object.session); });
}

template <class Call>
uint32_t onList(OXCAMERALIST handle, Call&& call) noexcept {
  return on<ListObject>(handle, [&](ListObject& object) { call(object.list); });
}

// Text into a caller's buffer.
inline void giveText(const std::string& text, char* buffer, size_t& size) noexcept {
  if (buffer == nullptr) {
    size = text.size() + 1;
  } else if (size > 0) {
    const size_t length = std::min(size - 1, text.size());
    std::memcpy(buffer, text.data(), length);
    buffer[length] = '\0';
  }
}

}  // namespace ox::camera

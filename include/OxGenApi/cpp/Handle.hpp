/// @file
/// Owning a handle of the flat interface.
#ifndef OXGENAPI_CPP_HANDLE_HPP
#define OXGENAPI_CPP_HANDLE_HPP

#include <OxBase/OxBase.h>

#include <utility>

namespace oxgenapi {

/// One reference to the object behind a handle: NODEMAP, NODE, NODEMAPSTREAM or FWUPDATER. Null owns nothing.
template <class Raw>
class Handle {
 public:
  Handle() = default;
  /// Takes over the reference that a flat call has handed out.
  static Handle adopt(Raw raw) noexcept { return Handle(raw); }
  /// Adds a reference to a handle that someone else owns; null when it is not alive.
  static Handle share(Raw raw) noexcept {
    return Handle(OxIfaceContainerCheckedAddUseCounter(raw) < 0 ? nullptr : raw);
  }
  Handle(const Handle& other) noexcept : raw_(other.raw_) {
    if (raw_ != nullptr) OxIfaceContainerAddUseCounter(raw_);
  }
  Handle(Handle&& other) noexcept : raw_(std::exchange(other.raw_, nullptr)) {}
  Handle& operator=(Handle other) noexcept {
    std::swap(raw_, other.raw_);
    return *this;
  }
  ~Handle() {
    if (raw_ != nullptr) OxIfaceContainerReleaseUseCounter(raw_);
  }

  Raw get() const noexcept { return raw_; }
  explicit operator bool() const noexcept { return raw_ != nullptr; }

 private:
  explicit Handle(Raw raw) noexcept : raw_(raw) {}
  Raw raw_ = nullptr;
};

}  // namespace oxgenapi

#endif

// What every export does around its one call: resolve the handle, hold the object, report what is invalid.
//
//   uint32_t NInvalidate(NODE Node) {
//     return onNode(Node, args("Node", Node), [&](ORX::INode& node) { return node.Invalidate(); });
//   }
//
// The reference taken on the handle is kept until the export returns, so a release on another thread during a call is
// safe. Should giving it back end the object, what its destructor runs does not change the last error of the call.
#pragma once
#include <cstdint>

#include "CallTelemetry.h"
#include "Failure.h"
#include "HandleKind.h"
#include "OxBase/OxBase.h"

namespace orxGenApi {

// An operation that is an export itself; its record shows the arguments.
class ExportOperation {
 public:
  ExportOperation(std::span<const Argument> arguments, const FailureRules& rules) noexcept
      : arguments_(arguments), operation_{rules, "", this, &append} {}
  ExportOperation(const ExportOperation&) = delete;
  ExportOperation& operator=(const ExportOperation&) = delete;
  operator const Operation&() const noexcept { return operation_; }

 private:
  static void append(std::string& text, const void* self) {
    appendArguments(text, static_cast<const ExportOperation*>(self)->arguments_);
  }
  std::span<const Argument> arguments_;
  Operation operation_;
};

// Refuses a call for a reason that the export finds itself.
template <class... NamesAndValues>
[[gnu::noinline, gnu::cold]] uint32_t refuse(const Arguments<NamesAndValues...>& arguments, uint32_t code,
                                             const char* text) noexcept {
  const auto list = arguments.list();
  return fail(ExportOperation(list, kDelivering), code, text);
}

// Runs the work of an export that has no object to call.
template <class Work, class... NamesAndValues>
uint32_t guardedExport(const Arguments<NamesAndValues...>& arguments, const FailureRules& rules, Work&& work) noexcept {
  try {
    return work();
  } catch (...) {
    const auto list = arguments.list();
    return failWithCurrentException(ExportOperation(list, rules));
  }
}

// Gives back a use count and leaves the last error as it is.
void releaseKeepingLastError(OxHandle handle) noexcept;

// The object behind a handle, with a use count of its own; empty when the handle is none of this kind.
template <class Object>
class Held {
 public:
  explicit Held(OxHandle handle) noexcept : handle_(handle) {
    if (handle == nullptr || OxIfaceContainerCheckedAddUseCounter(handle) < 0) {
      handle_ = nullptr;
      return;
    }
    void* found = nullptr;
    if (OxIfaceContainerQuery(handle, HandleKind<Object>::id(), &found) >= 0 && found != nullptr)
      object_ = cast(static_cast<typename HandleKind<Object>::Interface*>(found));
  }
  ~Held() {
    if (handle_ == nullptr) return;
    if (keepsLastError_)
      releaseKeepingLastError(handle_);
    else
      OxIfaceContainerReleaseUseCounter(handle_);
  }
  Held(const Held&) = delete;
  Held& operator=(const Held&) = delete;

  explicit operator bool() const noexcept { return object_ != nullptr; }
  Object& operator*() const noexcept { return *object_; }

  // The call's result, on its way out.
  uint32_t finish(uint32_t result) noexcept {
    keepsLastError_ = result != OXGENAPI_OK;
    return result;
  }

 private:
  static Object* cast(Object* object) noexcept { return object; }
  template <class Interface>
  static Object* cast(Interface* interface) noexcept {
    return dynamic_cast<Object*>(interface);
  }
  OxHandle handle_;
  Object* object_ = nullptr;
  bool keepsLastError_ = false;
};

// Calls with the object behind the handle, or refuses the handle.
template <class Object, class Call, class... NamesAndValues>
uint32_t onObject(OxHandle handle, const Arguments<NamesAndValues...>& arguments, Call&& call) noexcept {
  Held<Object> object(handle);
  if (!object) [[unlikely]]
    return object.finish(refuse(arguments, OXGENAPI_E_INVALID_HANDLE, HandleKind<Object>::kInvalid));
  return object.finish(guardedExport(arguments, kDelivering, [&] { return call(*object); }));
}

// Whether a handle is live and of the kind.
template <class Object>
bool isHandleOf(OxHandle handle) noexcept {
  return static_cast<bool>(Held<Object>(handle));
}

}  // namespace orxGenApi

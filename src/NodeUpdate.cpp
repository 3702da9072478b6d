// Update callbacks, invalidation, verify mode.
#include <array>
#include <memory>
#include <utility>

#include "CallTelemetry.h"
#include "GenApi/NodeCallback.h"
#include "Node.h"

namespace orxGenApi {
namespace {

using GENAPI_NAMESPACE::AutoLock;
namespace telemetry = Telemetry::_OxGenApi;

constexpr std::array<const char*, 4> kVerifyModeNames = {"None", "Write-only", "Read-only", "Read/Write"};

void note(uint32_t level, const GENAPI_NAMESPACE::INode* node, const char* text, const char* detail = "") noexcept {
  telemetry::sendRecord(level, [&](telemetry::Log& record) {
    record.message = node == nullptr ? "<null>" : node->GetName(true).c_str();
    record.message.append(text).append(detail);
  });
}

}  // namespace

// What the engine calls. It names its Node weakly: a registration does not keep the Node alive, and a Node that is
// ending on another thread is not called for any more.
class Node::CallbackHelper {
 public:
  CallbackHelper(orxBase::weak_ref<Node> node, TNodeUpdate callback, void* userData) noexcept
      : node_(std::move(node)), callback_(callback), userData_(userData) {}

  void dispatch(GENAPI_NAMESPACE::INode* engineNode) const noexcept {
    const orxBase::shared_ref<Node> node = node_.lock();
    if (!node) return;
    note(OXT_LEVEL_DEBUG, engineNode, ": Node updated event");
    try {
      callback_(static_cast<NODE>(node.container()), userData_);
    } catch (...) {
      note(OXT_LEVEL_ERROR, engineNode, ": External callback's C++ exception discarded");
    }
  }

 private:
  orxBase::weak_ref<Node> node_;
  TNodeUpdate callback_;
  void* userData_;
};

// The callback object that the engine owns, with its helper.
class Node::UpdateCallback
    : private CallbackHelper,
      public GENAPI_NAMESPACE::Member_NodeCallback<const CallbackHelper,
                                                   void (CallbackHelper::*)(GENAPI_NAMESPACE::INode*) const noexcept> {
 public:
  UpdateCallback(GENAPI_NAMESPACE::INode* engineNode, CallbackHelper helper)
      : CallbackHelper(std::move(helper)),
        Member_NodeCallback(engineNode, *this, &CallbackHelper::dispatch, GENAPI_NAMESPACE::cbPostInsideLock) {}
};

uint32_t Node::RegisterUpdate(int32_t callbackType, TNodeUpdate callback, void* userData,
                              TCallbackHandle* handle) noexcept {
  return guarded(operation("::RegisterCallback", kReading), [&] {
    if (callbackType != 0) throw orx_error(OXGENAPI_E_NOT_SUPPORTED, "Unknown callback type");
    if (callback == nullptr) throw orx_error(OXGENAPI_E_INVALID_ARGUMENT, "Callback function pointer must be set");
    orxBase::weak_ref<Node> self = weak_from_this();
    if (self.expired()) throw orx_error(OXGENAPI_E_EXPIRED, "shared object expired");

    AutoLock lock(typed_.node->GetNodeMap()->GetLock());
    auto object = std::make_unique<UpdateCallback>(typed_.node, CallbackHelper(std::move(self), callback, userData));
    // The engine owns the callback from here on, also when it cannot register it.
    const TCallbackHandle registered = typed_.node->RegisterCallback(object.release());
    try {
      callbacks_.insert(registered);
    } catch (...) {
      typed_.node->DeregisterCallback(registered);
      throw;
    }
    *handle = registered;
  });
}

uint32_t Node::DeregisterUpdate(TCallbackHandle handle) noexcept {
  return guarded(operation("::DeregisterCallback", kReading), [&] {
    AutoLock lock(typed_.node->GetNodeMap()->GetLock());
    if (callbacks_.erase(handle) == 0) throw orx_error(OXGENAPI_E_NOT_PRESENT, "Given callback handle not present");
    typed_.node->DeregisterCallback(handle);
  });
}

void Node::deregisterAll() noexcept {
  // Nobody else can reach this Node any more; the engine's lock is taken by the engine.
  for (const TCallbackHandle handle : callbacks_) {
    try {
      typed_.node->DeregisterCallback(handle);
    } catch (...) {  // the helper finds no Node and does nothing
    }
  }
}

uint32_t Node::Invalidate() noexcept {
  return guarded(operation("::Invalidate", kInvalidating), [&] {
    GENAPI_NAMESPACE::NodeList_t invalidators;
    typed_.node->GetChildren(invalidators, GENAPI_NAMESPACE::ctInvalidatingChildren);
    for (GENAPI_NAMESPACE::INode* invalidator : invalidators) invalidator->InvalidateNode();
    typed_.node->InvalidateNode();
  });
}

uint32_t Node::GetVerifyMode(TVerifyMode* mode) noexcept {
  return guarded(operation("::GetVerifyMode", kReading), [&] {
    const AutoLock lock(typed_.node->GetNodeMap()->GetLock());
    *mode = verifyMode();
  });
}

uint32_t Node::SetVerifyMode(TVerifyMode mode) noexcept {
  return guarded(operation("::SetVerifyMode", kWriting), [&] {
    if (static_cast<uint32_t>(mode) >= kVerifyModeNames.size())
      throw orx_error(OXGENAPI_E_INVALID_ARGUMENT, "Unknown validation mode");
    {
      const AutoLock lock(typed_.node->GetNodeMap()->GetLock());
      verifyMode_.store(mode, std::memory_order_relaxed);
    }
    note(OXT_LEVEL_DEBUG, typed_.node, ": Set verify mode to ", kVerifyModeNames[mode]);
  });
}

}  // namespace orxGenApi

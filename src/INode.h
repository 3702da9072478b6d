// The abstract node behind a NODE handle.
#pragma once
#include <cstddef>
#include <cstdint>

#include "HandleKind.h"
#include "OxBase/IDisposableType.h"
#include "OxBase/OxBase.h"
#include "OxGenApi/Types.h"

namespace ORX {

// The order of these operations is fixed: components built elsewhere call them by their place. None throws; each
// returns 0, or a code that it has set as last error. Text is returned by the caller-buffer protocol.
class INode : public virtual IDisposableType {
 public:
  virtual ~INode() = default;
  virtual uint32_t GetType(TNodeType* type) = 0;

  virtual uint32_t GetInfoAsBoolean(TNodeInfo info, bool* value) = 0;
  virtual uint32_t GetInfoAsFloat(TNodeInfo info, double* value) = 0;
  virtual uint32_t GetInfoAsInteger(TNodeInfo info, int64_t* value) = 0;
  virtual uint32_t GetInfoAsString(TNodeInfo info, char* value, size_t& size) = 0;
  virtual uint32_t GetInfoAsStringW(TNodeInfo info, wchar_t* value, size_t& size) = 0;
  virtual uint32_t GetInfoEnum(TNodeInfo info, int64_t index, int64_t* integer, char* text, size_t& size) = 0;
  virtual uint32_t GetInfoEnumW(TNodeInfo info, int64_t index, int64_t* integer, wchar_t* text, size_t& size) = 0;

  virtual uint32_t GetListCount(TNodeList list, int64_t* count) = 0;
  virtual uint32_t GetList(TNodeList list, int64_t index, char* entry, size_t& size) = 0;
  virtual uint32_t GetListW(TNodeList list, int64_t index, wchar_t* entry, size_t& size) = 0;

  virtual uint32_t GetAsBoolean(bool verify, bool* value) = 0;
  virtual uint32_t GetAsFloat(bool verify, double* value) = 0;
  virtual uint32_t GetAsInteger(bool verify, int64_t* value) = 0;
  virtual uint32_t GetAsString(bool verify, char* value, size_t& size) = 0;
  virtual uint32_t GetAsStringW(bool verify, wchar_t* value, size_t& size) = 0;

  virtual uint32_t Invalidate() = 0;

  virtual uint32_t SetAsBoolean(bool verify, bool value) = 0;
  virtual uint32_t SetAsFloat(bool verify, double value) = 0;
  virtual uint32_t SetAsInteger(bool verify, int64_t value) = 0;
  virtual uint32_t SetAsString(bool verify, const char* value) = 0;
  virtual uint32_t SetAsStringW(bool verify, const wchar_t* value) = 0;

  // Callback type: only 0 is defined.
  virtual uint32_t RegisterUpdate(int32_t callbackType, TNodeUpdate callback, void* userData,
                                  TCallbackHandle* handle) = 0;
  virtual uint32_t DeregisterUpdate(TCallbackHandle handle) = 0;

  virtual uint32_t GetVerifyMode(TVerifyMode* mode) = 0;
  virtual uint32_t SetVerifyMode(TVerifyMode mode) = 0;
};

}  // namespace ORX

namespace orxGenApi {

template <>
struct HandleKind<ORX::INode> {
  using Interface = ORX::INode;
  static uint64_t id() noexcept { return OX_INTERFACE_NODE; }
  static constexpr const char* kInvalid = "Invalid NODE handle";
};

}  // namespace orxGenApi

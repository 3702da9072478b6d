/// @file
/// A feature of a node map: its value, what is known about it, its relations, its bytes, its updates.
#ifndef OXGENAPI_CPP_NODE_HPP
#define OXGENAPI_CPP_NODE_HPP

#include <cmath>
#include <cstddef>
#include <functional>
#include <locale>
#include <memory>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

#include "OxGenApi/Node.h"
#include "OxGenApi/cpp/Error.hpp"
#include "OxGenApi/cpp/Handle.hpp"

namespace oxgenapi {

class UpdateRegistration;

/// As large as a pointer. A default-constructed or moved-from Node fails with OXGENAPI_E_INVALID_HANDLE in every call.
class Node {
 public:
  Node() = default;
  explicit Node(Handle<NODE> handle) noexcept : handle_(std::move(handle)) {}

  NODE handle() const noexcept { return handle_.get(); }
  std::string name() const { return infoText(NI_Name); }
  TNodeType type() const {
    TNodeType type = NT_Invalid;
    return checked(NType(handle(), &type), type);
  }

  // ---- Value: throws, or with try... returns how it went ----

  bool boolean() const { return checked(tryBoolean()); }
  int64_t integer() const { return checked(tryInteger()); }
  double real() const { return checked(tryReal()); }
  /// Integers in decimal, floats with six digits, an entry's symbolic name, strings as they are.
  std::string text() const { return checked(tryText()); }
  /// Executes a command; refuses any other node with NOT_SUPPORTED. tryBoolean() tells whether it has finished.
  void execute() const {
    if (type() != NT_Command) throw Error(OXGENAPI_E_NOT_SUPPORTED, name() + " is not a command", name());
    checked(trySet(true).code());
  }
  /// Writes a bool, a number or a text, in the form that its C++ type has. A number with a fraction is not cut to fit
  /// an integer: it is refused with INVALID_ARGUMENT.
  template <class T>
  void set(const T& value) const {
    checked(trySet(value).code());
  }

  Result<bool> tryBoolean() const noexcept { return tried<bool>(NGetAsBoolean); }
  Result<int64_t> tryInteger() const noexcept { return tried<int64_t>(NGetAsInteger); }
  Result<double> tryReal() const noexcept { return tried<double>(NGetAsFloat); }
  Result<std::string> tryText() const {
    std::string text;
    const uint32_t code =
        detail::readText(text, [&](char* to, size_t& size) { return NGetAsString(handle(), to, size); });
    return {code, std::move(text)};
  }
  template <class T>
  Status trySet(const T& value) const {
    if constexpr (std::is_same_v<T, bool>) {
      return Status(NSetAsBoolean(handle(), value));
    } else if constexpr (std::is_integral_v<T>) {
      static_assert(std::is_signed_v<T> || sizeof(T) < sizeof(int64_t), "an unsigned 64-bit number may not fit");
      return Status(NSetAsInteger(handle(), value));
    } else if constexpr (std::is_floating_point_v<T>) {
      return Status(value == std::floor(value) ? NSetAsFloat(handle(), value) : setFraction(value));
    } else if constexpr (std::is_convertible_v<T, const char*>) {
      return Status(NSetAsString(handle(), value));
    } else {
      return Status(NSetAsString(handle(), std::string(value).c_str()));
    }
  }

  // ---- Information: NI_... says which forms an item has ----

  bool infoBoolean(TNodeInfo item) const { return info<bool>(NInfoAsBoolean, item); }
  int64_t infoInteger(TNodeInfo item) const { return info<int64_t>(NInfoAsInteger, item); }
  double infoReal(TNodeInfo item) const { return info<double>(NInfoAsFloat, item); }
  std::string infoText(TNodeInfo item) const {
    return readText([&](char* to, size_t& size) { return NInfoAsString(handle(), item, to, size); });
  }
  /// 0 not implemented, or one of AM_...
  TAccessMode access() const { return static_cast<TAccessMode>(infoInteger(NI_AccessMode)); }
  bool readable() const {
    const TAccessMode mode = access();
    return mode == AM_ReadOnly || mode == AM_ReadWrite;
  }
  bool writable() const {
    const TAccessMode mode = access();
    return mode == AM_WriteOnly || mode == AM_ReadWrite;
  }
  /// The names of the nodes that this one is related to.
  std::vector<std::string> list(TNodeList relation) const {
    int64_t count = 0;
    check(NListCount(handle(), relation, &count));
    std::vector<std::string> names;
    names.reserve(static_cast<size_t>(count));
    for (int64_t index = 0; index < count; ++index)
      names.push_back(readText([&](char* to, size_t& size) { return NList(handle(), relation, index, to, size); }));
    return names;
  }

  // ---- Bytes ----

  /// Port nodes: `length` bytes of the address space behind them.
  std::vector<std::byte> memory(int64_t address, int64_t length) const {
    std::vector<std::byte> bytes(static_cast<size_t>(length));
    return checked(NGetAsMemory(handle(), address, bytes.data(), length), std::move(bytes));
  }
  void setMemory(int64_t address, const void* bytes, size_t size) const {
    checked(NSetAsMemory(handle(), address, bytes, static_cast<int64_t>(size)));
  }
  /// Register nodes: their whole content.
  std::vector<std::byte> registerData() const {
    int64_t length = 0;
    checked(NGetAsRegisterData(handle(), nullptr, &length));
    std::vector<std::byte> bytes(static_cast<size_t>(length));
    return checked(NGetAsRegisterData(handle(), bytes.data(), &length), std::move(bytes));
  }

  // ---- Changes ----

  /// Forgets cached values of the node and of all that depends on it.
  void invalidate() const { checked(NInvalidate(handle())); }
  TVerifyMode verifyMode() const {
    TVerifyMode mode = VM_None;
    return checked(NGetVerifyMode(handle(), &mode), mode);
  }
  void setVerifyMode(TVerifyMode mode) const { checked(NSetVerifyMode(handle(), mode)); }
  /// Calls `callback` after every change of the node, inside the call that made it, for as long as the result lives.
  UpdateRegistration onUpdate(std::function<void(const Node&)> callback) const;

  /// What a flat call that was given handle() has left, as this class throws it.
  Error failure(uint32_t code) const {
    const Error error = lastError(code);  // before the name is asked for, which may fail as well
    std::string name;
    detail::readText(name, [&](char* to, size_t& size) { return NInfoAsString(handle(), NI_Name, to, size); });
    return Error(code, error.what(), name);
  }

 private:
  uint32_t setFraction(double value) const {
    TNodeType type = NT_Invalid;
    if (NType(handle(), &type) != OXGENAPI_OK || type != NT_Integer) return NSetAsFloat(handle(), value);
    std::string text;
    detail::readText(text, [&](char* to, size_t& size) { return NInfoAsString(handle(), NI_Name, to, size); });
    std::ostringstream number;
    number.imbue(std::locale::classic());
    number.precision(15);
    number << value;
    OxSetLastError(OXGENAPI_E_INVALID_ARGUMENT, (text + ": " + number.str() + " is not a whole number").c_str());
    return OXGENAPI_E_INVALID_ARGUMENT;
  }
  template <class T, class Call>
  Result<T> tried(Call call) const noexcept {
    T value{};
    const uint32_t code = call(handle(), &value);
    return {code, value};
  }
  template <class T, class Call>
  T info(Call call, TNodeInfo item) const {
    T value{};
    return checked(call(handle(), item, &value), value);
  }
  template <class Call>
  std::string readText(Call call) const {
    std::string text;
    return checked(detail::readText(text, call), std::move(text));
  }

  void checked(uint32_t code) const {
    if (code != OXGENAPI_OK) throw failure(code);
  }
  template <class T>
  std::decay_t<T> checked(uint32_t code, T&& value) const {
    if (code != OXGENAPI_OK) throw failure(code);
    return std::forward<T>(value);
  }
  template <class T>
  T checked(const Result<T>& result) const {
    if (!result) throw failure(result.code());
    return *result;
  }
  Handle<NODE> handle_;
};

/// Ends its callback with its own end; not allowed inside the callback itself.
class [[nodiscard]] UpdateRegistration {
 public:
  UpdateRegistration(Node node, std::function<void(const Node&)> callback)
      : node_(std::move(node)), callback_(std::make_unique<std::function<void(const Node&)>>(std::move(callback))) {
    check(NRegisterUpdate(node_.handle(), call, callback_.get(), &registration_));
  }
  UpdateRegistration(UpdateRegistration&&) = default;
  UpdateRegistration& operator=(UpdateRegistration&& other) noexcept {
    std::swap(node_, other.node_);
    std::swap(callback_, other.callback_);
    std::swap(registration_, other.registration_);
    return *this;
  }
  ~UpdateRegistration() {
    if (callback_) NDeregisterUpdate(node_.handle(), registration_);
  }

 private:
  // What the callback throws, the library drops.
  static void call(NODE node, void* callback) {
    (*static_cast<std::function<void(const Node&)>*>(callback))(Node(Handle<NODE>::share(node)));
  }

  Node node_;
  std::unique_ptr<std::function<void(const Node&)>> callback_;  // keeps its place when the registration is moved
  TCallbackHandle registration_ = 0;
};

inline UpdateRegistration Node::onUpdate(std::function<void(const Node&)> callback) const {
  return {*this, std::move(callback)};
}

}  // namespace oxgenapi

#endif

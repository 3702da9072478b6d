/// @file
/// How a failing call shows: as a thrown Error, or as a Status or Result that is asked.
#ifndef OXGENAPI_CPP_ERROR_HPP
#define OXGENAPI_CPP_ERROR_HPP

#include <OxBase/OxBase.h>

#include <array>
#include <cstring>
#include <stdexcept>
#include <string>
#include <utility>

#include "OxGenApi/Types.h"

namespace oxgenapi {

/// A failed call: what() is its line of text.
class Error : public std::runtime_error {
 public:
  Error(uint32_t code, const std::string& text, std::string feature = {})
      : std::runtime_error(text), code_(code), feature_(std::move(feature)) {}

  /// One of OXGENAPI_E_...
  uint32_t code() const noexcept { return code_; }
  /// The feature, port or file that the call was about; empty where there is none.
  const std::string& feature() const noexcept { return feature_; }

 private:
  uint32_t code_;
  std::string feature_;
};

/// The failure that the last call on this thread left, if it left this code. A few failures have no text of their own.
inline Error lastError(uint32_t code, std::string feature = {}) {
  uint32_t lastCode = 0;
  size_t size = 0;
  OxGetLastError(&lastCode, nullptr, &size);
  std::string text;
  if (lastCode == code && size > 1) {
    text.resize(size);
    OxGetLastError(nullptr, text.data(), &size);
    text.resize(size - 1);
  }
  return Error(code, text.empty() ? "Failed without a text" : text, std::move(feature));
}

/// Throws what a failed call left.
inline void check(uint32_t code) {
  if (code != OXGENAPI_OK) throw lastError(code);
}

/// The same for a call about something with a name.
inline void check(uint32_t code, const std::string& feature) {
  if (code != OXGENAPI_OK) throw lastError(code, feature);
}

/// How a call ended; true for success. error() must be asked before the next call on the thread.
class [[nodiscard]] Status {
 public:
  explicit Status(uint32_t code) noexcept : code_(code) {}
  explicit operator bool() const noexcept { return code_ == OXGENAPI_OK; }
  uint32_t code() const noexcept { return code_; }
  Error error() const { return lastError(code_); }

 private:
  uint32_t code_;
};

/// A Status and, if it is true, a value.
template <class T>
class [[nodiscard]] Result : public Status {
 public:
  Result(uint32_t code, T value) : Status(code), value_(std::move(value)) {}
  const T& operator*() const noexcept { return value_; }
  const T* operator->() const noexcept { return &value_; }
  T valueOr(T other) const { return *this ? value_ : std::move(other); }

 private:
  T value_;
};

namespace detail {

/// Fills `text` by a call that returns a code and writes to a buffer of a size. Most texts fit the first buffer, so
/// that a value is read once; one that fills it may have been cut and is asked for again.
template <class Call>
uint32_t readText(std::string& text, Call call) {
  std::array<char, 512> buffer;
  size_t size = buffer.size();
  uint32_t code = call(buffer.data(), size);
  if (code != OXGENAPI_OK) return code;
  size_t length = strnlen(buffer.data(), buffer.size());
  if (length + 1 < buffer.size()) {
    text.assign(buffer.data(), length);
    return code;
  }
  do {  // until it fits: the text may grow between the two calls
    if ((code = call(nullptr, size)) != OXGENAPI_OK) return code;
    text.assign(++size, '\0');
    if ((code = call(text.data(), size)) != OXGENAPI_OK) return code;
    length = strnlen(text.data(), size);
  } while (length + 1 >= size);
  text.resize(length);
  return code;
}

}  // namespace detail
}  // namespace oxgenapi

#endif

// How failures travel: as exceptions up to the method behind an export, from there as a code, a text and, when
// telemetry asks, a record.
#pragma once
#include <cstdint>
#include <stdexcept>
#include <string>

#include "OxGenApi/Types.h"

namespace orxGenApi {

inline constexpr const char* kUnspecifiedError = "Unspecified error";

// Thrown wherever a function decides on a code and a text of its own; both reach the caller unchanged.
class orx_error : public std::runtime_error {
 public:
  orx_error(uint32_t code, const char* text) : std::runtime_error(text), code_(code) {}
  orx_error(uint32_t code, const std::string& text) : std::runtime_error(text), code_(code) {}
  uint32_t code() const noexcept { return code_; }

 private:
  uint32_t code_;
};

// The same where callers get the code alone: the text goes to the record, the last error stays as it was.
class silent_error : public orx_error {
 public:
  using orx_error::orx_error;
};

// Which code an exception becomes. What is the same for all operations (orx_error) is not listed.
struct FailureRules {
  uint32_t access = OXGENAPI_E_UNSPECIFIED;     // GenApi: access refused
  uint32_t argument = OXGENAPI_E_UNSPECIFIED;   // GenApi: invalid argument, out of range
  uint32_t genapi = OXGENAPI_E_UNSPECIFIED;     // GenApi: anything else
  uint32_t memory = OXGENAPI_E_OUT_OF_MEMORY;   // memory ran out, without a text of its own; 0: as others of its family
  uint32_t standard = 0;                        // other standard exceptions, with their text; 0: as unknown ones
  uint32_t unknown = OXGENAPI_E_UNSPECIFIED;    // everything else, with the text below
  const char* unknownText = kUnspecifiedError;  //
  bool describes = true;                        // false: GenApi failures count as unknown ones
  bool reports = true;                          // false: no telemetry record
};

inline constexpr FailureRules kReading{.access = OXGENAPI_E_NOT_READABLE};
inline constexpr FailureRules kWriting{.access = OXGENAPI_E_NOT_WRITABLE, .argument = OXGENAPI_E_INVALID_ARGUMENT};
inline constexpr FailureRules kLoading{
    .access = OXGENAPI_E_RUNTIME, .argument = OXGENAPI_E_RUNTIME, .genapi = OXGENAPI_E_RUNTIME};
inline constexpr FailureRules kConnecting{
    .access = OXGENAPI_E_NOT_WRITABLE, .argument = OXGENAPI_E_INVALID_ARGUMENT, .genapi = OXGENAPI_E_RUNTIME};
inline constexpr FailureRules kDelivering{};
inline constexpr FailureRules kAsking{.describes = false};
inline constexpr FailureRules kPolling{.unknownText = "Unknown error while polling nodes"};
inline constexpr FailureRules kInvalidating{.access = OXGENAPI_E_INVALIDATE_FAILED,
                                            .argument = OXGENAPI_E_INVALIDATE_FAILED,
                                            .genapi = OXGENAPI_E_INVALIDATE_FAILED};
inline constexpr FailureRules kCreating{.standard = OXGENAPI_E_RUNTIME, .unknown = OXGENAPI_E_OUT_OF_MEMORY};

// What is being done, for the record of a failure: "<owner><tag>: <text>". Nothing is rendered unless telemetry asks.
struct Operation {
  const FailureRules& rules;
  const char* tag;
  const void* owner;
  void (*appendOwner)(std::string& text, const void* owner);
};

// Sends the record; returns the code.
uint32_t failSilently(const Operation& operation, uint32_t code, const char* text) noexcept;
// Sends the record, then sets the last error; returns the code.
uint32_t fail(const Operation& operation, uint32_t code, const char* text) noexcept;

// The one place where exceptions become codes: call it from a handler. Does what fail() does.
uint32_t failWithCurrentException(const Operation& operation) noexcept;

// Runs the work of an operation: 0, or the code of what it threw.
template <class Work>
uint32_t guarded(const Operation& operation, Work&& work) noexcept {
  try {
    work();
    return OXGENAPI_OK;
  } catch (...) {
    return failWithCurrentException(operation);
  }
}

}  // namespace orxGenApi

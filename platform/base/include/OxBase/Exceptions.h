// The base library's exceptions: a message and a signed 32-bit result code each.
//
// They do not derive from std::exception. A handler for std::exception reports its text under the one code for runtime
// failures; an exception of this family carries a code of its own, which such a handler would silently replace. Without
// a handler of its own an orxBase::exception ends in the last resort, catch (...), whose code is its default one.
#ifndef OXBASE_EXCEPTIONS_H
#define OXBASE_EXCEPTIONS_H

#include <cstdint>
#include <string>
#include <utility>

namespace orxBase {

// Makes the signed form of a result code as it is written in tables (0x80000002).
constexpr int32_t resultCode(uint32_t code) noexcept { return static_cast<int32_t>(code); }

// The generic failure, and the root of the family.
class exception {
 public:
  explicit exception(std::string message = {}, int32_t code = resultCode(0x80000001))
      : message_(std::move(message)), code_(code) {}
  exception(const exception&) = default;
  exception& operator=(const exception&) = default;
  virtual ~exception() = default;

  // The message, empty when none was given; valid as long as the exception.
  const std::string& message() const noexcept { return message_; }
  const char* what() const noexcept { return message_.c_str(); }
  // The result code, negative.
  int32_t code() const noexcept { return code_; }

 private:
  std::string message_;
  int32_t code_;
};

// Out of memory: always 0x80000005. Has no text by default, so that throwing it needs no memory for one.
class bad_alloc : public exception {
 public:
  explicit bad_alloc(std::string message = {}) : exception(std::move(message), resultCode(0x80000005)) {}
};

class runtime_error : public exception {
 public:
  explicit runtime_error(std::string message = {}, int32_t code = resultCode(0x80000003))
      : exception(std::move(message), code) {}
};

class logic_error : public exception {
 public:
  explicit logic_error(std::string message = {}, int32_t code = resultCode(0x80000001))
      : exception(std::move(message), code) {}
};

class invalid_argument : public logic_error {
 public:
  explicit invalid_argument(std::string message = {}, int32_t code = resultCode(0x80000002))
      : logic_error(std::move(message), code) {}
};

class domain_error : public logic_error {
 public:
  explicit domain_error(std::string message = {}, int32_t code = resultCode(0x80000002))
      : logic_error(std::move(message), code) {}
};

class out_of_range : public logic_error {
 public:
  explicit out_of_range(std::string message = {}, int32_t code = resultCode(0x80000002))
      : logic_error(std::move(message), code) {}
};

// An object is not in a state in which the request makes sense.
class invalid_state : public logic_error {
 public:
  explicit invalid_state(std::string message = {}, int32_t code = resultCode(0x8000001e))
      : logic_error(std::move(message), code) {}
};

class overflow_error : public runtime_error {
 public:
  explicit overflow_error(std::string message = {}, int32_t code = resultCode(0x80000003))
      : runtime_error(std::move(message), code) {}
};

class underflow_error : public runtime_error {
 public:
  explicit underflow_error(std::string message = {}, int32_t code = resultCode(0x80000003))
      : runtime_error(std::move(message), code) {}
};

// A handle is zero, dead, or of another kind.
class handle_error : public runtime_error {
 public:
  explicit handle_error(std::string message = {}, int32_t code = resultCode(0x8000001d))
      : runtime_error(std::move(message), code) {}
};

// A strong reference was asked of a weak one whose object is gone.
class bad_weak_ptr : public exception {
 public:
  explicit bad_weak_ptr(std::string message = {}, int32_t code = resultCode(0x8000001d))
      : exception(std::move(message), code) {}
};

}  // namespace orxBase

#endif

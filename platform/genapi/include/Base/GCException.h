// The exceptions of the GenApi programming interface and the macros that build them from a printf format.
#pragma once

#include <Base/GCTypes.h>

#include <cstdarg>
#include <exception>
#include <memory>

namespace GENICAM_NAMESPACE {

// Root of all GenApi exceptions. Copies share their texts, so copying never throws. If memory for the texts cannot be
// had, the exception is built all the same and carries a fixed text instead.
class GenericException : public std::exception {
 public:
  // `description` and `sourceFile` are copied; a null pointer counts as the empty text.
  GenericException(const char* description, const char* sourceFile, int line) noexcept;
  // The class name in `type` is accepted and not shown: texts stay exactly as given.
  GenericException(const char* description, const char* sourceFile, unsigned int line, const char* type) noexcept;
  GenericException(const GenericException&) noexcept = default;
  GenericException& operator=(const GenericException&) noexcept = default;
  ~GenericException() override;

  // The text exactly as given, without class name, file or line. Valid as long as any copy lives.
  const char* GetDescription() const noexcept;
  const char* GetSourceFileName() const noexcept;
  unsigned int GetSourceLine() const noexcept;
  // The same text as GetDescription().
  const char* what() const noexcept override;

 private:
  struct Texts;

  std::shared_ptr<const Texts> texts_;  // null when memory for them could not be had
  unsigned int line_;
};

// Memory ran out while a description was loaded.
class BadAllocException : public GenericException {
  using GenericException::GenericException;
};
// A text that does not parse, an unknown name, a null pointer, a negative length.
class InvalidArgumentException : public GenericException {
  using GenericException::GenericException;
};
// A value outside its limits or off its increment, a buffer or text longer than its register.
class OutOfRangeException : public GenericException {
  using GenericException::GenericException;
};
// A property that cannot be set or read.
class PropertyException : public GenericException {
  using GenericException::GenericException;
};
// Faults in descriptions, unsupported node types, failed integer casts and other conditions of the moment.
class RuntimeException : public GenericException {
  using GenericException::GenericException;
};
// Formula defects and evaluation errors, null smart pointers, increments of zero.
class LogicalErrorException : public GenericException {
  using GenericException::GenericException;
};
// Reading what is not readable, writing or executing what is not writable.
class AccessException : public GenericException {
  using GenericException::GenericException;
};
// A command or file operation that never finishes.
class TimeoutException : public GenericException {
  using GenericException::GenericException;
};
// A cast to an interface that the object does not have.
class DynamicCastException : public GenericException {
  using GenericException::GenericException;
};

// Longest text that the exception macros can build, terminator included; longer results are cut.
inline constexpr size_t kMaxReportedTextBytes = 2048;

// Writes the formatted text into `buffer`, cut before the first character that does not fit whole; always terminated.
void formatReportedText(char (&buffer)[kMaxReportedTextBytes], const char* format, std::va_list arguments) noexcept;

// What the macros below expand to.
template <class Exception>
class ExceptionReporter {
 public:
  ExceptionReporter(const char* sourceFile, int line) noexcept : sourceFile_(sourceFile), line_(line) {}

  [[gnu::format(printf, 2, 3)]] Exception Report(const char* format, ...) const noexcept {
    char text[kMaxReportedTextBytes];
    std::va_list arguments;
    va_start(arguments, format);
    formatReportedText(text, format, arguments);
    va_end(arguments);
    return Exception(text, sourceFile_, line_);
  }

 private:
  const char* sourceFile_;
  int line_;
};

}  // namespace GENICAM_NAMESPACE

// Each builds an exception object: throw RUNTIME_EXCEPTION("no node named '%s'", name);
#define GENICAM_EXCEPTION_REPORT(type) \
  ::GENICAM_NAMESPACE::ExceptionReporter< ::GENICAM_NAMESPACE::type>(__FILE__, __LINE__).Report
#define GENERIC_EXCEPTION GENICAM_EXCEPTION_REPORT(GenericException)
#define BAD_ALLOC_EXCEPTION GENICAM_EXCEPTION_REPORT(BadAllocException)
#define INVALID_ARGUMENT_EXCEPTION GENICAM_EXCEPTION_REPORT(InvalidArgumentException)
#define OUT_OF_RANGE_EXCEPTION GENICAM_EXCEPTION_REPORT(OutOfRangeException)
#define PROPERTY_EXCEPTION GENICAM_EXCEPTION_REPORT(PropertyException)
#define RUNTIME_EXCEPTION GENICAM_EXCEPTION_REPORT(RuntimeException)
#define LOGICAL_ERROR_EXCEPTION GENICAM_EXCEPTION_REPORT(LogicalErrorException)
#define ACCESS_EXCEPTION GENICAM_EXCEPTION_REPORT(AccessException)
#define TIMEOUT_EXCEPTION GENICAM_EXCEPTION_REPORT(TimeoutException)
#define DYNAMICCAST_EXCEPTION GENICAM_EXCEPTION_REPORT(DynamicCastException)

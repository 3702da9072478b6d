#include <Base/GCException.h>
#include <Base/GCUtilities.h>

#include "text/Refusal.h"
#include "text/Utf8.h"

#include <cstdio>
#include <cstring>
#include <string>

namespace GENICAM_NAMESPACE {

struct GenericException::Texts {
  std::string description;
  std::string sourceFile;
};

namespace {

// Shown when the real text could not be stored.
constexpr const char* kTextLost = "out of memory while an error was described";

const char* orEmpty(const char* text) noexcept { return text == nullptr ? "" : text; }

}  // namespace

GenericException::GenericException(const char* description, const char* sourceFile, int line) noexcept
    : GenericException(description, sourceFile, static_cast<unsigned int>(line), nullptr) {}

GenericException::GenericException(const char* description, const char* sourceFile, unsigned int line,
                                   const char*) noexcept
    : line_(line) {
  try {
    texts_ = std::make_shared<const Texts>(Texts{orEmpty(description), orEmpty(sourceFile)});
  } catch (const std::exception&) {
    // No memory: the fixed text serves.
  }
}

GenericException::~GenericException() = default;

const char* GenericException::GetDescription() const noexcept {
  return texts_ ? texts_->description.c_str() : kTextLost;
}

const char* GenericException::GetSourceFileName() const noexcept { return texts_ ? texts_->sourceFile.c_str() : ""; }

unsigned int GenericException::GetSourceLine() const noexcept { return line_; }

const char* GenericException::what() const noexcept { return GetDescription(); }

void formatReportedText(char (&buffer)[kMaxReportedTextBytes], const char* format, std::va_list arguments) noexcept {
  const int length = std::vsnprintf(buffer, sizeof buffer, orEmpty(format), arguments);
  if (length < 0) {
    buffer[0] = '\0';
    return;
  }
  constexpr size_t kMaxBytes = sizeof buffer - 1;
  if (static_cast<size_t>(length) > kMaxBytes)
    buffer[GENAPI_NAMESPACE::text::wholeCharacters({buffer, kMaxBytes})] = '\0';
}

void throwIntegralCastFailed() { GENAPI_NAMESPACE::refuse<RuntimeException>("INTEGRAL_CAST failed"); }

}  // namespace GENICAM_NAMESPACE

#include <Base/GCException.h>
#include <Base/GCUtilities.h>

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

const char* orEmpty(const char* text) noexcept {
  return text == nullptr ? "" : text;
}

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

const char* GenericException::GetSourceFileName() const noexcept {
  return texts_ ? texts_->sourceFile.c_str() : "";
}

unsigned int GenericException::GetSourceLine() const noexcept {
  return line_;
}

const char* GenericException::what() const noexcept {
  return GetDescription();
}

void formatReportedText(char (&buffer)[kMaxReportedTextBytes], const char* format, std::va_list arguments) noexcept {
  const int length = std::vsnprintf(buffer, sizeof buffer, orEmpty(format), arguments);
  if (length < 0) {
    buffer[0] = '\0';
    return;
  }
  if (static_cast<size_t>(length) < sizeof buffer) return;
  // Cut: a character whose last bytes did not fit goes as a whole.
  size_t end = sizeof buffer - 1;
  size_t start = end;
  while (start > 0 && end - start < 4 && (static_cast<unsigned char>(buffer[start - 1]) & 0xC0) == 0x80) --start;
  if (start == 0) return;
  const unsigned char lead = static_cast<unsigned char>(buffer[start - 1]);
  const size_t needed = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : lead >= 0xC0 ? 2 : 1;
  if (end - (start - 1) < needed) end = start - 1;
  buffer[end] = '\0';
}

void throwIntegralCastFailed() {
  throw RUNTIME_EXCEPTION("INTEGRAL_CAST failed");
}

}  // namespace GENICAM_NAMESPACE

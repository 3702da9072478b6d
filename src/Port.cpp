#include "Port.h"

#include <array>
#include <charconv>
#include <string>

#include "Base/GCException.h"
#include "CallOut.h"
#include "OxBase/OxBase.h"

namespace orxGenApi {
namespace {

using GENAPI_NAMESPACE::EAccessMode;

constexpr const char* kSource = "src/Port";
// A port's numbers differ from GenApi's on purpose: read-only comes before write-only.
constexpr std::array<EAccessMode, 5> kAccessModes = {GENAPI_NAMESPACE::NI, GENAPI_NAMESPACE::NA, GENAPI_NAMESPACE::RO,
                                                     GENAPI_NAMESPACE::WO, GENAPI_NAMESPACE::RW};

// The last error's text if it was set under this code, else the empty text.
std::string lastErrorText(uint32_t code) {
  uint32_t lastCode = 0;
  size_t size = 0;
  OxGetLastError(&lastCode, nullptr, &size);
  if (size == 0 || lastCode != code) return {};
  std::string text(size, '\0');
  OxGetLastError(&lastCode, text.data(), &size);
  text.resize(text.find('\0'));
  return text;
}

[[noreturn]] void throwNotSupported(const char* fallback) {
  const std::string text = lastErrorText(OXGENAPI_E_NOT_SUPPORTED);
  throw GENICAM_NAMESPACE::AccessException(text.empty() ? fallback : text.c_str(), kSource, __LINE__);
}

// What a negative result of a callback becomes.
[[noreturn]] void throwFailure(int result, int64_t address, const char* notSupported, const char* notPossible) {
  const auto code = static_cast<uint32_t>(result);
  if (code == OXGENAPI_E_NOT_SUPPORTED) throwNotSupported(notSupported);
  std::string text = lastErrorText(code);
  if (text.empty()) {
    char digits[16];
    const auto end = std::to_chars(digits, digits + sizeof digits, static_cast<uint64_t>(address), 16).ptr;
    text.append("Address 0x").append(digits, end).append(notPossible);
  }
  if (code == OXGENAPI_E_ACCESS_DENIED) throw GENICAM_NAMESPACE::AccessException(text.c_str(), kSource, __LINE__);
  throw GENICAM_NAMESPACE::RuntimeException(text.c_str(), kSource, __LINE__);
}

}  // namespace

EAccessMode Port::GetAccessMode() const {
  if (accessMode_ != nullptr) {
    const auto self = shared_from_this();
    const auto mode = static_cast<uint32_t>(callOut([&] { return accessMode_(userData_); }));
    return mode < kAccessModes.size() ? kAccessModes[mode] : GENAPI_NAMESPACE::NI;
  }
  if (read_ != nullptr) return write_ != nullptr ? GENAPI_NAMESPACE::RW : GENAPI_NAMESPACE::RO;
  return write_ != nullptr ? GENAPI_NAMESPACE::WO : GENAPI_NAMESPACE::NI;
}

void Port::Read(void* pBuffer, int64_t Address, int64_t Length) {
  constexpr const char* kNotSupported = "Read operation not supported";
  if (read_ == nullptr) throwNotSupported(kNotSupported);
  const auto self = shared_from_this();
  const int result = callOut([&] { return read_(pBuffer, Address, Length, userData_); });
  if (result < 0) throwFailure(result, Address, kNotSupported, " is not readable");
}

void Port::Write(const void* pBuffer, int64_t Address, int64_t Length) {
  constexpr const char* kNotSupported = "Write operation not supported";
  if (write_ == nullptr) throwNotSupported(kNotSupported);
  const auto self = shared_from_this();
  const int result = callOut([&] { return write_(pBuffer, Address, Length, userData_); });
  if (result < 0) throwFailure(result, Address, kNotSupported, " is not writable");
}

}  // namespace orxGenApi

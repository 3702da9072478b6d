#include "Interposed.h"

#include <dlfcn.h>

#include <cstring>
#include <stdexcept>

#include "OxTelemetry/OxTelemetry.h"

namespace {

thread_local calls::Reports counted{};
thread_local bool isError = false, throws = false;

template <class Function>
Function* next(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

// The tests, and the library's parts that are linked into them, set last errors too.
bool isLibrary(const void* caller) {
  Dl_info info{};
  return dladdr(caller, &info) != 0 && std::strstr(info.dli_fname, "libOxGenApi.so") != nullptr;
}

}  // namespace

namespace interposed {

calls::Reports reports() { return counted; }
void throwWhenSending(bool wanted) { throws = wanted; }

}  // namespace interposed

extern "C" int32_t OxSetLastError(uint32_t code, const char* text) {
  static const auto real = next<decltype(OxSetLastError)>("OxSetLastError");
  if (isLibrary(__builtin_return_address(0))) ++counted.lastErrors;
  return real(code, text);
}

extern "C" int32_t OxTCreateLog(OxTModule module, uint32_t level, OxTLog* log) {
  static const auto real = next<decltype(OxTCreateLog)>("OxTCreateLog");
  isError = level == OXT_LEVEL_ERROR;
  return real(module, level, log);
}

extern "C" int32_t OxTSendLog(OxTLog log, const char* message) {
  static const auto real = next<decltype(OxTSendLog)>("OxTSendLog");
  if (isError) ++counted.records;
  const int32_t status = real(log, message);
  if (throws) throw std::runtime_error("the line is cut");
  return status;
}

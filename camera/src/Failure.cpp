#include "Failure.h"

#include <OxBase/OxBase.h>

#include <new>

namespace ox::camera {
namespace {

uint32_t fail(uint32_t code, const char* text) noexcept {
  OxSetLastError(code, text);
  return code;
}

}  // namespace

uint32_t codeOf(Reason reason) noexcept {
  switch (reason) {
    case Reason::notFound: return OXCAMERA_E_NOT_FOUND;
    case Reason::busy: return OXCAMERA_E_IN_USE;
    case Reason::noPermission: return OXCAMERA_E_NO_PERMISSION;
    case Reason::unreachable: return OXCAMERA_E_UNREACHABLE;
    case Reason::timedOut: return OXCAMERA_E_TIMEOUT;
    case Reason::outcomeUnknown: return OXCAMERA_E_OUTCOME_UNKNOWN;
    case Reason::lost: return OXCAMERA_E_LOST;
    case Reason::refused: return OXCAMERA_E_REFUSED;
    case Reason::readOnly: return OXCAMERA_E_READ_ONLY;
    case Reason::notSupported: return OXGENAPI_E_NOT_SUPPORTED;
    case Reason::failed: break;
  }
  return OXCAMERA_E_FAILED;
}

CameraError lastFailure(uint32_t code) {
  uint32_t last = 0;
  size_t size = 0;
  OxGetLastError(&last, nullptr, &size);
  std::string text(size, '\0');
  OxGetLastError(nullptr, text.data(), &size);
  text.resize(size - 1);
  return {code, last == code && !text.empty() ? text : "Failed without a text"};
}

uint32_t failWithCurrentException() noexcept {
  try {
    throw;
  } catch (const CameraError& error) {
    return fail(error.code(), error.what());
  } catch (const TransportError& error) {
    return fail(codeOf(error.reason()), error.what());
  } catch (const std::bad_alloc&) {
    return fail(OXGENAPI_E_OUT_OF_MEMORY, "Unspecified error");
  } catch (const std::exception& error) {
    return fail(OXCAMERA_E_FAILED, error.what());
  } catch (...) {
    return fail(OXGENAPI_E_UNSPECIFIED, "Unspecified error");
  }
}

}  // namespace ox::camera

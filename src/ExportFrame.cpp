#include "ExportFrame.h"

#include <memory>
#include <new>

namespace orxGenApi {

void releaseKeepingLastError(OxHandle handle) noexcept {
  char inPlace[512];
  uint32_t code = 0;
  size_t size = 0;
  OxGetLastError(&code, nullptr, &size);
  std::unique_ptr<char[]> allocated;
  if (size > sizeof inPlace) allocated.reset(new (std::nothrow) char[size]);
  char* text = allocated ? allocated.get() : inPlace;
  if (!allocated) size = sizeof inPlace;
  OxGetLastError(&code, text, &size);
  OxIfaceContainerReleaseUseCounter(handle);
  OxSetLastError(code, text);
}

}  // namespace orxGenApi

#include "LastError.h"

#include <cstring>
#include <new>

#include "OxBase/OxBase.h"

namespace orxGenApi {

KeptLastError::KeptLastError() noexcept {
  size_t size = 0;
  OxGetLastError(nullptr, nullptr, &size);
  if (size > sizeof short_) long_.reset(new (std::nothrow) char[size]);
  if (!long_) size = sizeof short_;
  OxGetLastError(&code_, long_ ? long_.get() : short_, &size);
}

void ensureLastError(uint32_t code, const char* text) noexcept {
  const KeptLastError now;
  if (now.code() != code || std::strcmp(now.text(), text) != 0) OxSetLastError(code, text);
}

}  // namespace orxGenApi

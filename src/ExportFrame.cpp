#include "ExportFrame.h"

#include "LastError.h"

namespace orxGenApi {

void releaseKeepingLastError(OxHandle handle) noexcept {
  const KeptLastError kept;
  OxIfaceContainerReleaseUseCounter(handle);
  kept.restore();
}

}  // namespace orxGenApi

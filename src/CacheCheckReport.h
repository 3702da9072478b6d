// OXGENAPI_CHECK_CACHE=1 in the environment: every answer from memory is compared with the device. What the device does
// not confirm goes to telemetry as a record of level 2.
#pragma once
#include "GenApi/INodeMap.h"

namespace orxGenApi {

// Switches the check on where the environment asks for it. Engines that cannot check are left alone.
void checkCacheIfAsked(GENAPI_NAMESPACE::INodeMap& map) noexcept;

}  // namespace orxGenApi

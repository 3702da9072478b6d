// A camera on a network or a bus as the tool's device.
#pragma once

#include <memory>
#include <string>

#include "Device.h"

namespace tool {

// The camera of that name, see OxCameraOpen; `onlyReads` leaves control of it to others. Where another program has
// control, it is read, and a write says so. Throws Failure.
std::unique_ptr<Device> openRemoteCamera(const std::string& name, bool onlyReads);

}  // namespace tool

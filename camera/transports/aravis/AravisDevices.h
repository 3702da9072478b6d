// Open cameras through the aravis library, which carries their streams, too.
#pragma once

#include <OxCameraTransport/Transport.h>

#include <memory>
#include <string>
#include <vector>

namespace ox::camera::aravis {

// With control. Throws TransportError.
std::unique_ptr<Device> openGige(const OpenRequest& request);
std::unique_ptr<Device> openUsb(const OpenRequest& request);

// The USB3 Vision cameras that the library can open; their places name them by GUID.
std::vector<CameraFacts> usbCameras();

}  // namespace ox::camera::aravis

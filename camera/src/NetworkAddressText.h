// Network addresses between the flat interface and transports.
#pragma once

#include <OxCamera/CameraTypes.h>
#include <OxCameraTransport/Transport.h>

namespace ox::camera {

TNetworkAddress recordOf(const NetworkAddress& address);
TNetworkConfiguration recordOf(const NetworkConfiguration& configuration);

// An address that a camera can have: address and mask well formed, the mask contiguous, the address neither that of the
// network nor its broadcast, the gateway none or inside the network. Throws CameraError INVALID_ARGUMENT with the
// reason.
NetworkAddress checkedAddress(const TNetworkAddress* record);

}  // namespace ox::camera

// Open GigE Vision cameras.
#pragma once

#include <OxCameraTransport/Transport.h>

#include <memory>

namespace ox::camera::gige {

// Over requests of our own: to read without taking control, and for a camera that the driver does not open because it
// cannot use its description. Throws TransportError.
std::unique_ptr<Device> openPlain(const OpenRequest& request);

// Where the description of a camera is.
std::vector<DescriptionSource> describe(Port& registers);

}  // namespace ox::camera::gige

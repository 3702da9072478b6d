// From what a transport says about a frame to the records of the interface.
#pragma once

#include <OxCamera/ImageTypes.h>
#include <OxCameraTransport/Stream.h>

namespace ox::camera {

TImage recordOf(const Frame& frame, const BufferMemory& memory) noexcept;
TImagePart recordOf(const Part& part, const BufferMemory& memory) noexcept;

}  // namespace ox::camera

#include <OxCamera/Events.h>

#include "ExportFrame.h"

using namespace ox::camera;

uint32_t OxCameraNextEvent(OXCAMERA Camera, uint32_t TimeMs, TCameraEvent* Event) {
  return onCamera(Camera, [&](Session& session) {
    if (Event == nullptr || Event->StructSize != sizeof *Event)
      throw CameraError(OXGENAPI_E_INVALID_ARGUMENT, "Event: StructSize is not sizeof(TCameraEvent)");
    session.events().next(Milliseconds{TimeMs}, *Event);
  });
}

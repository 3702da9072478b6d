/* Delivers the camera's event messages to the node map and reads the features that are bound to them. */
#include "Camera.h"

int main(void) {
  OxSimulatedCamera* camera = OxSimulatedCameraCreate();
  NODEMAP map = openCamera(camera);
  NODE frameId = feature(map, "EventExposureEndFrameID");
  OxSimulatedImage image;
  TEventData event;
  int64_t frame = 0;

  set(map, "EventSelector", "ExposureEnd");
  set(map, "EventNotification", "On");
  set(map, "AcquisitionStart", "true");
  OxSimulatedCameraNextImage(camera, &image);

  while (OxSimulatedCameraNextEvent(camera, &event)) { /* with a real camera: as its messages arrive */
    check(NMDeliverEvent(map, &event), "NMDeliverEvent");
    check(NGetAsInteger(frameId, &frame), "EventExposureEndFrameID");
    printf("event %" PRIx64 ": EventExposureEndFrameID = %" PRId64 "\n", event.EventID, frame);
  }
  OxIfaceContainerReleaseUseCounter(frameId);
  closeCamera(map, camera);
  return 0;
}

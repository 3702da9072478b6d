// Delivers the camera's event messages to the node map and reads the features that are bound to them.
#include <iostream>

#include "Camera.h"

int main() {
  const Camera camera;
  camera.map["EventSelector"].set("ExposureEnd");
  camera.map["EventNotification"].set("On");
  camera.map["AcquisitionStart"].execute();
  OxSimulatedImage image;
  OxSimulatedCameraNextImage(camera.device.get(), &image);

  const oxgenapi::Node frameId = camera.map["EventExposureEndFrameID"];
  TEventData event;
  while (OxSimulatedCameraNextEvent(camera.device.get(), &event)) {  // with a real camera: as its messages arrive
    camera.map.deliverEvent(event);
    std::cout << "event " << std::hex << event.EventID << std::dec
              << ": EventExposureEndFrameID = " << frameId.integer() << '\n';
  }
}

// Takes one picture with the simulated camera and shows the event that its exposure ends with.
#include <OxBase/OxBase.h>
#include <OxGenApi/OxGenApi.h>
#include <OxSimulation/SimulatedCamera.h>

#include <cstdlib>
#include <iostream>
#include <string>

using ox::simulation::CameraEvent;
using ox::simulation::SimulatedCamera;

namespace {

void check(uint32_t result, const char* what) {
  if (result == OXGENAPI_OK) return;
  char text[256];
  size_t size = sizeof text;
  OxGetLastError(nullptr, text, &size);
  std::cerr << what << ": " << text << '\n';
  std::exit(1);
}

void set(NODEMAP map, const char* feature, const char* value) {
  NODE node = nullptr;
  check(NMGetNode(map, feature, node), feature);
  check(NSetAsString(node, value), feature);
  OxIfaceContainerReleaseUseCounter(node);
}

int readCamera(void* to, int64_t address, int64_t length, void* camera) {
  return static_cast<SimulatedCamera*>(camera)->read(to, address, length);
}

int writeCamera(const void* from, int64_t address, int64_t length, void* camera) {
  return static_cast<SimulatedCamera*>(camera)->write(from, address, length);
}

}  // namespace

int main() {
  SimulatedCamera camera;
  NODEMAP map = nullptr;
  check(CreateNodeMap(map), "CreateNodeMap");
  check(NMLoadXMLString(map, std::string(SimulatedCamera::description()).c_str()), "NMLoadXMLString");
  check(NMConnectPort(map, readCamera, writeCamera, nullptr, &camera), "NMConnectPort");

  set(map, "EventSelector", "ExposureEnd");
  set(map, "EventNotification", "On");
  set(map, "AcquisitionStart", "1");
  camera.acquireFrame();

  NODE frameId = nullptr;
  check(NMGetNode(map, "EventExposureEndFrameID", frameId), "EventExposureEndFrameID");
  CameraEvent event;
  while (camera.nextEvent(event)) {
    const TEventData message{event.id, event.payload.data(), event.payload.size()};
    check(NMDeliverEvent(map, &message), "NMDeliverEvent");
    int64_t value = 0;
    check(NGetAsInteger(frameId, &value), "NGetAsInteger");
    std::cout << "event " << event.idText() << ": EventExposureEndFrameID = " << value << '\n';
  }
  OxIfaceContainerReleaseUseCounter(frameId);
  OxIfaceContainerReleaseUseCounter(map);
}

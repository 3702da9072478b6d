#include <OxSimulatedCamera.h>
#include <OxGenApi/oxgenapi.hpp>

#include <iostream>
#include <memory>

int main() {
  const std::unique_ptr<OxSimulatedCamera, decltype(&OxSimulatedCameraDestroy)> camera(OxSimulatedCameraCreate(),
                                                                                       OxSimulatedCameraDestroy);
  oxgenapi::NodeMap map;
  map.loadText(OxSimulatedCameraDescription(nullptr));
  map.connect(OxSimulatedCameraRead, OxSimulatedCameraWrite, OxSimulatedCameraAccess, camera.get());
  map["Width"].set(640);
  std::cout << "Width = " << map["Width"].integer() << '\n';
}

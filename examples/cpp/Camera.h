// What the C++ examples have in common: a node map connected to the simulated camera. With a real one, its description
// and a class derived from oxgenapi::Registers take the place of OxSimulatedCamera.
#pragma once

#include <OxSimulatedCamera.h>
#include <OxGenApi/oxgenapi.hpp>

#include <memory>

struct Camera {
  Camera() {
    map.loadText(OxSimulatedCameraDescription(device.get()));
    map.connect(OxSimulatedCameraRead, OxSimulatedCameraWrite, OxSimulatedCameraAccess, device.get());
  }

  std::unique_ptr<OxSimulatedCamera, decltype(&OxSimulatedCameraDestroy)> device{OxSimulatedCameraCreate(),
                                                                                 OxSimulatedCameraDestroy};
  oxgenapi::NodeMap map;  // ends before the device
};

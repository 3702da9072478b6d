// Takes images and reads what their chunks tell about them.
#include <iostream>

#include "Camera.h"

int main() {
  const Camera camera;
  camera.map["ChunkModeActive"].set(true);
  camera.map["ChunkSelector"].set("ExposureTime");
  camera.map["ChunkEnable"].set(true);
  camera.map["ExposureTime"].set(1000);
  camera.map["AcquisitionStart"].execute();

  const oxgenapi::Node exposure = camera.map["ChunkExposureTime"];
  OxSimulatedImage image;
  for (int i = 0; i < 3 && OxSimulatedCameraNextImage(camera.device.get(), &image); ++i) {
    // Where the chunks lie is known from the transport layer. They are read in place, for as long as this object lives.
    const oxgenapi::AttachedChunks attached(camera.map, image.Chunks, image.ChunkCount);
    std::cout << "frame " << image.FrameID << ": ChunkExposureTime = " << exposure.real() << '\n';
  }
}

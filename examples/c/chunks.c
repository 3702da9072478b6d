/* Takes images and reads what their chunks tell about them. */
#include "Camera.h"

int main(void) {
  OxSimulatedCamera* camera = OxSimulatedCameraCreate();
  NODEMAP map = openCamera(camera);
  NODE exposure = feature(map, "ChunkExposureTime");
  OxSimulatedImage image;
  double microseconds = 0;

  set(map, "ChunkModeActive", "true");
  set(map, "ChunkSelector", "ExposureTime");
  set(map, "ChunkEnable", "true");
  set(map, "ExposureTime", "1000");
  set(map, "AcquisitionStart", "true");

  for (int i = 0; i < 3; ++i) {
    if (!OxSimulatedCameraNextImage(camera, &image)) return 1;
    /* Where the chunks lie is known from the transport layer. They are read in place. */
    check(NMAttachChunkList(map, image.Chunks, image.ChunkCount), "NMAttachChunkList");
    check(NGetAsFloat(exposure, &microseconds), "ChunkExposureTime");
    printf("frame %" PRIu64 ": ChunkExposureTime = %g\n", image.FrameID, microseconds);
    check(NMDetachAllChunks(map), "NMDetachAllChunks"); /* before the image's memory goes */
  }
  OxIfaceContainerReleaseUseCounter(exposure);
  closeCamera(map, camera);
  return 0;
}

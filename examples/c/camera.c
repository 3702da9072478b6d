/* Opens a camera by any of its names and shows a feature: camera GV01, camera 192.168.0.20, camera simulated. */
#include <OxBase/OxBase.h>
#include <OxCamera/OxCamera.h>
#include <inttypes.h>
#include <stdio.h>

static int failed(void) {
  char text[1024];
  size_t size = sizeof text;
  OxGetLastError(NULL, text, &size);
  fprintf(stderr, "%s\n", text);
  return 1;
}

int main(int argc, char** argv) {
  OXCAMERA camera;
  NODEMAP map;
  NODE width;
  int64_t value = 0;
  if (OxCameraOpen(argc > 1 ? argv[1] : "simulated", OX_CONTROL, &camera) != 0) return failed();
  if (OxCameraNodeMap(camera, &map) != 0) return failed();
  if (NMGetNode(map, "Width", &width) != 0) return failed();
  if (NSetAsInteger(width, 320) != 0) return failed();
  if (NGetAsInteger(width, &value) != 0) return failed();
  printf("Width = %" PRId64 "\n", value);
  OxIfaceContainerReleaseUseCounter(width);
  OxIfaceContainerReleaseUseCounter(map);
  OxIfaceContainerReleaseUseCounter(camera); /* gives the camera back */
  return 0;
}

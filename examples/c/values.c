/* Reads and writes features, and shows what a refused value says. */
#include "Camera.h"

int main(void) {
  OxSimulatedCamera* camera = OxSimulatedCameraCreate();
  NODEMAP map = openCamera(camera);
  NODE exposure = feature(map, "ExposureTime");
  NODE format = feature(map, "PixelFormat");
  NODE width = feature(map, "Width");
  double microseconds = 0;
  double least = 0;
  double most = 0;
  char text[256];
  size_t size = sizeof text;

  check(NInfoAsFloat(exposure, NI_Min, &least), "ExposureTime");
  check(NInfoAsFloat(exposure, NI_Max, &most), "ExposureTime");
  check(NSetAsFloat(exposure, 5000), "ExposureTime");
  check(NGetAsFloat(exposure, &microseconds), "ExposureTime");
  printf("ExposureTime = %g us of %g .. %g\n", microseconds, least, most);

  check(NGetAsString(format, text, &size), "PixelFormat");
  printf("PixelFormat = %s\n", text);

  if (NSetAsInteger(width, 1) != OXGENAPI_OK) {
    size = sizeof text;
    OxGetLastError(NULL, text, &size);
    printf("refused: %s\n", text);
  }
  OxIfaceContainerReleaseUseCounter(width);
  OxIfaceContainerReleaseUseCounter(format);
  OxIfaceContainerReleaseUseCounter(exposure);
  closeCamera(map, camera);
  return 0;
}

/* Takes a picture and saves it: grab GV01 picture.png. */
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
  TImage image;
  int i;
  if (OxCameraOpen(argc > 1 ? argv[1] : "simulated", OX_CONTROL, &camera) != 0) return failed();
  if (OxCameraStart(camera, 8) != 0) return failed();
  for (i = 0; i < 3; ++i) {
    if (OxCameraNextImage(camera, OX_WAIT_DEFAULT, &image) != 0) return failed();
    printf("image %" PRIu64 ": %" PRIu32 " x %" PRIu32 " %s\n", image.Count, image.Part.Width, image.Part.Height,
           image.Part.PixelFormatName);
    if (i == 2 && argc > 2) {
      size_t size = 0;
      if (OxCameraSaveImage(&image, argv[2], NULL, NULL, &size) != 0) return failed();
    }
    OxCameraReturnImage(camera, &image); /* it is filled again */
  }
  OxCameraStop(camera);
  OxIfaceContainerReleaseUseCounter(camera);
  return 0;
}

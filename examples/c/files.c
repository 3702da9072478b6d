/* Copies memory to a file of the camera and back. */
#include "Camera.h"

#include <string.h>

int main(void) {
  OxSimulatedCamera* camera = OxSimulatedCameraCreate();
  NODEMAP map = openCamera(camera);
  const char note[] = "calibrated in March";
  char* copy = NULL;
  size_t size = 0;

  check(NMUploadFileMemory(map, "UserFile1", note, strlen(note)), "upload");
  check(NMDownloadFileMemory(map, "UserFile1", NULL, &size), "size");
  copy = malloc(size);
  if (copy == NULL) return 1;
  check(NMDownloadFileMemory(map, "UserFile1", copy, &size), "download");
  printf("%zu bytes: %.*s\n", size, (int)size, copy);
  free(copy);
  closeCamera(map, camera);
  return 0;
}

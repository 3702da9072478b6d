/* Saves settings as text, changes a feature, and loads them again with each value read back. */
#include "Camera.h"

/* Called for each feature or line that cannot be saved or loaded. True: go on with the next. */
static bool onProblem(NODE node, uint32_t result, void* count) {
  char text[256];
  size_t size = sizeof text;
  (void)node;
  OxGetLastError(NULL, text, &size);
  printf("problem 0x%08" PRIx32 ": %s\n", result, text);
  ++*(int*)count;
  return true;
}

int main(void) {
  OxSimulatedCamera* camera = OxSimulatedCameraCreate();
  NODEMAP map = openCamera(camera);
  char settings[4096] = "";
  size_t size = sizeof settings;
  NODE width = feature(map, "Width");
  int64_t pixels = 0;
  int problems = 0;

  set(map, "Width", "320");
  check(NMSaveSetStringEx(map, settings, &size, "Width|Gain", onProblem, &problems), "save");
  printf("%s", settings);

  set(map, "Width", "640");
  check(NMLoadSetString(map, settings, true, onProblem, &problems), "load");
  check(NGetAsInteger(width, &pixels), "Width");
  printf("%d problems, Width = %" PRId64 "\n", problems, pixels);

  OxIfaceContainerReleaseUseCounter(width);
  closeCamera(map, camera);
  return 0;
}

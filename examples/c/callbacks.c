/* Is told of every change of a feature: by a write to it or to what it depends on, by an event, by an invalidation. */
#include "Camera.h"

/* Runs inside the call that made the change. */
static void onUpdate(NODE node, void* count) {
  int64_t bytes = 0;
  if (NGetAsInteger(node, &bytes) == OXGENAPI_OK) printf("LinePitch is now %" PRId64 "\n", bytes);
  ++*(int*)count;
}

int main(void) {
  OxSimulatedCamera* camera = OxSimulatedCameraCreate();
  NODEMAP map = openCamera(camera);
  NODE pitch = feature(map, "LinePitch");
  TCallbackHandle registration = 0;
  int updates = 0;

  check(NRegisterUpdate(pitch, onUpdate, &updates, &registration), "NRegisterUpdate");
  set(map, "Width", "320"); /* the line pitch depends on it */
  set(map, "Width", "160");
  check(NDeregisterUpdate(pitch, registration), "NDeregisterUpdate");
  set(map, "Width", "640"); /* nobody is told */
  printf("%d updates\n", updates);

  OxIfaceContainerReleaseUseCounter(pitch);
  closeCamera(map, camera);
  return 0;
}

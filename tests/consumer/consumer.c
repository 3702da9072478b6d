#include <OxBase/OxBase.h>
#include <OxGenApi/OxGenApi.h>
#include <OxSimulatedCamera.h>
#include <inttypes.h>
#include <stdio.h>

int main(void) {
  OxSimulatedCamera* camera = OxSimulatedCameraCreate();
  NODEMAP map = NULL;
  NODE width = NULL;
  int64_t value = 0;
  if (CreateNodeMap(&map) != 0 || NMLoadXMLString(map, OxSimulatedCameraDescription(camera)) != 0) return 1;
  if (NMConnectPort(map, OxSimulatedCameraRead, OxSimulatedCameraWrite, OxSimulatedCameraAccess, camera) != 0) return 2;
  if (NMGetNode(map, "Width", &width) != 0 || NSetAsInteger(width, 640) != 0) return 3;
  if (NGetAsInteger(width, &value) != 0) return 4;
  printf("Width = %" PRId64 "\n", value);
  OxIfaceContainerReleaseUseCounter(width);
  OxIfaceContainerReleaseUseCounter(map);
  OxSimulatedCameraDestroy(camera);
  return 0;
}

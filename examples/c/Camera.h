/* What the C examples have in common: a node map connected to the simulated camera. With a real one, its description
 * and two functions that read and write its registers take the place of OxSimulatedCamera. */
#include <OxBase/OxBase.h>
#include <OxGenApi/OxGenApi.h>
#include <OxSimulatedCamera.h>
#include <inttypes.h>
#include <stdio.h>
#include <stdlib.h>

/* Ends the program with the last error when a call has failed. */
static inline void check(uint32_t result, const char* what) {
  char text[256];
  size_t size = sizeof text;
  if (result == OXGENAPI_OK) return;
  OxGetLastError(NULL, text, &size);
  fprintf(stderr, "%s: 0x%08" PRIx32 " %s\n", what, result, text);
  exit(1);
}

static inline NODEMAP openCamera(OxSimulatedCamera* camera) {
  NODEMAP map = NULL;
  check(CreateNodeMap(&map), "CreateNodeMap");
  check(NMLoadXMLString(map, OxSimulatedCameraDescription(camera)), "NMLoadXMLString");
  check(NMConnectPort(map, OxSimulatedCameraRead, OxSimulatedCameraWrite, OxSimulatedCameraAccess, camera),
        "NMConnectPort");
  return map;
}

/* A feature, to be given back with OxIfaceContainerReleaseUseCounter. */
static inline NODE feature(NODEMAP map, const char* name) {
  NODE node = NULL;
  check(NMGetNode(map, name, &node), name);
  return node;
}

/* Sets a feature once: of commands, "true" executes. */
static inline void set(NODEMAP map, const char* name, const char* value) {
  NODE node = feature(map, name);
  check(NSetAsString(node, value), name);
  OxIfaceContainerReleaseUseCounter(node);
}

static inline void closeCamera(NODEMAP map, OxSimulatedCamera* camera) {
  OxIfaceContainerReleaseUseCounter(map);
  OxSimulatedCameraDestroy(camera);
}

/* The public headers are C: this file only has to compile, and to be called. */
#include "OxBase/OxBase.h"
#include "OxGenApi/OxGenApi.h"

uint32_t oxCallFromC(void);

uint32_t oxCallFromC(void) {
  NODEMAP nodeMap = 0;
  uint32_t count = 7;
  TNodeType type = NT_Integer;
  const TChunkData chunk = {1, 0, 0, 0};
  uint32_t result = CreateNodeMap(&nodeMap);
  if (result != OXGENAPI_OK) return result;
  if (NMNodeCount(nodeMap, &count) != OXGENAPI_E_INVALID_STATE || count != 7) return 1;
  if (NMAttachChunk(nodeMap, &chunk) != OXGENAPI_E_INVALID_ARGUMENT) return 2;
  if (NType(0, &type) != OXGENAPI_E_INVALID_HANDLE || type != NT_Invalid) return 3;
  if (NMLoadXML(nodeMap, 1, "two", 3.0) != OXGENAPI_E_NOT_SUPPORTED) return 4;
  return OxIfaceContainerReleaseUseCounter(nodeMap) < 0 ? 5 : OXGENAPI_OK;
}

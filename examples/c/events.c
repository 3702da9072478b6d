/* Delivers one event message to a node map and reads the feature that is bound to it. */
#include <OxBase/OxBase.h>
#include <OxGenApi/OxGenApi.h>
#include <inttypes.h>
#include <stdio.h>

/* A camera's description, cut down to one event with one value of its payload. */
static const char kDescription[] =
    "<RegisterDescription ModelName='Example' VendorName='Example' StandardNameSpace='None' SchemaMajorVersion='1' "
    "SchemaMinorVersion='1' SchemaSubMinorVersion='0' MajorVersion='1' MinorVersion='0' SubMinorVersion='0' "
    "ProductGuid='1' VersionGuid='1' xmlns='http://www.genicam.org/GenApi/Version_1_1'>"
    "<Port Name='ExposureEndPort'><EventID>9001</EventID></Port>"
    "<IntReg Name='EventExposureEndFrameID'><Address>0</Address><Length>4</Length><AccessMode>RO</AccessMode>"
    "<pPort>ExposureEndPort</pPort><Endianess>BigEndian</Endianess></IntReg>"
    "</RegisterDescription>";

static int report(const char* what) {
  char text[256];
  size_t size = sizeof text;
  uint32_t code = 0;
  OxGetLastError(&code, text, &size);
  printf("%s: 0x%08" PRIx32 " %s\n", what, code, text);
  return 1;
}

/* Runs inside the delivery, on the delivering thread. */
static void onUpdate(NODE node, void* count) {
  (void)node;
  ++*(int*)count;
}

int main(void) {
  const uint8_t payload[4] = {0, 0, 0, 42}; /* what follows the message's header */
  const TEventData event = {0x9001, payload, sizeof payload};
  NODEMAP map = NULL;
  NODE frameId = NULL;
  TCallbackHandle callback = 0;
  int updates = 0;
  int64_t value = 0;

  if (CreateNodeMap(&map) != 0) return report("CreateNodeMap");
  if (NMLoadXMLString(map, kDescription) != 0) return report("NMLoadXMLString");
  if (NMGetNode(map, "EventExposureEndFrameID", &frameId) != 0) return report("NMGetNode");
  if (NRegisterUpdate(frameId, onUpdate, &updates, &callback) != 0) return report("NRegisterUpdate");
  if (NMDeliverEvent(map, &event) != 0) return report("NMDeliverEvent");
  if (NGetAsInteger(frameId, &value) != 0) return report("NGetAsInteger");
  printf("%d update, EventExposureEndFrameID = %" PRId64 "\n", updates, value);

  OxIfaceContainerReleaseUseCounter(frameId);
  OxIfaceContainerReleaseUseCounter(map);
  return 0;
}

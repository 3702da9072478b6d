/* Attaches a chunk of an image buffer to a node map, reads it, and moves on to the next image of the same layout. */
#include <OxBase/OxBase.h>
#include <OxGenApi/OxGenApi.h>
#include <inttypes.h>
#include <stdio.h>

static const char kDescription[] =
    "<RegisterDescription ModelName='Example' VendorName='Example' StandardNameSpace='None' SchemaMajorVersion='1' "
    "SchemaMinorVersion='1' SchemaSubMinorVersion='0' MajorVersion='1' MinorVersion='0' SubMinorVersion='0' "
    "ProductGuid='1' VersionGuid='1' xmlns='http://www.genicam.org/GenApi/Version_1_1'>"
    "<Port Name='GainPort'><ChunkID>a004</ChunkID></Port>"
    "<IntReg Name='ChunkGain'><Address>0</Address><Length>2</Length><AccessMode>RO</AccessMode>"
    "<pPort>GainPort</pPort><Endianess>BigEndian</Endianess></IntReg>"
    "</RegisterDescription>";

static int report(const char* what) {
  char text[256];
  size_t size = sizeof text;
  uint32_t code = 0;
  OxGetLastError(&code, text, &size);
  printf("%s: 0x%08" PRIx32 " %s\n", what, code, text);
  return 1;
}

int main(void) {
  /* Four pixels, then the chunk's two bytes: where it lies is known from the transport layer. */
  uint8_t first[6] = {1, 2, 3, 4, 0, 7};
  uint8_t second[6] = {5, 6, 7, 8, 0, 12};
  const TChunkData chunk = {0xa004, first, 4, 2};
  NODEMAP map = NULL;
  NODE gain = NULL;
  int64_t value = 0;

  if (CreateNodeMap(&map) != 0) return report("CreateNodeMap");
  if (NMLoadXMLString(map, kDescription) != 0) return report("NMLoadXMLString");
  if (NMGetNode(map, "ChunkGain", &gain) != 0) return report("NMGetNode");

  if (NMAttachChunkList(map, &chunk, 1) != 0) return report("NMAttachChunkList");
  if (NGetAsInteger(gain, &value) != 0) return report("NGetAsInteger");
  printf("frame 1: ChunkGain = %" PRId64 "\n", value);

  if (NMUpdateChunks(map, second) != 0) return report("NMUpdateChunks");
  if (NGetAsInteger(gain, &value) != 0) return report("NGetAsInteger");
  printf("frame 2: ChunkGain = %" PRId64 "\n", value);

  NMDetachAllChunks(map); /* before the buffers go */
  OxIfaceContainerReleaseUseCounter(gain);
  OxIfaceContainerReleaseUseCounter(map);
  return 0;
}

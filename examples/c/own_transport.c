/* A transport of your own: two functions that read and write a device's registers. The device here is a lamp made of
 * memory, whose cable can be pulled; with a real one the functions send packets and wait for the answer. */
#include <OxBase/OxBase.h>
#include <OxGenApi/OxGenApi.h>
#include <inttypes.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

/* What the lamp can do. Mostly a file that comes with the device or out of it: NMLoadXMLFile loads one. */
static const char kDescription[] =
    "<RegisterDescription VendorName='Example' ModelName='Lamp' StandardNameSpace='None' SchemaMajorVersion='1'"
    " SchemaMinorVersion='1' SchemaSubMinorVersion='0' MajorVersion='1' MinorVersion='0' SubMinorVersion='0'"
    " ProductGuid='1' VersionGuid='1' xmlns='http://www.genicam.org/GenApi/Version_1_1'>"
    "<Category Name='Root'><pFeature>Brightness</pFeature></Category>"
    "<Integer Name='Brightness'><pValue>BrightnessReg</pValue><Max>1000</Max></Integer>"
    "<IntReg Name='BrightnessReg'><Address>0x100</Address><Length>2</Length><AccessMode>RW</AccessMode>"
    "<pPort>Device</pPort><Sign>Unsigned</Sign><Endianess>BigEndian</Endianess></IntReg>"
    "<Port Name='Device'/></RegisterDescription>";

typedef struct Lamp {
  unsigned char registers[0x200];
  bool isConnected;
} Lamp;

/* Whether the lamp grants an access. If not, the code and the text reach the caller of the feature. */
static int access(const Lamp* lamp, int64_t address, int64_t length) {
  const int64_t size = sizeof lamp->registers;
  const char* reason = NULL;
  if (!lamp->isConnected) reason = "the cable is pulled";
  if (length < 0 || address < 0 || length > size || address > size - length) reason = "there is no such register";
  if (reason == NULL) return 0;
  OxSetLastError(OXGENAPI_E_RUNTIME, reason);
  return (int)OXGENAPI_E_RUNTIME;
}

static int readRegisters(void* buffer, int64_t address, int64_t length, void* lamp) {
  const int result = access(lamp, address, length);
  if (result == 0) memcpy(buffer, ((Lamp*)lamp)->registers + address, (size_t)length);
  return result;
}

static int writeRegisters(const void* buffer, int64_t address, int64_t length, void* lamp) {
  const int result = access(lamp, address, length);
  if (result == 0) memcpy(((Lamp*)lamp)->registers + address, buffer, (size_t)length);
  return result;
}

/* Prints why the last call failed. */
static uint32_t told(uint32_t result) {
  char text[256] = "";
  size_t size = sizeof text;
  if (result != OXGENAPI_OK) {
    OxGetLastError(NULL, text, &size);
    printf("0x%08" PRIx32 " %s\n", result, text);
  }
  return result;
}

static void check(uint32_t result) {
  if (told(result) != OXGENAPI_OK) exit(1);
}

int main(void) {
  Lamp lamp = {{0}, true};
  NODEMAP map = NULL;
  NODE brightness = NULL;
  NODE port = NULL;
  int64_t value = 0;

  check(CreateNodeMap(&map));
  check(NMLoadXMLString(map, kDescription));
  check(NMConnectPort(map, readRegisters, writeRegisters, NULL, &lamp));
  check(NMGetNode(map, "Brightness", &brightness));
  check(NMGetNode(map, "Device", &port));

  check(NSetAsInteger(brightness, 300));
  check(NGetAsInteger(brightness, &value));
  printf("Brightness = %" PRId64 "\n", value);
  told(NSetAsInteger(brightness, 2000)); /* the library knows the limit: no access takes place */

  lamp.isConnected = false;
  told(NSetAsInteger(brightness, 400));

  /* It comes back as it was at power on. What was remembered of it is no longer true: forget what the port has read. */
  memset(lamp.registers, 0, sizeof lamp.registers);
  lamp.isConnected = true;
  check(NInvalidate(port));
  check(NGetAsInteger(brightness, &value));
  printf("back again: Brightness = %" PRId64 "\n", value);

  OxIfaceContainerReleaseUseCounter(port);
  OxIfaceContainerReleaseUseCounter(brightness);
  OxIfaceContainerReleaseUseCounter(map);
  return 0;
}

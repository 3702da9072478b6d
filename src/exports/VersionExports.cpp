#include "OxGenApi/Version.h"

extern "C" {

uint32_t GetGenApiVersion(uint32_t* Major, uint32_t* Minor, uint32_t* SubMinor) {
  *Major = 3;
  *Minor = 4;
  *SubMinor = 2;
  return OXGENAPI_OK;
}

void Resource_GetFileVersion(uint32_t* Major, uint32_t* Minor, uint32_t* Build) {
  *Major = 3;
  *Minor = 1;
  *Build = 0;
}

const char* Resource_GetOriginalFileName(void) { return "libOxGenApi.so"; }

}  // extern "C"

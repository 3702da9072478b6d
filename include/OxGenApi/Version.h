/* Which library file is loaded, and which GenApi release it stands on. These functions need no handle, never fail and
 * leave the last error alone; any thread may call them. */
#ifndef OXGENAPI_VERSION_H
#define OXGENAPI_VERSION_H

#include "OxGenApi/Types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The version of the GenApi release. Result: always 0. All three pointers must be valid. */
OXGENAPI_EXPORT uint32_t GetGenApiVersion(uint32_t* Major, uint32_t* Minor, uint32_t* SubMinor);

/* The version of this library's file. All three pointers must be valid. */
OXGENAPI_EXPORT void Resource_GetFileVersion(uint32_t* Major, uint32_t* Minor, uint32_t* Build);

/* The name of this library's file without its version suffix; the text belongs to the library. */
OXGENAPI_EXPORT const char* Resource_GetOriginalFileName(void);

#ifdef __cplusplus
}
#endif

#endif

/* The header serves a C program as well. */
#include "OxBase/OxBase.h"

int32_t setLastErrorFromC(uint32_t code, const char* text);

int32_t setLastErrorFromC(uint32_t code, const char* text) { return OxSetLastError(code, text); }

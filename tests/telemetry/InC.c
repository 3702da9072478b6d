/* The header serves a C program as well. */
#include "OxTelemetry/OxTelemetry.h"

_Static_assert(sizeof(OxTAttribute) == 24, "name, tag, eight bytes of value");
_Static_assert(sizeof(OxTSettings) == 12, "three 32-bit fields");

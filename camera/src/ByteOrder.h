// The byte order of four-byte registers of old network cameras. Before schema version 1.1 a description counted on
// drivers that turned such a register into a number of the host; drivers of today hand on bytes as they came. Some
// cameras follow the old rule and claim a newer schema, or the other way round.
#pragma once

#include <OxCamera/CameraTypes.h>

#include <string>

namespace ox::camera {

struct DescribedCamera {
  std::string vendor;
  std::string model;
  bool oldRuleApplies;  // a camera of a protocol that the rule is about
  int64_t schemaMajor;
  int64_t schemaMinor;
};

// Whether accesses of four bytes are swapped: by `wanted`, else by the first line that fits in the lists of known
// cameras, else by the rule. The lists: the file in OXGENAPI_BYTE_ORDER, or byte-order.conf in the folder oxgenapi of
// the user's configuration and of /etc. A line is VENDOR|MODEL|swapped or VENDOR|MODEL|as-sent, with the wildcards of
// shells in both names; # begins a remark. A line that is none of this is passed over.
bool swapsFourBytes(const DescribedCamera& camera, TByteOrder wanted);

}  // namespace ox::camera

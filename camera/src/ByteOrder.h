// The byte order of words of four bytes of network cameras. Before schema version 1.1 a description counted on drivers
// that moved such a word as a register, since then as memory. On most cameras both give the same bytes; on some they
// come in the other order, and some of those claim the wrong schema version.
#pragma once

#include <OxCamera/CameraTypes.h>

#include <string>

namespace ox::camera {

struct DescribedCamera {
  std::string vendor;
  std::string model;
  int64_t schemaMajor;
  int64_t schemaMinor;
};

// Whether words are moved as registers: by `wanted`, else by the first line that fits in the lists of known cameras,
// else by the rule. The lists: the file in OXGENAPI_BYTE_ORDER, or byte-order.conf in the folder oxgenapi of the user's
// configuration and of /etc. A line is VENDOR|MODEL|register or VENDOR|MODEL|memory, with the wildcards of shells in
// both names; # starts a comment. Any other line is ignored.
bool usesRegisterAccess(const DescribedCamera& camera, TByteOrder wanted);

}  // namespace ox::camera

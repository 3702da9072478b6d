#include "Versions.h"

#include <OxGenApi/OxGenApi.h>

namespace tool {
namespace {

std::string dotted(void (*versionOf)(uint32_t*, uint32_t*, uint32_t*)) {
  uint32_t major = 0;
  uint32_t minor = 0;
  uint32_t last = 0;
  versionOf(&major, &minor, &last);
  return std::to_string(major) + "." + std::to_string(minor) + "." + std::to_string(last);
}

}  // namespace

std::string libraryVersion() {
  return dotted(
      [](uint32_t* major, uint32_t* minor, uint32_t* build) { Resource_GetFileVersion(major, minor, build); });
}

std::string genApiVersion() {
  return dotted([](uint32_t* major, uint32_t* minor, uint32_t* subMinor) { GetGenApiVersion(major, minor, subMinor); });
}

}  // namespace tool

// Fixed-width integers, the names of the two namespaces, and the version number type.
#pragma once

#include <cstddef>
#include <cstdint>

// Strings, exceptions and integer casts live here ...
#define GENICAM_NAMESPACE GenICam_3_4_SI
// ... and everything else, nodes and firmware classes included, here.
#define GENAPI_NAMESPACE GenApi_3_4_SI

namespace GENICAM_NAMESPACE {

// A three-part version, as descriptions and schemas carry it.
struct Version_t {
  uint16_t Major = 0;
  uint16_t Minor = 0;
  uint16_t SubMinor = 0;
};

inline constexpr bool operator==(const Version_t& a, const Version_t& b) noexcept {
  return a.Major == b.Major && a.Minor == b.Minor && a.SubMinor == b.SubMinor;
}

}  // namespace GENICAM_NAMESPACE

// Limits of what an update file may ask for; each far above any real update.
#pragma once
#include <cstddef>
#include <cstdint>

#include "Base/GCTypes.h"

namespace GENAPI_NAMESPACE {

inline constexpr uint64_t kMaxGufBytes = uint64_t{4} << 30;            // the update file
inline constexpr uint64_t kMaxControlBytes = uint64_t{4} << 20;        // control.xml after inflating
inline constexpr uint64_t kMaxDataFileBytes = uint64_t{2} << 30;       // one data file after inflating
inline constexpr uint64_t kMaxInflatedBytes = uint64_t{8} << 30;       // all members together
inline constexpr uint64_t kMaxInflateRatio = 1000;                     // inflated to stored, per member
inline constexpr uint64_t kMaxZipDirectoryBytes = uint64_t{16} << 20;  // held in memory while it is read
inline constexpr size_t kMaxControlNodes = 100'000;
inline constexpr int kMaxControlDepth = 32;
inline constexpr size_t kMaxUpdates = 1'000;
inline constexpr size_t kMaxProcedures = 1'000;
inline constexpr size_t kMaxStepsPerProcedure = 10'000;
inline constexpr size_t kMaxPatternCharacters = 1'000;
inline constexpr int64_t kMaxPatternMemory = int64_t{1} << 20;  // of one compiled expression
inline constexpr size_t kMaxProgramSteps = 1'000'000;           // of all expressions of a file; about 16 bytes each

}  // namespace GENAPI_NAMESPACE

// Limits of what a description may ask for; each far above anything seen in the field.
#pragma once
#include <cstddef>
#include <cstdint>

#include "Base/GCTypes.h"

namespace GENAPI_NAMESPACE {

inline constexpr size_t kMaxDescriptionBytes = 64u << 20;  // after unzipping
inline constexpr size_t kMaxZipRatio = 200;                // inflated to stored, counted while inflating
inline constexpr size_t kMaxLeadingText = 4u << 10;        // bytes before the first tag
inline constexpr int kMaxXmlDepth = 64;                    // nested elements
inline constexpr size_t kMaxXmlTags = 8'000'000;           // opening and closing; bounds what the parser may allocate
inline constexpr size_t kMaxProperties = 8'000'000;        // generated ones included: entries repeat their StructReg's
inline constexpr size_t kMaxNameBytes = 512;               // node names are repeated in the names of generated nodes
inline constexpr size_t kMaxNotes = 10'000;                // later ones are counted only
inline constexpr size_t kMaxNodes = 500'000;               // entry and generated nodes included
inline constexpr size_t kMaxLinksPerNode = 65'536;
inline constexpr size_t kMaxEnumEntries = 65'536;
inline constexpr size_t kMaxClosureBytes = 8u << 20;    // remembered dependency closures per description
inline constexpr int64_t kMaxRegisterBytes = 16 << 20;  // tested before any allocation
inline constexpr int kMaxLinkDepth = 512;               // nodes that one evaluation may pass through
inline constexpr size_t kMaxCachedPlaces = 65'536;      // remembered register contents per node map
inline constexpr int64_t kMaxCachedBytes = 64 << 20;    // their length together; the oldest places go first
inline constexpr int kMaxOperationNesting = 64;         // operations started inside callbacks and ports
inline constexpr int kMaxOperationSteps = 65'536;       // nodes that one call may write to, counted at each visit

}  // namespace GENAPI_NAMESPACE

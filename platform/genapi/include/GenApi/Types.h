// All enumerations of the programming interface, and what can be asked of their values alone. The numbers are part of
// the contract: descriptions can read some of them in formulas, and callers store them.
#pragma once

#include <Base/GCString.h>
#include <Base/GCStringVector.h>
#include <Base/GCTypes.h>

namespace GENAPI_NAMESPACE {

using GENICAM_NAMESPACE::gcstring;
using GENICAM_NAMESPACE::gcstring_vector;
using GENICAM_NAMESPACE::Version_t;

typedef gcstring_vector StringList_t;

// What can be done with a node right now.
enum EAccessMode {
  NI = 0,                    // not implemented
  NA = 1,                    // not available
  WO = 2,                    // write only
  RO = 3,                    // read only
  RW = 4,                    // read and write
  _UndefinedAccesMode = 5,   // not yet determined
  _CycleDetectAccesMode = 6  // internal marker, never returned
};

// For whom a feature is meant.
enum EVisibility { Beginner = 0, Expert = 1, Guru = 2, Invisible = 3, _UndefinedVisibility = 99 };

// What happens to a register's cached bytes on a write.
enum ECachingMode {
  NoCache = 0,
  WriteThrough = 1,  // the written value is the cached value
  WriteAround = 2,   // a write drops the cached value
  _UndefinedCachingMode = 3
};

// How a number should be shown and edited.
enum ERepresentation {
  Linear = 0,
  Logarithmic = 1,
  Boolean = 2,
  PureNumber = 3,
  HexNumber = 4,
  IPV4Address = 5,
  MACAddress = 6,
  _UndefinedRepresentation = 7
};

enum EEndianess { BigEndian = 0, LittleEndian = 1, _UndefinedEndian = 2 };
enum ESign { Signed = 0, Unsigned = 1, _UndefinedSign = 2 };

// Whether a name is the standard's or the maker's own.
enum ENameSpace { Custom = 0, Standard = 1, _UndefinedNameSpace = 2 };
enum EStandardNameSpace { None = 0, GEV = 1, IIDC = 2, CL = 3, USB = 4, _UndefinedStandardNameSpace = 5 };
enum EYesNo { No = 0, Yes = 1, _UndefinedYesNo = 2 };

// How a converter's result moves with its source.
enum ESlope { Increasing = 0, Decreasing = 1, Varying = 2, Automatic = 3, _UndefinedESlope = 4 };

// How a float is printed.
enum EDisplayNotation { fnAutomatic = 0, fnFixed = 1, fnScientific = 2, _UndefinedEDisplayNotation = 3 };

// Which values between minimum and maximum a number can take.
enum EIncMode { noIncrement = 0, fixedIncrement = 1, listIncrement = 2 };

enum EInterfaceType {
  intfIValue = 0,
  intfIBase = 1,
  intfIInteger = 2,
  intfIBoolean = 3,
  intfICommand = 4,
  intfIFloat = 5,
  intfIString = 6,
  intfIRegister = 7,
  intfICategory = 8,
  intfIEnumeration = 9,
  intfIEnumEntry = 10,
  intfIPort = 11
};

// Which neighbours of a node a list holds.
enum ELinkType {
  ctParentNodes = 0,
  ctReadingChildren = 1,
  ctWritingChildren = 2,
  ctInvalidatingChildren = 3,
  ctDependingNodes = 4,
  ctTerminalNodes = 5
};

// When a callback fires: while the map's lock is held, or after it was released.
enum ECallbackType { cbPostInsideLock = 1, cbPostOutsideLock = 2 };

// Which value a formula takes in: the source's, the user's, or none.
enum EInputDirection { idFrom = 0, idTo = 1, idNone = 2 };

enum EGenApiSchemaVersion { v1_0 = 1, v1_1 = 2, _Undefined = -1 };

// Accepted for compatibility; loading always checks everything.
enum EXMLValidation : uint32_t { xvDefault = 0, xvLoad = 1, xvCycles = 2, xvSFNC = 4, xvAll = 0xffffffff };

enum EContentType { ContentType_Auto = 0, ContentType_Xml = 1, ContentType_ZippedXml = 2 };

enum ECacheUsage {
  CacheUsage_Automatic = 0,
  CacheUsage_ForceWrite = 1,
  CacheUsage_ForceRead = 2,
  CacheUsage_Ignore = 3
};

enum EFirmwareUpdateProgressStepType {
  ProgressStepType_CheckPreconditions = 0,
  ProgressStepType_AcquireUpdateData = 1,
  ProgressStepType_FeatureWrite = 2,
  ProgressStepType_FeatureExecute = 3,
  ProgressStepType_FeatureAssert = 4,
  ProgressStepType_FileUpload = 5,
  ProgressStepType_DeviceReset = 6,
  ProgressStepType_Invalid = 7
};

inline constexpr bool IsReadable(EAccessMode mode) noexcept { return mode == RO || mode == RW; }
inline constexpr bool IsWritable(EAccessMode mode) noexcept { return mode == WO || mode == RW; }
inline constexpr bool IsAvailable(EAccessMode mode) noexcept { return mode != NI && mode != NA; }
inline constexpr bool IsImplemented(EAccessMode mode) noexcept { return mode != NI; }

// The rights that remain when both modes must allow an operation.
inline constexpr EAccessMode Combine(EAccessMode a, EAccessMode b) noexcept {
  if (a == NI || b == NI) return NI;
  if (a == NA || b == NA) return NA;
  if ((a == RO && b == WO) || (a == WO && b == RO)) return NA;
  if (a == RO || b == RO) return RO;
  if (a == WO || b == WO) return WO;
  return RW;
}

// The more restrictive of two visibilities.
inline constexpr EVisibility Combine(EVisibility a, EVisibility b) noexcept { return a > b ? a : b; }

// The weaker of two caching modes: NoCache before WriteAround before WriteThrough.
inline constexpr ECachingMode Combine(ECachingMode a, ECachingMode b) noexcept {
  if (a == NoCache || b == NoCache) return NoCache;
  if (a == WriteAround || b == WriteAround) return WriteAround;
  return WriteThrough;
}

// Whether a feature of `visibility` is shown to a user who sees everything up to `maxVisibility`.
inline constexpr bool IsVisible(EVisibility visibility, EVisibility maxVisibility) noexcept {
  return visibility <= maxVisibility;
}
inline constexpr bool IsCacheable(ECachingMode mode) noexcept { return mode != NoCache; }

}  // namespace GENAPI_NAMESPACE

// What one update of an update file says about itself.
#pragma once
#include <cstddef>
#include <memory>

#include "Base/GCString.h"

namespace GENAPI_NAMESPACE {

// Keys that every reader of update files knows; files may hold others.
inline constexpr char FirmwareUpdateInfoKey_Description[] = "Description";
inline constexpr char FirmwareUpdateInfoKey_Version[] = "Version";
inline constexpr char FirmwareUpdateInfoKey_VersionStyle[] = "VersionStyle";
inline constexpr char FirmwareUpdateInfoKey_VersionExtractionPattern[] = "VersionExtractionPattern";
inline constexpr char FirmwareUpdateInfoKey_ReleaseNotes[] = "ReleaseNotes";
inline constexpr char FirmwareUpdateInfoKey_ReleaseNotesURL[] = "ReleaseNotesURL";
inline constexpr char FirmwareUpdateInfoKey_UserSetPersistence[] = "UserSetPersistence";
inline constexpr char FirmwareUpdateInfoKey_SequencerSetPersistence[] = "SequencerSetPersistence";
// Values of VersionStyle, and of the two persistence keys.
inline constexpr char FirmwareUpdateInfoValue_VersionStyle_Dotted[] = "dotted";
inline constexpr char FirmwareUpdateInfoValue_VersionStyle_SemVer[] = "semver";
inline constexpr char FirmwareUpdateInfoKey_PersistenceSupport_None[] = "none";
inline constexpr char FirmwareUpdateInfoKey_PersistenceSupport_Full[] = "full";

// Shared immutable content: copies are cheap and may be used by several threads. Strings returned live as long as any
// copy of the info. Queries by key never throw.
class CFirmwareUpdateInfo {
 public:
  // An invalid info: no texts, matches no device.
  CFirmwareUpdateInfo();
  // The same update of a file with the same path, size and SHA-256 of its package; two invalid infos are equal.
  bool operator==(const CFirmwareUpdateInfo& other) const;
  bool operator!=(const CFirmwareUpdateInfo& other) const { return !(*this == other); }
  bool IsValid() const;
  // "" when invalid.
  const char* GetUpdateFilename() const;

  // Keys in the order of their first mention; one value per key, chosen by language when the file was read.
  size_t GetCountOfInfos() const;
  // Throw InvalidArgumentException for an index out of range. A literal 0 is ambiguous: pass a size_t.
  const char* GetInfoKey(size_t Index) const;
  const char* GetInfo(size_t Index) const;
  // "" or the default when there is no such key or it is null.
  const char* GetInfo(const char* Key) const;
  const char* GetInfo(const char* Key, const char* DefaultIfMissing) const;
  // The two letters of the value's language as the file writes them; "" for none and for a missing key.
  const char* GetInfoLanguageCode(const char* Key) const;

  // The version inside a device's firmware version text: the first group of VersionExtractionPattern, or the whole
  // match without groups. Throws LogicalErrorException (VersionStyle or the pattern is missing), RuntimeException (no
  // match).
  GENICAM_NAMESPACE::gcstring ExtractVersionFromDeviceFirmwareVersion(
      const GENICAM_NAMESPACE::gcstring& DeviceFirmwareVersion) const;

  // Made by the engine's reader.
  struct Content;
  explicit CFirmwareUpdateInfo(std::shared_ptr<const Content> content);
  const Content* content() const { return content_.get(); }

 private:
  std::shared_ptr<const Content> content_;
};

}  // namespace GENAPI_NAMESPACE

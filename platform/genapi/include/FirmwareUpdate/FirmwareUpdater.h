// Reads update files (GUF) and applies them to devices.
#pragma once
#include <cstddef>

#include "Base/GCString.h"
#include "FirmwareUpdate/FirmwareUpdatableDevice.h"
#include "FirmwareUpdate/FirmwareUpdateInfo.h"
#include "FirmwareUpdate/FirmwareUpdateInfoCollector.h"
#include "FirmwareUpdate/FirmwareUpdateProgressObserver.h"

namespace GENAPI_NAMESPACE {

class INodeMap;

// An update file is a zip archive with the stored members package.zip and, optionally, package.p7s, a detached
// signature over package.zip. package.zip holds control.xml and the data files it names. Nothing is ever written to the
// host's file system. One updater is used by one thread at a time; it keeps no state between calls.
//
// Reading calls throw FileNotFoundException (no such file), FileIOException (read error), FormatException (not an
// update file, a limit exceeded, unsafe or duplicate member names, encrypted members, local headers that disagree with
// the directory).
class CFirmwareUpdater {
 public:
  CFirmwareUpdater() = default;
  CFirmwareUpdater(const CFirmwareUpdater&) = delete;
  CFirmwareUpdater& operator=(const CFirmwareUpdater&) = delete;

  // Byte ranges of the package and of its signature inside the file, so that the caller can check the signature; 0, 0
  // for a file without signature. The engine itself does not check signatures.
  void GetSignatureCheckInfo(const GENICAM_NAMESPACE::gcstring& Filename, size_t& OffsetPackageZipFile,
                             size_t& SizePackageZipFile, size_t& OffsetSignatureFile, size_t& SizeSignatureFile) const;

  // One OnUpdateRead per update, in file order, after the whole control file has been read and found well. Texts are
  // chosen per key: preferred language (two letters), then "en", then no language, then the first.
  void ReadFirmwareUpdateInfos(const GENICAM_NAMESPACE::gcstring& Filename, IFirmwareUpdateInfoCollector& Collector,
                               const char* pPreferredLanguageCode = nullptr) const;

  // True when every condition of the update holds: the feature exists, is readable and its whole text matches. False
  // for an invalid info. Throws InvalidArgumentException for a null map; port failures pass.
  bool FirmwareUpdateMatchesDevice(INodeMap* pNodeMapOfOpenDevice, const CFirmwareUpdateInfo& Info) const;

  // Prepares the device, checks the conditions and the file again, carries out the update's steps and cleans up.
  // Throws InvalidArgumentException (null device, invalid info, device does not match), RuntimeException (no node map,
  // file changed, step failed), TimeoutException, what nodes, ports and the device throw.
  void ApplyUpdate(IFirmwareUpdatableDevice* pDevice, const CFirmwareUpdateInfo& Info,
                   IFirmwareUpdateProgressObserver* pObserver = nullptr, const char* pPreferredLanguageCode = nullptr);

  // Checks the whole file: every procedure referenced exists, every data file exists and inflates with the right
  // checksum. Throws FileNotFoundException (the file, package.zip, control.xml or a data file is missing),
  // FileIOException (extraction fails), FormatException (mandatory information missing or wrong), RuntimeException
  // (control.xml is not well-formed). Unused files and procedures are tolerated.
  void VerifyGufFile(const GENICAM_NAMESPACE::gcstring& Filename);
};

}  // namespace GENAPI_NAMESPACE

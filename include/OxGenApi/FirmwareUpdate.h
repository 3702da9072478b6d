/* Firmware updates: what a GenICam update file holds, and applying one of its entries to a device.
 *
 * The conventions of OxGenApi.h hold, save one: memory that runs out is a failure like any other here, with the code
 * named below and its text as the reason. "Reason" is the text of the failure met while the file was read. Every
 * function but the two that create can also report INVALID_HANDLE. An updater may be used by one thread at a time. */
#ifndef OXGENAPI_FIRMWAREUPDATE_H
#define OXGENAPI_FIRMWAREUPDATE_H

#include "OxGenApi/Types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Creates an updater for the update file at Path.
 *   Verify   low byte non-zero: read the whole file and check it now; otherwise a missing or bad file shows up only
 *            when it is first asked or applied
 *   Updater  out: the handle, one reference owned by the caller; zero on failure
 * Errors: RUNTIME with the reason, or "Unknown error validating guf file", when the verification fails;
 *         UNSPECIFIED with the reason, or "Unknown error updating firmware", when the updater cannot be made. */
OXGENAPI_EXPORT uint32_t CreateFirmwareUpdater(const char* Path, int Verify, FWUPDATER* Updater);
OXGENAPI_EXPORT uint32_t CreateFirmwareUpdaterW(const wchar_t* Path, int Verify, FWUPDATER* Updater);

/* How many update entries the file holds; reads the file.
 * Errors: UNSPECIFIED with the reason, or "Failed to read firmware update infos.". */
OXGENAPI_EXPORT uint32_t FWUpdateFileCount(FWUPDATER Updater, size_t* FileCount);

/* How many informations (key, value, language) the entry FileIndex holds; reads the file. Pass an index below
 * FWUpdateFileCount; any other is not refused and has none.
 * Errors: UNSPECIFIED with the reason, or "Failed to read firmware update infos.". */
OXGENAPI_EXPORT uint32_t FWUpdateFileInfoCount(FWUPDATER Updater, size_t FileIndex, size_t* InfoCount);

/* One text about one information of an entry; reads the file.
 *   FileIndex  the entry, below FWUpdateFileCount
 *   InfoIndex  the information, below FWUpdateFileInfoCount
 *   Info       key, value or language code
 *   Buffer, InfoSize  text buffer and its in/out size in elements
 * Errors: UNSPECIFIED with the reason, or "Failed to read firmware update infos.";
 *         FIRMWARE_INDEX "FileIndex not present in guf file." or "InfoIndex not present in guf file.";
 *         UNSPECIFIED "guf file information is empty or not valid." for an entry that cannot be used;
 *         NOT_SUPPORTED "FirmwareUpdateInfo command not supported." for an unknown Info. */
OXGENAPI_EXPORT uint32_t FWUpdateFileInfo(FWUPDATER Updater, size_t FileIndex, size_t InfoIndex,
                                          TFirmwareUpdateInfo Info, char* Buffer, size_t* InfoSize);
OXGENAPI_EXPORT uint32_t FWUpdateFileInfoW(FWUPDATER Updater, size_t FileIndex, size_t InfoIndex,
                                           TFirmwareUpdateInfo Info, wchar_t* Buffer, size_t* InfoSize);

/* Applies one entry to the device behind a node map, on the calling thread, until it is done.
 *   NodeMap              the device's node map, loaded and connected
 *   UpdateFileSelection  the entry, below FWUpdateFileCount
 *   Callback, pPrivate   called on this thread whenever the update resets the device; see TFirmwareReset. Null when
 *                        the device cannot be reset: such a step then leaves the update without a device.
 * The updater keeps a reference to the last node map it worked on until it is used again or released. NodeMap itself
 * lives until this call returns, after a reset too: what its end brings about, such as the notification of a proxy,
 * comes only then.
 * Errors: INVALID_HANDLE for the updater, then for the node map; UNSPECIFIED "No NodeMap loaded, yet";
 *         UNSPECIFIED with the reason, or "Unknown error updating firmware", when the update fails: the device is then
 *         in the state that the last completed step left. */
OXGENAPI_EXPORT uint32_t FWUpdate(FWUPDATER Updater, NODEMAP NodeMap, size_t UpdateFileSelection,
                                  TFirmwareReset Callback, void* pPrivate);

#ifdef __cplusplus
}
#endif

#endif

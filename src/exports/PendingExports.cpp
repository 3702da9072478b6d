// PENDING: exports whose objects are not there yet. They refuse invalid handles and fail with "Unspecified error"
// otherwise; each moves out of this file with its object, and the file goes with the last of them.
#include "ExportFrame.h"
#include "NodeMapBase.h"
#include "OxGenApi/FirmwareUpdate.h"
#include "OxGenApi/NodeMap.h"

using orxGenApi::args;
using orxGenApi::NodeMapBase;
using orxGenApi::onObject;
using orxGenApi::refuse;

namespace {

template <class Object>
uint32_t pending(Object&) {
  throw orxGenApi::orx_error(OXGENAPI_E_UNSPECIFIED, orxGenApi::kUnspecifiedError);
}

}  // namespace

extern "C" {

uint32_t NMLoadSet(NODEMAP NodeMap, const char* Filename, TSettingsCallback Callback, void* pPrivate) {
  return onObject<NodeMapBase>(
      NodeMap, args("NodeMap", NodeMap, "Filename", Filename, "Callback", Callback, "pPrivate", pPrivate),
      pending<NodeMapBase>);
}

uint32_t NMLoadSetW(NODEMAP NodeMap, const wchar_t* Filename, TSettingsCallback Callback, void* pPrivate) {
  return onObject<NodeMapBase>(
      NodeMap, args("NodeMap", NodeMap, "Filename", Filename, "Callback", Callback, "pPrivate", pPrivate),
      pending<NodeMapBase>);
}

uint32_t NMLoadSetEx(NODEMAP NodeMap, const char* Filename, bool Validate, TSettingsCallback Callback, void* pPrivate) {
  return onObject<NodeMapBase>(
      NodeMap,
      args("NodeMap", NodeMap, "Filename", Filename, "Validate", Validate, "Callback", Callback, "pPrivate", pPrivate),
      pending<NodeMapBase>);
}

uint32_t NMLoadSetExW(NODEMAP NodeMap, const wchar_t* Filename, bool Validate, TSettingsCallback Callback,
                      void* pPrivate) {
  return onObject<NodeMapBase>(
      NodeMap,
      args("NodeMap", NodeMap, "Filename", Filename, "Validate", Validate, "Callback", Callback, "pPrivate", pPrivate),
      pending<NodeMapBase>);
}

uint32_t NMLoadSetString(NODEMAP NodeMap, const char* Settings, bool Validate, TSettingsCallback Callback,
                         void* pPrivate) {
  return onObject<NodeMapBase>(
      NodeMap,
      args("NodeMap", NodeMap, "Settings", Settings, "Validate", Validate, "Callback", Callback, "pPrivate", pPrivate),
      pending<NodeMapBase>);
}

uint32_t NMLoadSetStringW(NODEMAP NodeMap, const wchar_t* Settings, bool Validate, TSettingsCallback Callback,
                          void* pPrivate) {
  return onObject<NodeMapBase>(
      NodeMap,
      args("NodeMap", NodeMap, "Settings", Settings, "Validate", Validate, "Callback", Callback, "pPrivate", pPrivate),
      pending<NodeMapBase>);
}

uint32_t NMSaveSet(NODEMAP NodeMap, const char* Filename, TSettingsCallback Callback, void* pPrivate) {
  return onObject<NodeMapBase>(
      NodeMap, args("NodeMap", NodeMap, "Filename", Filename, "Callback", Callback, "pPrivate", pPrivate),
      pending<NodeMapBase>);
}

uint32_t NMSaveSetW(NODEMAP NodeMap, const wchar_t* Filename, TSettingsCallback Callback, void* pPrivate) {
  return onObject<NodeMapBase>(
      NodeMap, args("NodeMap", NodeMap, "Filename", Filename, "Callback", Callback, "pPrivate", pPrivate),
      pending<NodeMapBase>);
}

uint32_t NMSaveSetEx(NODEMAP NodeMap, const char* Filename, const char* FeatureNames, TSettingsCallback Callback,
                     void* pPrivate) {
  return onObject<NodeMapBase>(NodeMap,
                               args("NodeMap", NodeMap, "Filename", Filename, "FeatureNames", FeatureNames, "Callback",
                                    Callback, "pPrivate", pPrivate),
                               pending<NodeMapBase>);
}

uint32_t NMSaveSetExW(NODEMAP NodeMap, const wchar_t* Filename, const wchar_t* FeatureNames, TSettingsCallback Callback,
                      void* pPrivate) {
  return onObject<NodeMapBase>(NodeMap,
                               args("NodeMap", NodeMap, "Filename", Filename, "FeatureNames", FeatureNames, "Callback",
                                    Callback, "pPrivate", pPrivate),
                               pending<NodeMapBase>);
}

uint32_t NMSaveSetString(NODEMAP NodeMap, char* Settings, size_t* SettingsSize, TSettingsCallback Callback,
                         void* pPrivate) {
  return onObject<NodeMapBase>(NodeMap,
                               args("NodeMap", NodeMap, "Settings", Settings, "SettingsSize", SettingsSize, "Callback",
                                    Callback, "pPrivate", pPrivate),
                               pending<NodeMapBase>);
}

uint32_t NMSaveSetStringW(NODEMAP NodeMap, wchar_t* Settings, size_t* SettingsSize, TSettingsCallback Callback,
                          void* pPrivate) {
  return onObject<NodeMapBase>(NodeMap,
                               args("NodeMap", NodeMap, "Settings", Settings, "SettingsSize", SettingsSize, "Callback",
                                    Callback, "pPrivate", pPrivate),
                               pending<NodeMapBase>);
}

uint32_t NMSaveSetStringEx(NODEMAP NodeMap, char* Settings, size_t* SettingsSize, const char* FeatureNames,
                           TSettingsCallback Callback, void* pPrivate) {
  return onObject<NodeMapBase>(NodeMap,
                               args("NodeMap", NodeMap, "Settings", Settings, "SettingsSize", SettingsSize,
                                    "FeatureNames", FeatureNames, "Callback", Callback, "pPrivate", pPrivate),
                               pending<NodeMapBase>);
}

uint32_t NMSaveSetStringExW(NODEMAP NodeMap, wchar_t* Settings, size_t* SettingsSize, const wchar_t* FeatureNames,
                            TSettingsCallback Callback, void* pPrivate) {
  return onObject<NodeMapBase>(NodeMap,
                               args("NodeMap", NodeMap, "Settings", Settings, "SettingsSize", SettingsSize,
                                    "FeatureNames", FeatureNames, "Callback", Callback, "pPrivate", pPrivate),
                               pending<NodeMapBase>);
}

uint32_t NMCreateStream(NODEMAP NodeMap, TStreamType StreamType, NODEMAPSTREAM* Stream) {
  return onObject<NodeMapBase>(NodeMap, args("NodeMap", NodeMap, "StreamType", StreamType, "Stream", Stream),
                               pending<NodeMapBase>);
}

uint32_t NMStreamPush(NODEMAPSTREAM NodeMapStream, NODE Node) {
  return refuse(args("NodeMapStream", NodeMapStream, "Node", Node), OXGENAPI_E_INVALID_HANDLE,
                "Invalid NODEMAPSTREAM handle");
}

uint32_t NMStreamDump(NODEMAPSTREAM NodeMapStream, char* Settings, size_t* SettingsSize) {
  return refuse(args("NodeMapStream", NodeMapStream, "Settings", Settings, "SettingsSize", SettingsSize),
                OXGENAPI_E_INVALID_HANDLE, "Invalid NODEMAPSTREAM handle");
}

uint32_t NMStreamDumpW(NODEMAPSTREAM NodeMapStream, wchar_t* Settings, size_t* SettingsSize) {
  return refuse(args("NodeMapStream", NodeMapStream, "Settings", Settings, "SettingsSize", SettingsSize),
                OXGENAPI_E_INVALID_HANDLE, "Invalid NODEMAPSTREAM handle");
}

uint32_t NMUploadFile(NODEMAP NodeMap, const char* FileSelectorEntryName, const char* Filename) {
  return onObject<NodeMapBase>(
      NodeMap, args("NodeMap", NodeMap, "FileSelectorEntryName", FileSelectorEntryName, "Filename", Filename),
      pending<NodeMapBase>);
}

uint32_t NMUploadFileW(NODEMAP NodeMap, const wchar_t* FileSelectorEntryName, const wchar_t* Filename) {
  return onObject<NodeMapBase>(
      NodeMap, args("NodeMap", NodeMap, "FileSelectorEntryName", FileSelectorEntryName, "Filename", Filename),
      pending<NodeMapBase>);
}

uint32_t NMUploadFileMemory(NODEMAP NodeMap, const char* FileSelectorEntryName, const void* pBuffer,
                            size_t BufferSize) {
  return onObject<NodeMapBase>(NodeMap,
                               args("NodeMap", NodeMap, "FileSelectorEntryName", FileSelectorEntryName, "pBuffer",
                                    pBuffer, "BufferSize", BufferSize),
                               pending<NodeMapBase>);
}

uint32_t NMUploadFileMemoryW(NODEMAP NodeMap, const wchar_t* FileSelectorEntryName, const void* pBuffer,
                             size_t BufferSize) {
  return onObject<NodeMapBase>(NodeMap,
                               args("NodeMap", NodeMap, "FileSelectorEntryName", FileSelectorEntryName, "pBuffer",
                                    pBuffer, "BufferSize", BufferSize),
                               pending<NodeMapBase>);
}

uint32_t NMDownloadFile(NODEMAP NodeMap, const char* FileSelectorEntryName, const char* Filename) {
  return onObject<NodeMapBase>(
      NodeMap, args("NodeMap", NodeMap, "FileSelectorEntryName", FileSelectorEntryName, "Filename", Filename),
      pending<NodeMapBase>);
}

uint32_t NMDownloadFileW(NODEMAP NodeMap, const wchar_t* FileSelectorEntryName, const wchar_t* Filename) {
  return onObject<NodeMapBase>(
      NodeMap, args("NodeMap", NodeMap, "FileSelectorEntryName", FileSelectorEntryName, "Filename", Filename),
      pending<NodeMapBase>);
}

uint32_t NMDownloadFileMemory(NODEMAP NodeMap, const char* FileSelectorEntryName, void* pBuffer, size_t* BufferSize) {
  return onObject<NodeMapBase>(NodeMap,
                               args("NodeMap", NodeMap, "FileSelectorEntryName", FileSelectorEntryName, "pBuffer",
                                    pBuffer, "BufferSize", BufferSize),
                               pending<NodeMapBase>);
}

uint32_t NMDownloadFileMemoryW(NODEMAP NodeMap, const wchar_t* FileSelectorEntryName, void* pBuffer,
                               size_t* BufferSize) {
  return onObject<NodeMapBase>(NodeMap,
                               args("NodeMap", NodeMap, "FileSelectorEntryName", FileSelectorEntryName, "pBuffer",
                                    pBuffer, "BufferSize", BufferSize),
                               pending<NodeMapBase>);
}

uint32_t CreateFirmwareUpdater(const char* Path, int Verify, FWUPDATER* Updater) {
  return refuse(args("Path", Path, "Verify", Verify, "Updater", Updater), OXGENAPI_E_UNSPECIFIED,
                orxGenApi::kUnspecifiedError);
}

uint32_t CreateFirmwareUpdaterW(const wchar_t* Path, int Verify, FWUPDATER* Updater) {
  return refuse(args("Path", Path, "Verify", Verify, "Updater", Updater), OXGENAPI_E_UNSPECIFIED,
                orxGenApi::kUnspecifiedError);
}

uint32_t FWUpdateFileCount(FWUPDATER Updater, size_t* FileCount) {
  return refuse(args("Updater", Updater, "FileCount", FileCount), OXGENAPI_E_INVALID_HANDLE,
                "Invalid FWUPDATER handle");
}

uint32_t FWUpdateFileInfoCount(FWUPDATER Updater, size_t FileIndex, size_t* InfoCount) {
  return refuse(args("Updater", Updater, "FileIndex", FileIndex, "InfoCount", InfoCount), OXGENAPI_E_INVALID_HANDLE,
                "Invalid FWUPDATER handle");
}

uint32_t FWUpdateFileInfo(FWUPDATER Updater, size_t FileIndex, size_t InfoIndex, TFirmwareUpdateInfo Info, char* Buffer,
                          size_t* InfoSize) {
  return refuse(args("Updater", Updater, "FileIndex", FileIndex, "InfoIndex", InfoIndex, "Info", Info, "Buffer", Buffer,
                     "InfoSize", InfoSize),
                OXGENAPI_E_INVALID_HANDLE, "Invalid FWUPDATER handle");
}

uint32_t FWUpdateFileInfoW(FWUPDATER Updater, size_t FileIndex, size_t InfoIndex, TFirmwareUpdateInfo Info,
                           wchar_t* Buffer, size_t* InfoSize) {
  return refuse(args("Updater", Updater, "FileIndex", FileIndex, "InfoIndex", InfoIndex, "Info", Info, "Buffer", Buffer,
                     "InfoSize", InfoSize),
                OXGENAPI_E_INVALID_HANDLE, "Invalid FWUPDATER handle");
}

uint32_t FWUpdate(FWUPDATER Updater, NODEMAP NodeMap, size_t UpdateFileSelection, TFirmwareReset Callback,
                  void* pPrivate) {
  return refuse(args("Updater", Updater, "NodeMap", NodeMap, "UpdateFileSelection", UpdateFileSelection, "Callback",
                     Callback, "pPrivate", pPrivate),
                OXGENAPI_E_INVALID_HANDLE, "Invalid FWUPDATER handle");
}

}  // extern "C"

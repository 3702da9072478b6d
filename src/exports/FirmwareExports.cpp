#include <new>

#include "ExportFrame.h"
#include "FirmwareUpdater.h"
#include "OxGenApi/FirmwareUpdate.h"
#include "Text.h"

namespace orxGenApi {
namespace {

using Infos = CFirmwareUpdater::Infos;

constexpr const char* kUnknownUpdateFailure = "Unknown error updating firmware";

// Here memory that ran out is a failure like others, told by its text.
constexpr FailureRules kCreatingUpdater{
    .memory = 0, .standard = OXGENAPI_E_UNSPECIFIED, .unknownText = kUnknownUpdateFailure, .reports = false};
constexpr FailureRules kVerifying{.access = OXGENAPI_E_RUNTIME,
                                  .argument = OXGENAPI_E_RUNTIME,
                                  .genapi = OXGENAPI_E_RUNTIME,
                                  .memory = 0,
                                  .standard = OXGENAPI_E_RUNTIME,
                                  .unknown = OXGENAPI_E_RUNTIME,
                                  .unknownText = "Unknown error validating guf file",
                                  .reports = false};
constexpr FailureRules kReadingInfos{
    .memory = 0, .standard = OXGENAPI_E_UNSPECIFIED, .unknownText = "Failed to read firmware update infos."};
constexpr FailureRules kUpdating{.memory = 0, .standard = OXGENAPI_E_UNSPECIFIED, .unknownText = kUnknownUpdateFailure};

uint32_t createUpdater(const char* path, int verify, FWUPDATER* updater) {
  *updater = nullptr;
  orxBase::shared_ref<CFirmwareUpdater> created;
  const auto arguments = args();
  uint32_t result = guardedExport(arguments, kCreatingUpdater, [&] {
    created = orxBase::detail::make_shared_t<CFirmwareUpdater>(path);
    return OXGENAPI_OK;
  });
  const bool wanted = (static_cast<unsigned>(verify) & 0xffu) != 0;
  if (result == OXGENAPI_OK && wanted) {
    result = guardedExport(arguments, kVerifying, [&] {
      created->verify();
      return OXGENAPI_OK;
    });
  }
  if (result == OXGENAPI_OK) *updater = static_cast<FWUPDATER>(created.release());
  return result;
}

// The text asked for. Throws orx_error for what the entry does not have.
const char* infoText(const Infos& infos, size_t fileIndex, size_t infoIndex, TFirmwareUpdateInfo info) {
  // An index equal to the count passes here; it names an entry without informations, which is refused just below.
  if (fileIndex > infos.size()) throw orx_error(OXGENAPI_E_FIRMWARE_INDEX, "FileIndex not present in guf file.");
  const auto& entry = infos[fileIndex];
  if (infoIndex >= entry.GetCountOfInfos())
    throw orx_error(OXGENAPI_E_FIRMWARE_INDEX, "InfoIndex not present in guf file.");
  if (infos.empty() || !entry.IsValid())
    throw orx_error(OXGENAPI_E_UNSPECIFIED, "guf file information is empty or not valid.");
  switch (info) {
    case FUI_Key: return entry.GetInfoKey(infoIndex);
    case FUI_Value: return entry.GetInfo(infoIndex);
    case FUI_LanguageCode: return entry.GetInfoLanguageCode(entry.GetInfoKey(infoIndex));
  }
  throw orx_error(OXGENAPI_E_NOT_SUPPORTED, "FirmwareUpdateInfo command not supported.");
}

template <class Character>
uint32_t fileInfo(FWUPDATER Updater, size_t FileIndex, size_t InfoIndex, TFirmwareUpdateInfo Info, Character* Buffer,
                  size_t* InfoSize) {
  const auto arguments =
      args("Updater", Updater, "FileIndex", FileIndex, "InfoIndex", InfoIndex, "Info", Info, "InfoSize", InfoSize);
  return onObject<CFirmwareUpdater>(Updater, arguments, [&](CFirmwareUpdater& updater) {
    if (InfoSize == nullptr) return refuse(arguments, OXGENAPI_E_INVALID_ARGUMENT, "Invalid buffer");
    std::string text;
    const uint32_t result = guardedExport(arguments, kReadingInfos, [&] {
      text = infoText(updater.readInfos(), FileIndex, InfoIndex, Info);
      return OXGENAPI_OK;
    });
    const uint32_t copied = guardedExport(arguments, kReadingInfos, [&] {
      copyText(text, Buffer, *InfoSize);
      return OXGENAPI_OK;
    });
    return result != OXGENAPI_OK ? result : copied;
  });
}

}  // namespace
}  // namespace orxGenApi

using namespace orxGenApi;

uint32_t CreateFirmwareUpdater(const char* Path, int Verify, FWUPDATER* Updater) {
  return createUpdater(Path, Verify, Updater);
}

uint32_t CreateFirmwareUpdaterW(const wchar_t* Path, int Verify, FWUPDATER* Updater) {
  *Updater = nullptr;
  return guardedExport(args(), kCreatingUpdater,
                       [&] { return createUpdater(toNarrow(Path).c_str(), Verify, Updater); });
}

uint32_t FWUpdateFileCount(FWUPDATER Updater, size_t* FileCount) {
  const auto arguments = args("Updater", Updater, "FileCount", FileCount);
  return onObject<CFirmwareUpdater>(Updater, arguments, [&](CFirmwareUpdater& updater) {
    return guardedExport(arguments, kReadingInfos, [&] {
      *FileCount = updater.readInfos().size();
      return OXGENAPI_OK;
    });
  });
}

uint32_t FWUpdateFileInfoCount(FWUPDATER Updater, size_t FileIndex, size_t* InfoCount) {
  const auto arguments = args("Updater", Updater, "FileIndex", FileIndex, "InfoCount", InfoCount);
  return onObject<CFirmwareUpdater>(Updater, arguments, [&](CFirmwareUpdater& updater) {
    return guardedExport(arguments, kReadingInfos, [&] {
      *InfoCount = updater.readInfos()[FileIndex].GetCountOfInfos();
      return OXGENAPI_OK;
    });
  });
}

uint32_t FWUpdateFileInfo(FWUPDATER Updater, size_t FileIndex, size_t InfoIndex, TFirmwareUpdateInfo Info, char* Buffer,
                          size_t* InfoSize) {
  return fileInfo(Updater, FileIndex, InfoIndex, Info, Buffer, InfoSize);
}

uint32_t FWUpdateFileInfoW(FWUPDATER Updater, size_t FileIndex, size_t InfoIndex, TFirmwareUpdateInfo Info,
                           wchar_t* Buffer, size_t* InfoSize) {
  return fileInfo(Updater, FileIndex, InfoIndex, Info, Buffer, InfoSize);
}

uint32_t FWUpdate(FWUPDATER Updater, NODEMAP NodeMap, size_t UpdateFileSelection, TFirmwareReset Callback,
                  void* pPrivate) {
  const auto arguments = args("Updater", Updater, "NodeMap", NodeMap, "UpdateFileSelection", UpdateFileSelection,
                              "Callback", Callback, "pPrivate", pPrivate);
  return onObject<CFirmwareUpdater>(Updater, arguments, [&](CFirmwareUpdater& updater) {
    return onObject<NodeMapBase>(NodeMap, arguments, [&](NodeMapBase& nodeMap) {
      return guardedExport(arguments, kUpdating, [&] {
        try {
          updater.update(nodeMap.shared_from_this(), UpdateFileSelection, Callback, pPrivate);
        } catch (const orx_error& fault) {
          throw orx_error(OXGENAPI_E_UNSPECIFIED, fault.what());  // its own code means nothing here
        }
        return OXGENAPI_OK;
      });
    });
  });
}

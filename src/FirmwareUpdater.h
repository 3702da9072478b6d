// The object behind a FWUPDATER handle: one update file, and the device it was last applied to.
#pragma once
#include <cstdint>

#include "Base/GCString.h"
#include "FirmwareUpdatableNodeMap.h"
#include "FirmwareUpdate/FirmwareUpdateDefaultInfoCollector.h"
#include "FirmwareUpdate/FirmwareUpdater.h"
#include "HandleKind.h"
#include "NodeMapBase.h"
#include "OxBase/SharedRef.h"

namespace orxGenApi {

// Nothing of the file is remembered from one call to the next: each reads what the file says now. Used by one thread at
// a time. All operations throw what the engine throws.
class CFirmwareUpdater : public GENAPI_NAMESPACE::CFirmwareUpdater,
                         public orxBase::enable_shared_from_this<CFirmwareUpdater> {
 public:
  using Infos = GENAPI_NAMESPACE::CFirmwareUpdateDefaultInfoCollector;

  static uint64_t interfaceId() noexcept;

  explicit CFirmwareUpdater(GENICAM_NAMESPACE::gcstring path) : path_(std::move(path)) {}

  // Checks the whole file.
  void verify() { VerifyGufFile(path_); }
  // The entries of the file. An index past the end gives an invalid entry without informations.
  Infos readInfos() const;
  // Applies one entry; the device replaces the one held before. Throws std::runtime_error "No NodeMap loaded, yet" and
  // what the update throws.
  void update(orxBase::shared_ref<NodeMapBase> nodeMap, size_t selection, TFirmwareReset reset, void* userData);

 private:
  GENICAM_NAMESPACE::gcstring path_;
  Infos infos_;
  orxBase::shared_ref<CFirmwareUpdateableNodeMap> device_;
};

template <>
struct HandleKind<CFirmwareUpdater> {
  using Interface = CFirmwareUpdater;
  static uint64_t id() noexcept { return CFirmwareUpdater::interfaceId(); }
  static constexpr const char* kInvalid = "Invalid FWUPDATER handle";
};

}  // namespace orxGenApi

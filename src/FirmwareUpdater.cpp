#include "FirmwareUpdater.h"

#include "OxBase/OxBase.h"

namespace orxGenApi {
namespace {

const uint64_t kUpdaterInterfaceId = OxRegisterInterface("OxGenApiFirmwareUpdater");

}  // namespace

uint64_t CFirmwareUpdater::interfaceId() noexcept { return kUpdaterInterfaceId; }

CFirmwareUpdater::Infos CFirmwareUpdater::readInfos() const {
  Infos infos;
  ReadFirmwareUpdateInfos(path_, infos);
  return infos;
}

void CFirmwareUpdater::update(orxBase::shared_ref<NodeMapBase> nodeMap, size_t selection, TFirmwareReset reset,
                              void* userData) {
  // Held here too: a reset callback may start another update with this updater, which exchanges the device.
  const auto device = orxBase::detail::make_shared_t<CFirmwareUpdateableNodeMap>(std::move(nodeMap));
  device_ = device;
  device->setReset(reset, userData);
  infos_.clear();
  ReadFirmwareUpdateInfos(path_, infos_);
  const GENAPI_NAMESPACE::CFirmwareUpdateInfo info = infos_[selection];
  ApplyUpdate(device.get(), info);
}

}  // namespace orxGenApi

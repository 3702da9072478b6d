// The device side of a firmware update: a node map that may be exchanged for another one when the device restarts.
#pragma once
#include <cstdint>
#include <memory>

#include "FirmwareUpdate/FirmwareUpdatableDevice.h"
#include "HandleKind.h"
#include "LoadedMap.h"
#include "NodeMapBase.h"
#include "OxBase/SharedRef.h"
#include "OxGenApi/Types.h"

namespace orxGenApi {

// Idle when created; updating from PrepareForFirmwareUpdate to CleanupAfterFirmwareUpdate; may be reset any number of
// times in between. Used by one thread.
class CFirmwareUpdateableNodeMap : public GENAPI_NAMESPACE::IFirmwareUpdatableDevice,
                                   public orxBase::enable_shared_from_this<CFirmwareUpdateableNodeMap> {
 public:
  static uint64_t interfaceId() noexcept;

  // Holds the node map and what is loaded in it. Throws std::runtime_error "No NodeMap loaded, yet".
  explicit CFirmwareUpdateableNodeMap(orxBase::shared_ref<NodeMapBase> nodeMap);

  // Who reopens the device after a reset; null when nobody can.
  void setReset(TFirmwareReset callback, void* userData) {
    callback_ = callback;
    userData_ = userData;
  }

  // Throws orx_error with code 1 and "Device is not in idle state.".
  void PrepareForFirmwareUpdate() override;
  // Gives the held node map up, calls the reset callback and holds the node map that it answers. Null when the callback
  // answers false or nothing is loaded there. Throws LogicalErrorException "Device is not in updating state
  // (status = 0)", std::runtime_error "Failed to get device node map after reset.".
  GENAPI_NAMESPACE::INodeMap* DeviceResetWhileUpdatingFirmware(unsigned int EstimatedDurationMs,
                                                               unsigned int DelayEnumerationMs) override;
  // Forgets the reset callback. Throws orx_error with code 1 and "Device is not in updating state.".
  void CleanupAfterFirmwareUpdate() override;
  GENAPI_NAMESPACE::INodeMap* GetNodeMapOfDeviceToUpdate() override;
  // Vendor and model as the description names them.
  GENICAM_NAMESPACE::gcstring GetDisplayName() override;

 private:
  enum State : int { Idle = 0, Updating = 1 };

  void hold(orxBase::shared_ref<NodeMapBase> nodeMap);

  orxBase::shared_ref<NodeMapBase> nodeMap_;
  std::shared_ptr<LoadedMap> load_;  // keeps what is worked on, should the caller load another description meanwhile
  State state_ = Idle;
  TFirmwareReset callback_ = nullptr;
  void* userData_ = nullptr;
};

}  // namespace orxGenApi

#include "FirmwareUpdatableNodeMap.h"

#include <stdexcept>
#include <string>

#include "Base/GCException.h"
#include "CallOut.h"
#include "ExportFrame.h"
#include "Failure.h"
#include "GenApi/GenApi.h"
#include "OxBase/OxBase.h"

namespace orxGenApi {

using namespace GENAPI_NAMESPACE;
using GENICAM_NAMESPACE::gcstring;

namespace {

// The code of a call at the wrong time; it never leaves the library as it is.
constexpr uint32_t kWrongState = 1;

// Where callers of this class expect the failure of a reset to come from.
constexpr const char* kSource = "src/FirmwareUpdatableNodeMap";
constexpr int kResetLine = 84;

const uint64_t kUpdatableInterfaceId = OxRegisterInterface("OxGenApiFirmwareUpdatableNodeMap");

}  // namespace

uint64_t CFirmwareUpdateableNodeMap::interfaceId() noexcept { return kUpdatableInterfaceId; }

CFirmwareUpdateableNodeMap::CFirmwareUpdateableNodeMap(orxBase::shared_ref<NodeMapBase> nodeMap) {
  hold(std::move(nodeMap));
  if (GetNodeMapOfDeviceToUpdate() == nullptr) throw std::runtime_error("No NodeMap loaded, yet");
}

void CFirmwareUpdateableNodeMap::hold(orxBase::shared_ref<NodeMapBase> nodeMap) {
  load_ = nodeMap ? nodeMap->loaded() : nullptr;
  nodeMap_ = std::move(nodeMap);
}

void CFirmwareUpdateableNodeMap::PrepareForFirmwareUpdate() {
  if (state_ != Idle) throw orx_error(kWrongState, "Device is not in idle state.");
  state_ = Updating;
}

INodeMap* CFirmwareUpdateableNodeMap::DeviceResetWhileUpdatingFirmware(unsigned int EstimatedDurationMs,
                                                                       unsigned int DelayEnumerationMs) {
  if (state_ != Updating) {
    const std::string text = "Device is not in updating state (status = " + std::to_string(state_) + ")";
    throw GENICAM_NAMESPACE::LogicalErrorException(text.c_str(), kSource, kResetLine);
  }
  hold(nullptr);
  void* handle = nullptr;
  const bool reopened = callOut(
      [&] { return callback_ != nullptr && callback_(EstimatedDurationMs, DelayEnumerationMs, handle, userData_); });
  if (!reopened) return nullptr;
  const Held<NodeMapBase> answered(handle);
  if (!answered) throw std::runtime_error("Failed to get device node map after reset.");
  hold((*answered).shared_from_this());
  return GetNodeMapOfDeviceToUpdate();
}

void CFirmwareUpdateableNodeMap::CleanupAfterFirmwareUpdate() {
  if (state_ != Updating) throw orx_error(kWrongState, "Device is not in updating state.");
  state_ = Idle;
  setReset(nullptr, nullptr);
}

INodeMap* CFirmwareUpdateableNodeMap::GetNodeMapOfDeviceToUpdate() { return load_ ? load_->map() : nullptr; }

gcstring CFirmwareUpdateableNodeMap::GetDisplayName() {
  const CDeviceInfoPtr info(GetNodeMapOfDeviceToUpdate());
  if (!info.IsValid()) return "Failed to get display name!";
  return info->GetVendorName() + " " + info->GetModelName();
}

}  // namespace orxGenApi

// The device as the firmware updater needs it.
#pragma once
#include "Base/GCString.h"
#include "FirmwareUpdate/Destructible.h"

namespace GENAPI_NAMESPACE {

class INodeMap;

class IFirmwareUpdatableDevice : public IDestructible {
 public:
  // Called first; an exception stops the update before it has changed anything.
  virtual void PrepareForFirmwareUpdate() = 0;
  // Resets the device, waits for it and opens it again. Milliseconds; 0 means: choose a sensible default. Returns the
  // node map of the reopened device, which replaces the former one, or null when there is none.
  virtual INodeMap* DeviceResetWhileUpdatingFirmware(unsigned int EstimatedDurationMs,
                                                     unsigned int DelayEnumerationMs) = 0;
  // Called exactly once after a successful PrepareForFirmwareUpdate, whatever happened in between.
  virtual void CleanupAfterFirmwareUpdate() = 0;
  // Asked once, before the first step.
  virtual INodeMap* GetNodeMapOfDeviceToUpdate() = 0;
  virtual GENICAM_NAMESPACE::gcstring GetDisplayName() = 0;
};

}  // namespace GENAPI_NAMESPACE

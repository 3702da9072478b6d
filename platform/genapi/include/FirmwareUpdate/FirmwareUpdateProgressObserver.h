// Follows the progress of an update.
#pragma once
#include "Base/GCException.h"
#include "FirmwareUpdate/Destructible.h"
#include "FirmwareUpdate/FirmwareUpdateInfo.h"
#include "GenApi/Types.h"

namespace GENAPI_NAMESPACE {

// All calls come from the thread that applies the update, without any lock. Exceptions of the step calls and of
// OnFirmwareUpdateError are swallowed: a progress bar must not brick a device.
class IFirmwareUpdateProgressObserver : public IDestructible {
 public:
  // An exception stops the update before the device is touched.
  virtual void OnFirmwareUpdateBegin(const CFirmwareUpdateInfo& info, unsigned int EstimatedDurationMs) = 0;
  virtual void OnFirmwareUpdateProgressStepBegin(EFirmwareUpdateProgressStepType type, unsigned int EstimatedDurationMs,
                                                 const char* Description) = 0;
  // 0.0 .. 100.0, after each block of a file.
  virtual void OnFirmwareUpdateProgressStepPartialProgress(EFirmwareUpdateProgressStepType type,
                                                           double PercentDone) = 0;
  virtual void OnFirmwareUpdateProgressStepEnd(EFirmwareUpdateProgressStepType type,
                                               unsigned int EstimatedDurationMs) = 0;
  // After the last step; an exception leaves the update as its failure.
  virtual void OnFirmwareUpdateEnd() = 0;
  virtual void OnFirmwareUpdateError(const GENICAM_NAMESPACE::GenericException& error) = 0;
};

}  // namespace GENAPI_NAMESPACE

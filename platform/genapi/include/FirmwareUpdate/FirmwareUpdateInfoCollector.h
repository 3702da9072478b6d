// Receives the updates of an update file as they are read.
#pragma once
#include "FirmwareUpdate/Destructible.h"
#include "FirmwareUpdate/FirmwareUpdateInfo.h"

namespace GENAPI_NAMESPACE {

class IFirmwareUpdateInfoCollector : public IDestructible {
 public:
  // False stops reading. Exceptions leave the reading call.
  virtual bool OnUpdateRead(const CFirmwareUpdateInfo& info) = 0;
};

}  // namespace GENAPI_NAMESPACE

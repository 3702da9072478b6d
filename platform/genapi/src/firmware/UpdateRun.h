// One application of an update to a device.
#pragma once
#include <cstdint>
#include <memory>

#include "FirmwareUpdate/FirmwareUpdatableDevice.h"
#include "FirmwareUpdate/FirmwareUpdateProgressObserver.h"
#include "firmware/GufFile.h"
#include "firmware/UpdateInfoContent.h"

namespace GENAPI_NAMESPACE {

class INode;
class INodeMap;

// Null when every condition holds, else the first that does not. Port failures pass.
const UpdateCondition* unmetCondition(INodeMap& map, const CFirmwareUpdateInfo::Content& update);

class UpdateRun {
 public:
  // The observer and the language may be null.
  UpdateRun(IFirmwareUpdatableDevice& device, const CFirmwareUpdateInfo& info,
            IFirmwareUpdateProgressObserver* observer, const char* language);
  // From preparing the device to cleaning up.
  void run();

 private:
  void carryOut();
  void checkPreconditions();
  void acquireData();
  void carryOut(const UpdateStep& step, bool beforeReset);
  void write(const UpdateStep& step);
  void execute(const UpdateStep& step, bool wait);
  void expect(const UpdateStep& step);
  void upload(const UpdateStep& step);
  void reset(const UpdateStep& step);

  // The step's feature with that interface. Throws RuntimeException.
  template <typename T>
  T& featureOf(const UpdateStep& step, const char* kind);
  INodeMap& nodeMap() const;
  template <typename Work>
  void wrapped(EFirmwareUpdateProgressStepType type, uint32_t estimatedMs, const char* description, Work work);
  template <typename Call>
  void tell(Call call) const;
  void reportFailure() const;

  IFirmwareUpdatableDevice& device_;
  const CFirmwareUpdateInfo info_;
  const CFirmwareUpdateInfo::Content& update_;
  IFirmwareUpdateProgressObserver* observer_;
  const char* language_;

  INodeMap* map_ = nullptr;
  std::unique_ptr<GufFile> file_;
  UpdateProcedure procedure_;
  size_t stepNumber_ = 0;  // of the present step, from 1
};

}  // namespace GENAPI_NAMESPACE

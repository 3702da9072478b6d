#include "firmware/UpdateRun.h"

#include <algorithm>
#include <chrono>
#include <set>

#include "FirmwareUpdate/FirmwareUpdateExceptions.h"
#include "GenApi/ICommand.h"
#include "GenApi/INode.h"
#include "GenApi/INodeMap.h"
#include "GenApi/IValue.h"
#include "files/Cleanup.h"
#include "files/CommandWait.h"
#include "files/DeviceFile.h"
#include "text/Refusal.h"

namespace GENAPI_NAMESPACE {

using GENICAM_NAMESPACE::gcstring;
using GENICAM_NAMESPACE::GenericException;
using GENICAM_NAMESPACE::RuntimeException;

namespace {

constexpr std::chrono::milliseconds kCommandPoll{10};
constexpr std::chrono::milliseconds kShortestCommandLimit{60000};

}  // namespace

const UpdateCondition* unmetCondition(INodeMap& map, const CFirmwareUpdateInfo::Content& update) {
  for (const UpdateCondition& condition : update.conditions) {
    auto* value = dynamic_cast<IValue*>(map.GetNode(condition.feature.c_str()));
    if (!IsReadable(value) || !condition.pattern.matches(value->ToString().view())) return &condition;
  }
  return nullptr;
}

UpdateRun::UpdateRun(IFirmwareUpdatableDevice& device, const CFirmwareUpdateInfo& info,
                     IFirmwareUpdateProgressObserver* observer, const char* language)
    : device_(device), info_(info), update_(*info_.content()), observer_(observer), language_(language) {}

void UpdateRun::run() {
  device_.PrepareForFirmwareUpdate();
  orCleanUp([this] { carryOut(); },
            [this] {
              file_.reset();
              reportFailure();
              device_.CleanupAfterFirmwareUpdate();
            });
  file_.reset();
  device_.CleanupAfterFirmwareUpdate();
}

void UpdateRun::carryOut() {
  map_ = device_.GetNodeMapOfDeviceToUpdate();
  if (!map_) refuse<RuntimeException>("device has no node map");
  if (observer_) observer_->OnFirmwareUpdateBegin(info_, update_.estimatedMs);
  wrapped(ProgressStepType_CheckPreconditions, 0, "", [this] { checkPreconditions(); });
  wrapped(ProgressStepType_AcquireUpdateData, 0, "", [this] { acquireData(); });
  for (const UpdateStep& step : procedure_.steps) {
    const size_t next = ++stepNumber_;
    const bool beforeReset =
        next < procedure_.steps.size() && procedure_.steps[next].type == ProgressStepType_DeviceReset;
    const LocalizedText* description = chooseLanguage(step.descriptions, language_);
    wrapped(step.type, step.estimatedMs, description ? description->text.c_str() : "",
            [&] { carryOut(step, beforeReset); });
  }
  if (observer_) observer_->OnFirmwareUpdateEnd();
}

void UpdateRun::checkPreconditions() {
  if (const UpdateCondition* unmet = unmetCondition(*map_, update_))
    refuse<InvalidArgumentException>("the update is not for this device: {} does not match '{}'", unmet->feature,
                                     unmet->pattern.text());
}

// Everything that can be wrong with the file shows here, before the device is touched.
void UpdateRun::acquireData() {
  bool isSame = false;
  try {
    file_ = std::make_unique<GufFile>(update_.path, MissingMember::isFormatError);
    isSame = file_->fileSize() == update_.fileSize && file_->digest() == update_.packageDigest;
  } catch (const FormatException&) {  // it was an update file when it was read
  }
  if (!isSame) refuse<RuntimeException>("'{}': has changed since it was read", update_.path);
  const UpdateControl control(file_->readControl(), "'" + update_.path + "': control.xml");
  const UpdateProcedure* procedure = control.procedure(update_.procedure);
  if (!procedure) refuse<FormatException>("'{}': control.xml: has no procedure '{}'", update_.path, update_.procedure);
  procedure_ = *procedure;
  std::set<std::string> checked;
  for (const UpdateStep& step : procedure_.steps)
    if (step.type == ProgressStepType_FileUpload && checked.insert(step.file).second) file_->checkMember(step.file);
}

void UpdateRun::carryOut(const UpdateStep& step, bool beforeReset) {
  switch (step.type) {
    case ProgressStepType_FeatureWrite: return write(step);
    case ProgressStepType_FeatureExecute: return execute(step, !beforeReset);
    case ProgressStepType_FeatureAssert: return expect(step);
    case ProgressStepType_FileUpload: return upload(step);
    case ProgressStepType_DeviceReset: return reset(step);
    default: refuse<LogicalErrorException>("step {}: is of no known kind", stepNumber_);
  }
}

void UpdateRun::write(const UpdateStep& step) {
  featureOf<IValue>(step, "a feature with a value").FromString(step.value.c_str());
}

void UpdateRun::execute(const UpdateStep& step, bool wait) {
  auto& command = featureOf<ICommand>(step, "a command");
  const auto limit = std::max(kShortestCommandLimit, std::chrono::milliseconds(int64_t{3} * step.estimatedMs));
  command.Execute();
  if (!wait) return;  // the device may be on its way down already
  if (!waitUntilDone(command, limit, kCommandPoll, kCommandPoll))
    refuse<TimeoutException>("step {} {} '{}': has not finished within {} ms", stepNumber_, step.element, step.feature,
                             limit.count());
}

void UpdateRun::expect(const UpdateStep& step) {
  const gcstring value = featureOf<IValue>(step, "a feature with a value").ToString(false, true);
  if (!step.pattern.matches(value.view()))
    refuse<RuntimeException>("step {} {} '{}': value '{}' does not match '{}'", stepNumber_, step.element, step.feature,
                             value, step.pattern.text());
}

void UpdateRun::upload(const UpdateStep& step) {
  MemberReader source = file_->openMember(step.file);
  DeviceFile target;
  try {
    target.openForWriting(&nodeMap(), step.feature.c_str(), std::ios_base::out | std::ios_base::trunc);
  } catch (const RuntimeException&) {
    if (target.missingFeature().empty()) throw;
    refuse<RuntimeException>("step {} {} '{}': the device has no {}", stepNumber_, step.element, step.feature,
                             target.missingFeature());
  }
  const auto copy = [&] {
    uint64_t done = 0;
    for (;;) {
      const size_t count = source.read(target.block().data(), target.block().size());
      if (count == 0) break;
      target.write(target.block().data(), static_cast<int64_t>(count));
      done += count;
      const double percent = 100.0 * static_cast<double>(done) / static_cast<double>(source.size());
      tell([&] { observer_->OnFirmwareUpdateProgressStepPartialProgress(step.type, percent); });
    }
  };
  orCleanUp(copy, [&] { target.close(); });
  target.closeOrThrow();
}

void UpdateRun::reset(const UpdateStep& step) {
  map_ = nullptr;  // never touched again, whatever the reset does
  map_ = device_.DeviceResetWhileUpdatingFirmware(step.estimatedMs, step.delayEnumerationMs);
}

INodeMap& UpdateRun::nodeMap() const {
  if (!map_) refuse<RuntimeException>("no node map after device reset");
  return *map_;
}

template <typename T>
T& UpdateRun::featureOf(const UpdateStep& step, const char* kind) {
  INode* node = nodeMap().GetNode(step.feature.c_str());
  if (!node)
    refuse<RuntimeException>("step {} {} '{}': the device has no such feature", stepNumber_, step.element,
                             step.feature);
  T* feature = dynamic_cast<T*>(node);
  if (!feature) refuse<RuntimeException>("step {} {} '{}': is not {}", stepNumber_, step.element, step.feature, kind);
  return *feature;
}

template <typename Work>
void UpdateRun::wrapped(EFirmwareUpdateProgressStepType type, uint32_t estimatedMs, const char* description,
                        Work work) {
  tell([&] { observer_->OnFirmwareUpdateProgressStepBegin(type, estimatedMs, description); });
  work();
  tell([&] { observer_->OnFirmwareUpdateProgressStepEnd(type, estimatedMs); });
}

// A progress bar must not brick a device.
template <typename Call>
void UpdateRun::tell(Call call) const {
  if (observer_) quietly(call);
}

// Called while the failure is being handled.
void UpdateRun::reportFailure() const {
  if (!observer_) return;
  try {
    throw;
  } catch (const GenericException& failure) {
    tell([&] { observer_->OnFirmwareUpdateError(failure); });
  } catch (const std::exception& failure) {
    tell([&] { observer_->OnFirmwareUpdateError(GenericException(failure.what(), __FILE__, __LINE__)); });
  } catch (...) {
    tell([&] { observer_->OnFirmwareUpdateError(GenericException("unknown exception", __FILE__, __LINE__)); });
  }
}

}  // namespace GENAPI_NAMESPACE

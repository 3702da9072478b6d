#include <set>

#include "FirmwareUpdate/FirmwareUpdateExceptions.h"
#include "FirmwareUpdate/FirmwareUpdater.h"
#include "firmware/UpdateRun.h"
#include "text/Refusal.h"

namespace GENAPI_NAMESPACE {

using GENICAM_NAMESPACE::gcstring;

namespace {

std::string controlOf(const std::string& path) { return "'" + path + "': control.xml"; }

CFirmwareUpdateInfo makeInfo(const GufFile& file, const PackageDigest& digest, const UpdateControl& control,
                             size_t index, const char* language) {
  const UpdateEntry& entry = control.updates()[index];
  auto content = std::make_shared<CFirmwareUpdateInfo::Content>();
  content->path = file.path();
  content->fileSize = file.fileSize();
  content->packageDigest = digest;
  content->index = index;
  content->procedure = entry.procedure;
  if (const UpdateProcedure* procedure = control.procedure(entry.procedure))
    content->estimatedMs = procedure->estimatedMs();
  for (const UpdateInfoText& info : entry.infos) {
    const LocalizedText* chosen = chooseLanguage(info.values, language);
    content->infos.push_back({info.key, chosen->text, chosen->language});
  }
  content->conditions = entry.conditions;
  if (const auto* pattern = content->find(FirmwareUpdateInfoKey_VersionExtractionPattern))
    content->extraction = WholePattern(pattern->value, controlOf(file.path()));
  return CFirmwareUpdateInfo(std::move(content));
}

}  // namespace

void CFirmwareUpdater::GetSignatureCheckInfo(const gcstring& Filename, size_t& OffsetPackageZipFile,
                                             size_t& SizePackageZipFile, size_t& OffsetSignatureFile,
                                             size_t& SizeSignatureFile) const {
  const GufLayout layout = GufLayout::read(Filename.c_str(), MissingMember::isFormatError);
  OffsetPackageZipFile = layout.package.offset();
  SizePackageZipFile = layout.package.size();
  OffsetSignatureFile = layout.signatureOffset;
  SizeSignatureFile = layout.signatureSize;
}

void CFirmwareUpdater::ReadFirmwareUpdateInfos(const gcstring& Filename, IFirmwareUpdateInfoCollector& Collector,
                                               const char* pPreferredLanguageCode) const {
  const GufFile file(Filename.c_str(), MissingMember::isFormatError);
  const UpdateControl control(file.readControl(), controlOf(file.path()));
  const PackageDigest digest = file.digest();
  for (size_t i = 0; i < control.updates().size(); ++i)
    if (!Collector.OnUpdateRead(makeInfo(file, digest, control, i, pPreferredLanguageCode))) return;
}

bool CFirmwareUpdater::FirmwareUpdateMatchesDevice(INodeMap* pNodeMapOfOpenDevice,
                                                   const CFirmwareUpdateInfo& Info) const {
  if (!pNodeMapOfOpenDevice) refuse<InvalidArgumentException>("firmware update: the node map is null");
  return Info.IsValid() && !unmetCondition(*pNodeMapOfOpenDevice, *Info.content());
}

void CFirmwareUpdater::ApplyUpdate(IFirmwareUpdatableDevice* pDevice, const CFirmwareUpdateInfo& Info,
                                   IFirmwareUpdateProgressObserver* pObserver, const char* pPreferredLanguageCode) {
  if (!pDevice) refuse<InvalidArgumentException>("firmware update: the device is null");
  if (!Info.IsValid()) refuse<InvalidArgumentException>("firmware update: the update info is invalid");
  UpdateRun(*pDevice, Info, pObserver, pPreferredLanguageCode).run();
}

void CFirmwareUpdater::VerifyGufFile(const gcstring& Filename) {
  const GufFile file(Filename.c_str(), MissingMember::isFileNotFound);
  try {
    const UpdateControl control(file.readControl(), controlOf(file.path()));
    for (const UpdateEntry& update : control.updates())
      if (!control.procedure(update.procedure))
        refuse<FormatException>("{}: has no procedure '{}', which an Update names", controlOf(file.path()),
                                update.procedure);
    std::set<std::string> checked;
    for (const UpdateProcedure& procedure : control.procedures())
      for (const UpdateStep& step : procedure.steps)
        if (!step.file.empty() && checked.insert(step.file).second) file.checkMember(step.file);
  } catch (const NotWellFormedException& failure) {
    refuse<RuntimeException>("{}", failure.GetDescription());
  }
}

}  // namespace GENAPI_NAMESPACE
